#include "frames/recvthread.h"

#include "device/devicelayer.h"
#include "device/language.h"
#include "device/settingsstore.h"
#include "frames/adapterclock.h"
#include "frames/finetimers.h"
#include "frames/framebuilder.h"
#include "frames/pendingframes.h"
#include "frames/rawrecords.h"
#include "frames/tap.h"

#include <utility>

namespace
{

constexpr uint kLargestRead = 1000;
constexpr uint kInitialWaitMs = 50;
constexpr uint kWaitMs = 1;
constexpr unsigned long kPollPauseMs = 1;
constexpr quint8 kIdlePasses = 9;
constexpr qint64 kBurstQuietMs = 10000; // so long without a pause ends a burst of them

bool inOrder(std::uint32_t last, std::uint32_t current)
{
    return current == last + 1 || (last == kLargestStandardId && current == 0);
}

} // namespace

recvThread::recvThread(uint channel, QObject *parent)
    : QThread(parent),
      channel_(channel),
      waitTime_(kInitialWaitMs),
      readCapacity_(kLargestRead),
      busWatch_(channel, [this](const QString &line) { emit log(line); })
{
    registerFrameTypes();
}

recvThread::~recvThread()
{
    stop();
    wait();
}

void recvThread::setRecvParams(uint, uint)
{
    waitTime_ = kWaitMs;
    readCapacity_ = kLargestRead;
}

void recvThread::stop()
{
    stop_ = true;
}

void recvThread::stopAndWait()
{
    stop();
    wait();
    stop_ = false;
}

void recvThread::clearLastIds()
{
    lastClassicId_ = 0;
    lastFdId_ = 0;
}

void recvThread::run()
{
    const FineTimers fineTimers;
    CanReceiveRecord classic[kLargestRead];
    CanFdReceiveRecord fd[kLargestRead];
    quint8 idle = 0;
    busWatch_.begin();
    while (!stop_ && isChannelOpen(channel_)) {
        busWatch_.pass();
        if (!pendingFramesHaveRoom()) {
            tellPause();
            msleep(kPollPauseMs);
            continue;
        }
        const uint classicCount = receiveCan(channel_, classic, readCapacity_, 0);
        if (classicCount > 0)
            buildBatch(classic, classicCount);
        const uint fdCount = receiveCanFd(channel_, fd, readCapacity_, 0);
        if (fdCount > 0)
            buildBatch(fd, fdCount);
        if (classicCount > 0 || fdCount > 0) {
            idle = 1;
        } else if (++idle > kIdlePasses) {
            buildBatch(classic, 0);
            idle = 0;
        }
        msleep(kPollPauseMs);
    }
    buildBatch(classic, 0);
    busWatch_.end();
    stop_ = false;
}

void recvThread::tellPause()
{
    const bool sameBurst = lastPause_.isValid() && !lastPause_.hasExpired(kBurstQuietMs);
    lastPause_.start();
    if (sameBurst)
        return;
    emit log(text3("通道%1暂停接收：有%2帧等待界面处理，可能丢帧！", "通道%1暫停接收：有%2幀等待界面處理，可能丟幀！",
                   "Channel %1 pauses receiving: %2 frames wait for the window, frames may be lost!")
                 .arg(channel_ + 1)
                 .arg(kPendingCeiling));
}

void recvThread::buildBatch(const CanReceiveRecord *records, uint count)
{
    build(records, count, lastClassicId_);
}

void recvThread::buildBatch(const CanFdReceiveRecord *records, uint count)
{
    build(records, count, lastFdId_);
}

template <typename Record> void recvThread::build(const Record *records, uint count, std::atomic<std::uint32_t> &lastId)
{
    passTap(records, count);
    if (!pendingFramesTaken())
        return;
    QList<ModelItem> batch;
    batch.reserve(static_cast<int>(count));
    for (const Record *record = records; record != records + count; ++record) {
        checkContinuity(record->id, lastId);
        appendItem(batch, *record, channel_);
    }
    appendPendingFrames(std::move(batch));
}

template <typename Record> void recvThread::passTap(const Record *records, uint count)
{
    if (count == 0)
        return;
    noteAdapterTime(channel_, records[count - 1].timeStamp);
    if (!tapHasReaders())
        return;
    rawBatch_.clear();
    for (const Record *record = records; record != records + count; ++record)
        rawBatch_.push_back(toRawFrame(*record, channel_));
    publishToTap(rawBatch_.data(), rawBatch_.size());
}

void recvThread::checkContinuity(std::uint32_t id, std::atomic<std::uint32_t> &lastId)
{
    static const QString key = QStringLiteral("recvIDAdd");
    static const QString off = QStringLiteral("0");
    if (settings::number(key, off) != 1)
        return;
    const std::uint32_t lastWord = lastId;
    if (lastWord != 0) {
        settings::setValue(key, off, true);
        const std::uint32_t last = lastWord & kIdMask;
        const std::uint32_t current = id & kIdMask;
        if (!inOrder(last, current))
            emit errorID(last, current);
    }
    lastId = id;
}
