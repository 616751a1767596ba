// The drives that the adapter's boot loader shows up as, and what is written to them.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

struct MountedVolume {
    QString rootPath; // with or without a slash at its end
    QString name;     // the volume label
};

// Answers the volumes mounted at the moment.
using VolumeLister = std::function<QList<MountedVolume>()>;
// The one of this computer.
QList<MountedVolume> systemVolumes();

// Root paths of the boot-loader drives among the volumes.
QStringList bootDriveRoots(const QList<MountedVolume> &volumes);

// The image's content; empty when it cannot be read, holds nothing or is absurdly large.
QByteArray readFirmwareImage(const QString &path);
// Replaces firmware.bin on the drive. true once all of it is on the drive, past every cache; otherwise no part of it is
// left behind as far as the drive still lets itself be written.
bool writeFirmware(const QByteArray &image, const QString &driveRoot);
