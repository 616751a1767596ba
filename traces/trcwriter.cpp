#include "traces/trcwriter.h"

#include "device/driver/identifiers.h"
#include "device/driver/timeunits.h"
#include "traces/textput.h"
#include "traces/trclayout.h"

#include <algorithm>

using namespace trc;

namespace
{

constexpr std::size_t kLargestRow = 320;
constexpr int kNumberWidth = 7;
constexpr int kMillisecondsWidth = 9;
constexpr int kDecimals = 3;                       // of a millisecond
constexpr int kDayDecimals = 15;                   // the nanosecond survives
constexpr char kErrorData[] = "5  08 00 00 00 00"; // an error of another kind, sending, at bit 0, both counters 0

// Milliseconds with three decimals.
char *putTime(char *at, std::int64_t time)
{
    const auto microseconds = static_cast<std::uint64_t>(std::max<std::int64_t>(time, 0) / kNanosecondsPerMicrosecond);
    at = put::decimalRight(at, microseconds / 1000, kMillisecondsWidth);
    *at++ = '.';
    return put::decimal(at, microseconds % 1000, kDecimals);
}

const char *typeText(const RawFrame &frame)
{
    if (frame.error)
        return " ER ";
    if (frame.remote)
        return " RR ";
    if (!frame.fd)
        return " DT ";
    if (frame.bitRateSwitch)
        return frame.errorStateIndicator ? " BI " : " FB ";
    return frame.errorStateIndicator ? " FE " : " FD ";
}

// The start in days since 1899-12-30; 0 when it is not known.
QByteArray daysText(std::optional<std::int64_t> utc)
{
    if (!utc || *utc < 0)
        return "0";
    const double fraction = static_cast<double>(*utc % kNanosecondsPerDay) / static_cast<double>(kNanosecondsPerDay);
    const qint64 days = *utc / kNanosecondsPerDay + kDaysTo1970;
    return QByteArray::number(days) + QByteArray::number(fraction, 'f', kDayDecimals).mid(1);
}

} // namespace

TrcWriter::TrcWriter(QIODevice *device, const TraceWriterOptions &options) : TextTraceWriter(device, options) {}

void TrcWriter::writeHead()
{
    const QByteArray head = ";$FILEVERSION=2.1\r\n"
                            ";$STARTTIME=" +
                            daysText(options_.startUtc) +
                            "\r\n"
                            ";$COLUMNS=N,O,T,B,I,d,R,L,D\r\n"
                            ";\r\n"
                            ";   Number, offset in ms, type, bus, identifier, direction, reserved, DLC, data\r\n"
                            ";---+-- ------+------ +- +- --+----- +- +- +--- +- -- -- -- -- -- -- --\r\n";
    char *const at = sink_.room(static_cast<std::size_t>(head.size()));
    sink_.filledTo(put::text(at, {head.constData(), static_cast<std::size_t>(head.size())}));
}

void TrcWriter::writeLines(const RawFrame *frames, int count)
{
    for (int index = 0; index < count; ++index)
        sink_.filledTo(writeRow(frames[index], sink_.room(kLargestRow)));
}

char *TrcWriter::writeRow(const RawFrame &frame, char *at)
{
    if (frame.time < 0)
        losses_.add(Loss::TimeBeforeStart);
    at = put::decimalRight(at, ++number_, kNumberWidth);
    *at++ = ' ';
    at = putTime(at, frame.time);
    at = put::text(at, typeText(frame));
    at = put::decimalRight(at, frame.channel, 2);
    if (frame.error)
        at = put::text(at, "        -");
    else if (frame.extended)
        at = put::hex(put::text(at, " "), frame.id & kLargestExtendedId, kExtendedDigits);
    else
        at = put::hex(put::text(at, "     "), frame.id & kLargestStandardId, kStandardDigits);
    at = put::text(at, frame.direction == Direction::Sent ? " Tx -  " : " Rx -  ");
    if (frame.error) {
        const bool switched = frame.bitRateSwitch || frame.errorStateIndicator;
        if (frame.id != 0 || frame.length != 0 || frame.extended || switched)
            losses_.add(Loss::ErrorDetails);
        if (frame.fd)
            losses_.add(Loss::ErrorFd);
        return put::text(put::text(at, kErrorData), "\r\n");
    }
    const bool fd = frame.fd && !frame.remote;
    if (frame.fd && frame.remote)
        losses_.add(Loss::RemoteFd);
    const unsigned length = std::min<unsigned>(frame.length, fd ? kRawDataBytes : kClassicBytes);
    const bool oddCode = !fd && length == kClassicBytes && frame.rawDlc > kClassicBytes;
    const unsigned code = oddCode ? frame.rawDlc : dlcOfLength(length);
    const unsigned written = lengthOfDlc(code, fd); // a length that FD does not have is filled up to the next one
    if (written != length)
        losses_.add(Loss::FdLength);
    at = put::decimal(at, code);
    if (!frame.remote && code > 0) {
        at = put::text(at, code < 10 ? "  " : " ");
        for (unsigned byte = 0; byte < written; ++byte) {
            *at++ = ' ';
            at = put::hexByte(at, byte < length ? frame.data[byte] : 0);
        }
    }
    return put::text(at, "\r\n");
}
