#include "frames/sendthread.h"

#include "device/devicelayer.h"
#include "device/language.h"
#include "frames/csvreader.h"
#include "frames/csvrow.h"
#include "frames/finetimers.h"
#include "frames/framebuilder.h"
#include "frames/framesender.h"
#include "frames/pendingframes.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <utility>

namespace
{

constexpr qint64 kEndlessCount = std::numeric_limits<qint64>::max();
constexpr int kEndlessRepeat = -1;
constexpr uint kRoomPollMs = 5;
constexpr quint16 kOwnChannel = 2; // channel argument of the batch builders

bool anyChannelOpen()
{
    return isChannelOpen(0) || isChannelOpen(1);
}

// Adds 1 to a little-endian number; a carry out of the last byte is dropped.
void increment(quint8 *bytes, uint count)
{
    for (uint i = 0; i < count && ++bytes[i] == 0; ++i) {
    }
}

} // namespace

sendThread::sendThread(uint channel, QObject *parent) : QThread(parent), channel_(channel)
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
    filePath_ = path;
    fileRepeat_ = repeat;
    fileInterval_ = interval;
    fileChannel_ = std::min(channel, kChannelOfRow);
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
        say({"通道: %1开始发送数据：一直发送，发送间隔:%2ms...", "通道: %1開始發送數據：一直發送，發送間隔:%2ms...",
             "Channel:%1 Start sending data: Keep sending, sending interval:%2ms..."},
            channel_ + 1, interval_);
    else
        say({"通道: %1开始发送数据：数据总帧数:%2，发送间隔:%3ms...",
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
    while (!stop_.isSet() && channelOpen() && count_ > 0 && waitForRoom(channelOpen)) {
        framesPerSend_ = static_cast<uint>(std::min<qint64>(framesPerSend_, count_));
        const uint batchSize = framesPerSend_;
        for (uint i = 0; i < batchSize; ++i)
            nextFrame(records[i]);
        const bool sent = sendRecords(channel_, records.data(), batchSize);
        count_ -= batchSize;
        if (count_ == 0 && keepSending_)
            count_ = kEndlessCount;
        if (!sent) {
            sayChannel(failure);
            return;
        }
        buildBatch(records.data(), batchSize, kOwnChannel);
        sleepFor(interval_, channelOpen);
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
    say({"开始发送文件: %1...", "開始發送文件: %1...", "send file: %1..."}, filePath_);
    static constexpr LogText kFileError{"文件发送错误！", "文件發送錯誤！", "File transmission Error!"};
    skippedTold_ = 0;
    CsvReader reader;
    if (!reader.open(filePath_)) {
        say(kFileError);
    } else {
        // More passes like one that sent nothing, or endless ones that nobody took a frame of, would only spin.
        const bool endless = fileRepeat_ == kEndlessRepeat;
        for (int pass = 0; !stop_.isSet() && anyChannelOpen() && (endless || pass < fileRepeat_); pass += !endless) {
            const PassResult result = sendPass(reader);
            if (result == PassResult::NothingSent || (endless && result == PassResult::NothingTaken))
                break;
        }
        if (reader.failed())
            say(kFileError);
        else if (stop_.isSet())
            say({"文件中止发送！", "文件中止發送！", "File Aborted Sending!"});
        else
            say({"文件发送完成！", "文件發送完成！", "File transmission completed!"});
    }
    emit endSend(0);
    emit endSend(1);
}

sendThread::PassResult sendThread::sendPass(CsvReader &reader)
{
    PassResult result = PassResult::NothingSent;
    quint64 skipped = 0;
    rowClock_.clear();
    CsvReader::Line line;
    CsvFrame frame;
    for (bool readable = reader.rewind(); readable && !stop_.isSet() && anyChannelOpen();) {
        if (!reader.next(line))
            break;
        if (line.size == 0) {
            rowClock_.clear();
            continue;
        }
        const bool isFrame = parseCsvRow(line.text, line.size, frame);
        const uint channel = fileChannel_ == kChannelOfRow ? frame.channel : fileChannel_;
        if (!isFrame || channel == CsvFrame::kNoChannel) {
            ++skipped;
            continue;
        }
        const bool inTime = fileInterval_ == kRecordedTiming
                                ? stop_.sleepUntil(rowClock_.nextDue(frame.timeMs), anyChannelOpen)
                                : sleepFor(fileInterval_, anyChannelOpen);
        if (!inTime || !waitForRoom(anyChannelOpen))
            break;
        if (!isChannelOpen(channel))
            sendRow(frame, channel); // shown all the same
        else if (sendRow(frame, channel))
            result = PassResult::Taken;
        else if (result == PassResult::NothingSent)
            result = PassResult::NothingTaken;
    }
    if (skipped > skippedTold_) {
        skippedTold_ = skipped;
        say({"文件中跳过了%1行无效数据！", "文件中跳過了%1行無效數據！", "%1 invalid rows of the file skipped!"},
            skipped);
    }
    return result;
}

// A row that fails does not end the file.
bool sendThread::sendRow(const CsvFrame &frame, uint channel)
{
    const auto send = [&](auto record) {
        toRecord(frame, record);
        const bool taken = sendRecords(channel, &record, 1);
        buildBatch(&record, 1, static_cast<quint16>(channel));
        return taken;
    };
    return frame.canFd ? send(CanFdTransmitRecord{}) : send(CanTransmitRecord{});
}

template <typename Record> void sendThread::buildBatch(const Record *records, uint count, quint16 channel)
{
    if (!pendingFramesTaken())
        return;
    QList<ModelItem> batch;
    batch.reserve(static_cast<int>(count));
    for (const Record *record = records; record != records + count; ++record)
        appendItem(batch, *record, channel == kOwnChannel ? channel_ : channel);
    appendPendingFrames(std::move(batch));
}

bool sendThread::sleepFor(uint milliseconds, const std::function<bool()> &goOn)
{
    if (milliseconds == 0)
        return !stop_.isSet();
    return stop_.sleepUntil(StopFlag::Clock::now() + std::chrono::milliseconds(milliseconds), goOn);
}

bool sendThread::waitForRoom(const std::function<bool()> &goOn)
{
    while (!pendingFramesHaveRoom())
        if (!sleepFor(kRoomPollMs, goOn))
            return false;
    return true;
}

template <typename... Args> void sendThread::say(const LogText &text, const Args &...args)
{
    const unsigned code = languageCode();
    if (code >= LanguageCount)
        return;
    QString line = text3(code, text.simplified, text.traditional, text.english);
    ((line = line.arg(args)), ...);
    emit log(line);
}

void sendThread::sayChannel(const LogText &text)
{
    const unsigned code = languageCode();
    if (code >= LanguageCount)
        return;
    emit log(text3(code, "通道", "通道", "channel") + QString::number(channel_ + 1) +
             text3(code, text.simplified, text.traditional, text.english));
}
