#include "frames/sendthread.h"

#include "device/devicelayer.h"
#include "device/language.h"
#include "frames/finetimers.h"
#include "frames/framesender.h"
#include "frames/pendingframes.h"

#include <algorithm>
#include <limits>

namespace
{

constexpr qint64 kEndlessCount = std::numeric_limits<qint64>::max();

// Adds 1 to a little-endian number; a carry out of the last byte is dropped.
void increment(quint8 *bytes, uint count)
{
    for (uint i = 0; i < count && ++bytes[i] == 0; ++i) {
    }
}

} // namespace

sendThread::sendThread(uint channel, QObject *parent)
    : QThread(parent), channel_(channel), log_([this](const QString &line) { emit log(line); })
{
    registerFrameTypes();
}

sendThread::~sendThread()
{
    stop();
    wait();
}

void sendThread::setSend(uint id, int idIncrement, uint extended, uint canFd, quint8 bitRateSwitch, const quint8 *data,
                         uint length, int dataIncrement, qint64 count, uint framesPerSend, uint interval, uint remote,
                         uint transmitType)
{
    mode_ = Mode::Count;
    id_ = id;
    idIncrement_ = idIncrement != 0;
    extended_ = extended;
    canFd_ = canFd != 0;
    bitRateSwitch_ = bitRateSwitch;
    std::copy_n(data, data_.size(), data_.begin());
    length_ = std::min<uint>(length, kFdDataBytes);
    dataIncrement_ = dataIncrement != 0;
    keepSending_ = count == -1;
    count_ = keepSending_ ? kEndlessCount : count;
    framesPerSend_ = qBound(1u, framesPerSend, kMaxFramesPerSend);
    interval_ = interval;
    remote_ = remote;
    transmitType_ = transmitType;
    stop_.clear();
}

void sendThread::setFileSend(const QString &path, int repeat, uint interval, uint channel)
{
    mode_ = Mode::File;
    file_.path = path;
    file_.repeat = repeat;
    file_.interval = interval;
    file_.channel = std::min(channel, kChannelOfRow);
    stop_.clear();
}

void sendThread::stop()
{
    stop_.set();
}

void sendThread::run()
{
    const FineTimers fineTimers;
    if (mode_ == Mode::Count)
        runCount();
    else
        runFile();
    stop_.clear();
}

void sendThread::runCount()
{
    if (keepSending_)
        say(log_,
            {"通道: %1开始发送数据：一直发送，发送间隔:%2ms...", "通道: %1開始發送數據：一直發送，發送間隔:%2ms...",
             "Channel:%1 Start sending data: Keep sending, sending interval:%2ms..."},
            channel_ + 1, interval_);
    else
        say(log_,
            {"通道: %1开始发送数据：数据总帧数:%2，发送间隔:%3ms...",
             "通道: %1開始發送數據：數據縂幀數:%2，發送間隔:%3ms...",
             "Channel:%1 Start sending data: Total frames of data:%2, sending interval:%3ms..."},
            channel_ + 1, count_, interval_);

    if (canFd_)
        sendCounted<CanFdTransmitRecord>({"CANFD数据发送失败！", "CANFD數據發送失敗！", "CANFD Data sending failed！"});
    else
        sendCounted<CanTransmitRecord>({"CAN数据发送失败！", "CAN數據發送失敗！", "CAN Data sending failed！"});

    if (stop_.isSet())
        sayChannel({"数据中止发送！", "數據中止發送！", "Data Aborted Sending!"});
    else if (count_ == 0)
        sayChannel({"数据发送完成！", "數據發送完成！", "Data transmission completed!"});
    appendPendingFrames({});
    emit endSend(channel_);
}

template <typename Record> void sendThread::sendCounted(const LogText &failure)
{
    std::array<Record, kMaxFramesPerSend> records; // every batch is built in it
    const auto channelOpen = [this] { return isChannelOpen(channel_); };
    while (!stop_.isSet() && channelOpen() && count_ > 0 && waitForPendingRoom(stop_, channelOpen)) {
        framesPerSend_ = static_cast<uint>(std::min<qint64>(framesPerSend_, count_));
        const uint batchSize = framesPerSend_;
        for (uint i = 0; i < batchSize; ++i)
            nextFrame(records[i]);
        const bool taken = sendRecords(channel_, records.data(), batchSize);
        count_ -= batchSize;
        if (count_ == 0 && keepSending_)
            count_ = kEndlessCount;
        if (!taken) {
            sayChannel(failure);
            return;
        }
        showSent(channel_, records.data(), batchSize);
        stop_.sleepFor(interval_, channelOpen);
    }
}

template <typename Record> void sendThread::nextFrame(Record &record)
{
    record = Record{};
    record.id = makeFrameId(id_, extended_, remote_, 0);
    record.length = static_cast<std::uint8_t>(std::min<std::size_t>(length_, sizeof record.data));
    std::copy_n(data_.begin(), sizeof record.data, record.data);
    record.transmitType = transmitType_;
    if constexpr (std::is_same_v<Record, CanFdTransmitRecord>)
        record.flags = bitRateSwitch_;

    if (idIncrement_ && ++id_ == (extended_ != 0 ? kExtendedIdLimit : kStandardIdLimit))
        id_ = 0;
    if (dataIncrement_)
        increment(data_.data(), length_);
}

void sendThread::runFile()
{
    FileSend(file_, stop_, log_).run();
    emit endSend(0);
    emit endSend(1);
}

void sendThread::sayChannel(const LogText &text)
{
    const unsigned code = languageCode();
    if (code >= LanguageCount)
        return;
    emit log(text3(code, "通道", "通道", "channel") + QString::number(channel_ + 1) +
             text3(code, text.simplified, text.traditional, text.english));
}
