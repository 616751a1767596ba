// Rows of a recording with notes, kept in a small text file beside it: a line each, the row's number from 1, a tab and
// the note.
#pragma once

#include <QMap>
#include <QSet>
#include <QString>

class RecordingBookmarks
{
public:
    // Reads what is kept for the recording; lines that are none are left out.
    explicit RecordingBookmarks(const QString &recording);

    const QMap<quint64, QString> &all() const { return notes_; } // by row, from 0
    QSet<quint64> rows() const;
    // Each keeps the change at once; false when the folder does not take it: the change then holds for this object
    // only.
    bool set(quint64 row, const QString &note);
    bool remove(quint64 row);

    QString fileName() const { return fileName_; }

private:
    bool save() const;

    const QString fileName_;
    QMap<quint64, QString> notes_;
};
