#include "analysis/csvexport.h"

#include "device/driver/timeunits.h"

#include <QSaveFile>

#include <cmath>
#include <limits>

namespace
{
constexpr int kTimeDecimals = 9;
constexpr int kValueDigits = 15;
constexpr int kFlushBytes = 1 << 18;

QByteArray quoted(QString text)
{
    return '"' + text.replace('"', QLatin1String("\"\"")).toUtf8() + '"';
}
} // namespace

CsvExport::CsvExport(QString path, std::vector<Column> columns, std::int64_t from, std::int64_t to)
    : path_(std::move(path)), columns_(std::move(columns)), from_(from), to_(to)
{
    thread_ = std::thread(&CsvExport::run, this);
}

CsvExport::~CsvExport()
{
    cancel();
    thread_.join();
}

void CsvExport::run()
{
    QSaveFile file(path_);
    const bool written = file.open(QIODevice::WriteOnly) && write(&file) && !cancelled_ && file.commit();
    if (!written && !cancelled_)
        error_ = file.errorString();
    finished_ = true;
}

bool CsvExport::write(QIODevice *file)
{
    QByteArray text("\xEF\xBB\xBFTime [s]");
    std::vector<std::size_t> next;
    std::vector<std::size_t> end;
    std::size_t all = 0;
    std::size_t done = 0;
    for (const Column &column : columns_) {
        text += ',' + quoted(column.title);
        next.push_back(column.points->firstAt(from_));
        end.push_back(column.points->firstAt(to_ + 1));
        all += end.back() - next.back();
    }
    text += "\r\n";
    while (!cancelled_) {
        std::int64_t time = std::numeric_limits<std::int64_t>::max();
        bool any = false;
        for (std::size_t i = 0; i < columns_.size(); ++i)
            if (next[i] < end[i]) {
                time = std::min(time, columns_[i].points->at(next[i]).time);
                any = true;
            }
        if (!any)
            return file->write(text) == text.size();
        text += QByteArray::number(double(time) / kNanosecondsPerSecond, 'f', kTimeDecimals);
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            text += ',';
            if (next[i] >= end[i] || columns_[i].points->at(next[i]).time != time)
                continue;
            const double value = columns_[i].points->at(next[i]++).value;
            ++done;
            if (!std::isnan(value))
                text += QByteArray::number(value, 'g', kValueDigits);
        }
        text += "\r\n";
        if (text.size() > kFlushBytes) {
            if (file->write(text) != text.size())
                return false;
            text.clear();
            progress_ = double(done) / double(all);
        }
    }
    return true;
}
