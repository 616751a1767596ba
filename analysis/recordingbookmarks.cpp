#include "analysis/recordingbookmarks.h"

#include <QFile>
#include <QSaveFile>

RecordingBookmarks::RecordingBookmarks(const QString &recording)
    : fileName_(recording + QStringLiteral(".bookmarks.txt"))
{
    constexpr int longestLine = 4096;
    QFile file(fileName_);
    if (!file.open(QIODevice::ReadOnly))
        return;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine(longestLine)).trimmed();
        bool isNumber = false;
        const quint64 number = line.section(QLatin1Char('\t'), 0, 0).toULongLong(&isNumber);
        if (isNumber && number > 0)
            notes_.insert(number - 1, line.section(QLatin1Char('\t'), 1));
    }
}

QSet<quint64> RecordingBookmarks::rows() const
{
    const QList<quint64> keys = notes_.keys();
    return {keys.begin(), keys.end()};
}

bool RecordingBookmarks::set(quint64 row, const QString &note)
{
    notes_.insert(row, note.simplified());
    return save();
}

bool RecordingBookmarks::remove(quint64 row)
{
    notes_.remove(row);
    return save();
}

bool RecordingBookmarks::save() const
{
    if (notes_.isEmpty())
        return !QFile::exists(fileName_) || QFile::remove(fileName_);
    QSaveFile file(fileName_);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    for (auto note = notes_.begin(); note != notes_.end(); ++note)
        file.write(QByteArray::number(note.key() + 1) + '\t' + note.value().toUtf8() + '\n');
    return file.commit();
}
