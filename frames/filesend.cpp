#include "frames/filesend.h"

#include "device/devicelayer.h"
#include "frames/csvrow.h"
#include "frames/framesender.h"
#include "frames/pendingframes.h"

#include <QDateTime>
#include <QLocale>

#include <chrono>
#include <utility>

namespace
{

constexpr int kEndlessRepeat = -1;
constexpr unsigned kFruitlessPauseMs = 1;
constexpr std::chrono::minutes kLongWait{1};

bool anyChannelOpen()
{
    return isChannelOpen(0) || isChannelOpen(1);
}

} // namespace

FileSend::FileSend(const Request &request, StopFlag &stop, LogSink log)
    : request_(request), stop_(stop), log_(std::move(log))
{
}

void FileSend::run()
{
    static constexpr LogText kFileError{"文件发送错误！", "文件發送錯誤！", "File transmission Error!"};
    say(log_, {"开始发送文件: %1...", "開始發送文件: %1...", "send file: %1..."}, request_.path);
    if (!reader_.open(request_.path)) {
        say(log_, kFileError);
        return;
    }
    sendPasses();
    if (reader_.failed())
        say(log_, kFileError);
    else
        tellEnd();
    if (notTaken_ > 0)
        say(log_,
            {"未被接收的帧数：%1（只听模式、无应答或通道未打开）", "未被接收的幀數：%1（只聽模式、無應答或通道未打開）",
             "Frames not taken: %1 (listen-only, no acknowledge or channel not open)"},
            notTaken_);
}

void FileSend::sendPasses()
{
    const bool endless = request_.repeat == kEndlessRepeat;
    for (int pass = 0; endless || pass < request_.repeat; pass += !endless) {
        if (stop_.isSet() || !anyChannelOpen())
            return;
        const Pass result = sendPass();
        tellRows(result);
        nothingFound_ = !result.foundFrame;
        if (nothingFound_)
            return;
        if (!result.taken && !result.waited)
            stop_.sleepFor(kFruitlessPauseMs, anyChannelOpen);
    }
}

FileSend::Pass FileSend::sendPass()
{
    Pass pass;
    rowClock_.clear();
    CsvFrame frame;
    unsigned channel = 0;
    if (!reader_.rewind())
        return pass;
    while (!stop_.isSet() && anyChannelOpen() && nextFrame(frame, channel, pass)) {
        pass.foundFrame = true;
        if (!waitForTurn(frame, pass))
            break;
        if (sendRow(frame, channel))
            pass.taken = true;
        else
            ++notTaken_;
    }
    return pass;
}

bool FileSend::nextFrame(CsvFrame &frame, unsigned &channel, Pass &pass)
{
    CsvReader::Line line;
    while (!stop_.isSet() && reader_.next(line)) {
        if (line.size == 0) {
            rowClock_.clear();
            continue;
        }
        const bool isFrame = parseCsvRow(line.text, line.size, frame);
        channel = request_.channel == kChannelOfRow ? frame.channel : request_.channel;
        if (isFrame && channel != CsvFrame::kNoChannel)
            return true;
        ++pass.invalidRows;
    }
    return false;
}

bool FileSend::waitForTurn(const CsvFrame &frame, Pass &pass)
{
    if (request_.interval != kRecordedTiming) {
        pass.waited |= request_.interval != 0;
        if (!stop_.sleepFor(request_.interval, anyChannelOpen))
            return false;
    } else if (!frame.hasTime) {
        ++pass.rowsWithoutTime;
    } else {
        const RowClock::Clock::time_point due = rowClock_.nextDue(frame.timeMs);
        pass.waited |= due > RowClock::Clock::now();
        announce(due);
        if (!stop_.sleepUntil(due, anyChannelOpen))
            return false;
    }
    return waitForPendingRoom(stop_, anyChannelOpen);
}

void FileSend::announce(RowClock::Clock::time_point due) const
{
    const auto wait = std::chrono::duration_cast<std::chrono::milliseconds>(due - RowClock::Clock::now());
    if (wait <= kLongWait)
        return;
    const QTime moment = QDateTime::currentDateTime().addMSecs(wait.count()).time();
    say(log_, {"下一帧将于%1发送", "下一幀將於%1發送", "Next frame due at %1"},
        QLocale::c().toString(moment, QStringLiteral("hh:mm:ss")));
}

bool FileSend::sendRow(const CsvFrame &frame, unsigned channel) const
{
    const auto send = [&](auto record) {
        toRecord(frame, record);
        const bool taken = sendRecords(channel, &record, 1);
        showSent(channel, &record, 1);
        return taken;
    };
    return frame.canFd ? send(CanFdTransmitRecord{}) : send(CanTransmitRecord{});
}

void FileSend::tellRows(const Pass &pass)
{
    if (pass.invalidRows > told_.invalidRows) {
        told_.invalidRows = pass.invalidRows;
        say(log_, {"文件中跳过了%1行无效数据！", "檔案中跳過了%1行無效數據！", "Invalid rows of the file skipped: %1"},
            pass.invalidRows);
    }
    if (pass.rowsWithoutTime > told_.rowsWithoutTime) {
        told_.rowsWithoutTime = pass.rowsWithoutTime;
        say(log_,
            {"文件中有%1行的时间无法读取，已立即发送", "檔案中有%1行的時間無法讀取，已立即發送",
             "Rows sent at once because their time cannot be read: %1"},
            pass.rowsWithoutTime);
    }
}

void FileSend::tellEnd() const
{
    if (stop_.isSet()) {
        say(log_, {"文件中止发送！", "文件中止發送！", "File Aborted Sending!"});
        return;
    }
    say(log_, {"文件发送完成！", "文件發送完成！", "File transmission completed!"});
    if (!anyChannelOpen())
        say(log_, {"没有打开的通道！", "沒有打開的通道！", "No channel is open!"});
    else if (nothingFound_)
        say(log_, {"文件中没有可发送的帧！", "檔案中沒有可發送的幀！", "The file holds no frame to send!"});
}
