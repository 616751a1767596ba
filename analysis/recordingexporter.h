// Asks where the rows of a recording shall go, and writes them there in the background.
#pragma once

#include "traces/recordingexport.h"

#include <QObject>

class QWidget;

class RecordingExporter : public QObject
{
    Q_OBJECT

public:
    RecordingExporter(const RecordingIndex &index, QWidget *window);

    // As RecordingExport takes them; nothing happens when no file is chosen. One at a time.
    void start(const RecordingFilter *filter, std::uint64_t first, std::uint64_t end);
    bool isRunning() const { return run_ != nullptr; }
    void cancel();
    // Cancels, and waits for the end: nothing reads the recording or the filter afterwards.
    void giveUp() { run_.reset(); }
    // Of an export that runs, 0..1.
    double progress() const;
    // Looks whether the export has ended, and then tells what came of it.
    void look();

signals:
    void told(const QString &message); // what came of an export

private:
    void tellLosses(const RecordingExport::State &state) const;

    const RecordingIndex &index_;
    QWidget *window_;
    QString fileName_;
    std::unique_ptr<RecordingExport> run_;
};
