#include "traces/trcwriter.h"

#include "traces/trclayout.h"

#include <algorithm>
#include <cstring>

using namespace trc;

namespace
{

constexpr std::size_t kLargestRow = 320;
constexpr int kNumberWidth = 7;
constexpr int kMillisecondsWidth = 9;
constexpr int kDayDecimals = 15;                   // the nanosecond survives
constexpr char kErrorData[] = "5  08 00 00 00 00"; // an error of another kind, sending, at bit 0, both counters 0

char *put(char *at, std::string_view text)
{
    std::memcpy(at, text.data(), text.size());
    return at + text.size();
}

// Right-aligned decimal digits; more than the width when it takes more.
char *putNumber(char *at, std::uint64_t number, int width)
{
    char digits[20];
    int count = 0;
    do {
        digits[count++] = static_cast<char>('0' + number % 10);
        number /= 10;
    } while (number != 0);
    for (int blank = count; blank < width; ++blank)
        *at++ = ' ';
    while (count > 0)
        *at++ = digits[--count];
    return at;
}

char *putHex(char *at, std::uint32_t value, int digits)
{
    for (int digit = digits - 1; digit >= 0; --digit)
        *at++ = "0123456789ABCDEF"[value >> (4 * digit) & 0xF];
    return at;
}

// Milliseconds with three decimals.
char *putTime(char *at, std::int64_t time)
{
    constexpr std::int64_t kMicrosecond = 1000;
    const auto microseconds = static_cast<std::uint64_t>(std::max<std::int64_t>(time, 0) / kMicrosecond);
    at = putNumber(at, microseconds / 1000, kMillisecondsWidth);
    const auto decimals = static_cast<unsigned>(microseconds % 1000);
    *at++ = '.';
    *at++ = static_cast<char>('0' + decimals / 100);
    *at++ = static_cast<char>('0' + decimals / 10 % 10);
    *at++ = static_cast<char>('0' + decimals % 10);
    return at;
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
    return QByteArray::number(static_cast<qint64>(*utc / kNanosecondsPerDay + kDaysTo1970)) +
           QByteArray::number(fraction, 'f', kDayDecimals).mid(1);
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
    sink_.filledTo(put(at, {head.constData(), static_cast<std::size_t>(head.size())}));
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
    at = putNumber(at, ++number_, kNumberWidth);
    *at++ = ' ';
    at = putTime(at, frame.time);
    at = put(at, typeText(frame));
    at = putNumber(at, frame.channel, 2);
    if (frame.error)
        at = put(at, "        -");
    else if (frame.extended)
        at = putHex(put(at, " "), frame.id & kLargestExtended, kExtendedDigits);
    else
        at = putHex(put(at, "     "), frame.id & kLargestStandard, kStandardDigits);
    at = put(at, frame.direction == Direction::Sent ? " Tx -  " : " Rx -  ");
    if (frame.error) {
        if (frame.id != 0 || frame.length != 0 || frame.fd || frame.extended)
            losses_.add(Loss::ErrorDetails);
        return put(put(at, kErrorData), "\r\n");
    }
    const bool fd = frame.fd && !frame.remote;
    if (frame.fd && frame.remote)
        losses_.add(Loss::RemoteFd);
    const unsigned length = std::min<unsigned>(frame.length, fd ? kRawDataBytes : kClassicBytes);
    const bool oddCode = !fd && length == kClassicBytes && frame.rawDlc > kClassicBytes;
    const unsigned code = oddCode ? frame.rawDlc : dlcOfLength(length);
    at = putNumber(at, code, 1);
    if (!frame.remote) {
        at = put(at, code < 10 ? "  " : " ");
        // A length that FD does not have is filled up to the next one.
        const unsigned written = lengthOfDlc(code, fd);
        for (unsigned byte = 0; byte < written; ++byte) {
            *at++ = ' ';
            at = putHex(at, byte < length ? frame.data[byte] : 0, 2);
        }
    }
    return put(at, "\r\n");
}
