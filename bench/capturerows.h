// How many rows a finished capture holds.
#pragma once

#include <QFile>

// Lines behind the line of titles; -1 when the file cannot be read or its last line has no end.
inline qint64 captureRows(const QString &path)
{
    constexpr qint64 kPieceBytes = 1 << 20;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    qint64 rows = -1;
    char last = '\n';
    while (!file.atEnd()) {
        const QByteArray piece = file.read(kPieceBytes);
        rows += piece.count('\n');
        last = piece.back();
    }
    return last == '\n' ? rows : -1;
}
