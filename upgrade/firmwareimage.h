// The firmware images that lie beside the program.
#pragma once

#include <QString>
#include <QStringList>

struct FirmwareImage {
    unsigned version = 0x211; // version word, 16 bits; the floor when no image carries a higher one
    QString fileName = QStringLiteral("firmware.bin");
};

// The image with the highest version. An image says its version in the middle of exactly three fields separated by
// "-", beginning with V: NAME-V2.12-DATE.bin is 0x212. Other names do not count; of equal versions the first stays.
FirmwareImage bestFirmwareImage(const QStringList &fileNames);

// The folder of the images, and the best of the *.bin files in it.
QString firmwareFolder();
FirmwareImage bestFirmwareImage();
