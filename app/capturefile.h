// The live capture: received and sent frames go into a CSV file as they arrive. The rows of one refresh round are
// gathered and written at its end, in one piece. GUI thread only.
#pragma once

#include "dialogs/savefiledlg.h"
#include "frames/modelitem.h"

#include <QFile>
#include <QObject>

class CaptureFile : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
    ~CaptureFile() override;

    // Opens the file behind what it already holds and writes the line of titles, in a new file after a UTF-8 mark.
    // false: it cannot be opened, which is told with the system's reason, and rows go nowhere.
    bool open(const QString &path, const QStringList &titles, CaptureMode mode);
    // Writes what is gathered and closes; does nothing when no file is open.
    void close();
    bool isOpen() const { return open_; }
    // true: only the frames that pass the display filter belong into the file.
    bool wantsFilteredOnly() const { return mode_ == CaptureMode::FilteredFrames; }

    // Gathers the row of one frame. What has become much is written before the round is over: memory has a ceiling.
    void add(const ModelItem &item);
    // Writes the gathered rows, all or none of them: after a failure the file still ends with a whole row.
    void writeRound();

signals:
    // Begin and end of a capture, with its path and rows; a failure to open; once per file that a write fails, and at
    // the end how many rows are missing.
    void logLine(QString line);

private:
    QString shownPath() const;
    bool writeAll(const QByteArray &bytes);
    bool writeGathered();
    void backToLastWholeRow();

    QFile file_;
    bool open_ = false;
    CaptureMode mode_ = CaptureMode::AllFrames;
    QByteArray head_; // mark and titles, until they are written
    QString rows_;    // of the round under way
    quint64 rowCount_ = 0;
    qint64 wholeSize_ = 0; // size of the file up to the last row known to be written
    quint64 writtenRows_ = 0;
    quint64 lostRows_ = 0;
    bool failed_ = false; // already told
};
