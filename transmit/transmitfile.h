// Transmit lists in files: JSON, one entry a line.
#pragma once

#include "transmit/transmitentry.h"

#include <QByteArray>

constexpr int kTransmitFileVersion = 1;

struct TransmitFile {
    TransmitList entries;
    QString error; // in the current language: what is wrong, and in which line or entry; empty: none
};
// Nothing of a file with an error is handed over.
TransmitFile parseTransmitFile(const QByteArray &content);
TransmitFile readTransmitFile(const QString &path);

QByteArray transmitFileContent(const TransmitList &entries);
// Writes a new file and puts it in the place of the old one; what went wrong, else an empty text. The old file is whole
// until the new one is.
QString writeTransmitFile(const QString &path, const TransmitList &entries);
