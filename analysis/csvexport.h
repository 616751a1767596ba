// Curves written to a CSV file in a thread of its own, so that the window goes on meanwhile.
#pragma once

#include "analysis/curvedata.h"

#include <QString>

#include <atomic>
#include <thread>
#include <vector>

class QIODevice;

class CsvExport
{
public:
    struct Column {
        QString title;
        std::shared_ptr<const CurveData> points;
    };

    // Begins at once: one row for each time in [from, to], nanoseconds, at which any of the curves has a point; nothing
    // where a curve has none then. The file is there when it is complete, else what it was before stays.
    CsvExport(QString path, std::vector<Column> columns, std::int64_t from, std::int64_t to);
    ~CsvExport(); // cancels
    CsvExport(const CsvExport &) = delete;
    CsvExport &operator=(const CsvExport &) = delete;

    void cancel() { cancelled_ = true; }
    bool finished() const { return finished_; }
    // 0..1
    double progress() const { return progress_; }
    const QString &path() const { return path_; }
    // Of a finished one: it was given up; or the system's reason why the file could not be written, else nothing.
    bool isCancelled() const { return cancelled_; }
    const QString &error() const { return error_; }

private:
    void run();
    bool write(QIODevice *file);

    const QString path_;
    const std::vector<Column> columns_;
    const std::int64_t from_;
    const std::int64_t to_;
    QString error_; // the thread's until it has finished
    std::atomic<double> progress_{0};
    std::atomic<bool> cancelled_{false};
    std::atomic<bool> finished_{false};
    std::thread thread_;
};
