#include "analysis/signalhub.h"

#include "device/language.h"

#include <QFileInfo>

SignalHub::SignalHub(const std::optional<RecordingPart> &part, QObject *parent)
    : QObject(parent),
      part_(part),
      databases_(SignalDatabases::shared()),
      values_(std::make_shared<SignalReading>(part, StoreUse::Values))
{
    readTimes();
    values_->setLookup(databases_->lookup());
    connect(databases_.get(), &SignalDatabases::changed, this, [this] {
        values_->setLookup(databases_->lookup());
        emit databasesChanged();
    });
}

// A curve may keep the reading a little longer.
SignalHub::~SignalHub()
{
    values_->stop();
}

void SignalHub::setWanted(int count)
{
    wanted_ = count;
    if (wanted_ > 0 && !reading_) {
        reading_ = true;
        values_->start();
    } else if (wanted_ <= 0 && reading_ && isLive()) {
        reading_ = false;
        values_->stop();
    }
}

std::shared_ptr<SignalReading> SignalHub::curveReading() const
{
    if (isLive())
        return values_;
    auto reading = std::make_shared<SignalReading>(part_, StoreUse::Curves);
    reading->setLookup(databases_->lookup());
    return reading;
}

QString SignalHub::titleEnd() const
{
    if (!part_)
        return {};
    QString end = QStringLiteral(" - ") + QFileInfo(part_->index->path()).fileName();
    if (part_->first > 0 || part_->end < part_->index->rows())
        end += text3("（第%1至%2行）", "（第%1至%2列）", " (rows %1 to %2)").arg(part_->first + 1).arg(part_->end);
    return end;
}

void SignalHub::readTimes()
{
    const std::uint64_t end = part_ ? std::min(part_->end, part_->index->rows()) : 0;
    RawFrame first;
    RawFrame last;
    if (!part_ || part_->first >= end)
        return;
    RecordingRows rows(*part_->index);
    if (rows.read(part_->first, 1, &first) == 1 && rows.read(end - 1, 1, &last) == 1)
        times_ = std::pair(first.time, std::max(first.time, last.time));
}

QString fileChangedText()
{
    return text3("文件已改变，未能读到末尾", "檔案已變更，未能讀到結尾",
                 "The file has changed: it could not be read to its end");
}
