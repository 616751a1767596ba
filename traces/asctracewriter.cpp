#include "device/driver/identifiers.h"
#include "device/driver/timeunits.h"
#include "traces/asclayout.h"
#include "traces/asctrace.h"
#include "traces/textput.h"
#include "traces/texttrace.h"

namespace
{

constexpr std::size_t kLongestLine = 512;
constexpr std::size_t kLongestHead = 512;
constexpr int kSecondsWidth = 4;
constexpr int kIdWidth = 15;
constexpr int kFdIdWidth = 10;
constexpr int kNameWidth = 33; // blanks: there is no name
constexpr char kLowerHexDigits[] = "0123456789abcdef";

// The part of the start that the date cannot hold; the times carry it.
std::int64_t belowMillisecond(std::optional<std::int64_t> start)
{
    const std::int64_t rest = start.value_or(0) % kNanosecondsPerMillisecond;
    return rest < 0 ? rest + kNanosecondsPerMillisecond : rest;
}

class AscWriter final : public TextTraceWriter
{
public:
    AscWriter(QIODevice *device, const TraceWriterOptions &options)
        : TextTraceWriter(device, options, belowMillisecond(options.startUtc))
    {
    }

protected:
    void writeHead() override;
    void writeTail() override;
    void writeLines(const RawFrame *frames, int count) override;

private:
    char *writeTime(char *out, std::int64_t time) const;
    char *writeError(char *out, const RawFrame &frame);
    char *writeClassic(char *out, const RawFrame &frame);
    char *writeFd(char *out, const RawFrame &frame);
};

void AscWriter::writeHead()
{
    const std::string date = options_.startUtc ? ' ' + ascDateText(*options_.startUtc) : std::string();
    char *out = sink_.room(kLongestHead);
    if (!date.empty()) {
        out = put::text(out, "date");
        out = put::text(out, date);
        *out++ = '\n';
    }
    out = put::text(out, "base hex  timestamps absolute\ninternal events logged\n// version 9.0.0\nBegin Triggerblock");
    out = put::text(out, date);
    *out++ = '\n';
    out = writeTime(out, 0);
    sink_.filledTo(put::text(out, " Start of measurement\n"));
}

void AscWriter::writeTail()
{
    sink_.filledTo(put::text(sink_.room(kLongestLine), "End TriggerBlock\n"));
}

void AscWriter::writeLines(const RawFrame *frames, int count)
{
    for (int i = 0; i < count; ++i) {
        const RawFrame &frame = frames[i];
        char *out = writeTime(sink_.room(kLongestLine), timeOnFile(frame.time));
        *out++ = ' ';
        out = frame.error ? writeError(out, frame) : frame.fd ? writeFd(out, frame) : writeClassic(out, frame);
        *out++ = '\n';
        sink_.filledTo(out);
    }
}

char *AscWriter::writeTime(char *out, std::int64_t time) const
{
    const auto rest = static_cast<std::uint64_t>(time % kNanosecondsPerSecond);
    out = put::decimalRight(out, static_cast<std::uint64_t>(time / kNanosecondsPerSecond), kSecondsWidth);
    *out++ = '.';
    return options_.nanoseconds ? put::decimal(out, rest, 9) : put::decimal(out, rest / kNanosecondsPerMicrosecond, 6);
}

char *writeId(char *out, const RawFrame &frame, int width)
{
    const std::uint32_t id = frame.id & largestId(frame.extended);
    char *const end = out + width;
    out = put::hex(out, id, put::hexDigits(id));
    if (frame.extended)
        *out++ = 'x';
    std::memset(out, ' ', static_cast<std::size_t>(end - out));
    return end;
}

const char *directionText(const RawFrame &frame)
{
    return frame.direction == Direction::Sent ? " Tx   " : " Rx   ";
}

char *writeBytes(char *out, const RawFrame &frame)
{
    const unsigned length = lengthOnFile(frame);
    for (unsigned i = 0; i < length; ++i) {
        *out++ = ' ';
        out = put::hexByte(out, frame.data[i]);
    }
    return out;
}

char *AscWriter::writeError(char *out, const RawFrame &frame)
{
    if (frame.id != 0 || frame.length > 0 || frame.bitRateSwitch || frame.errorStateIndicator)
        losses_.add(Loss::ErrorDetails);
    if (frame.fd) {
        out = put::text(out, "CANFD ");
        out = put::decimalRight(out, frame.channel, 3);
        out = put::text(out, directionText(frame));
    } else {
        if (frame.direction == Direction::Sent)
            losses_.add(Loss::ErrorDirection);
        out = put::decimal(out, frame.channel);
        *out++ = ' ';
    }
    return put::text(out, "ErrorFrame");
}

char *AscWriter::writeClassic(char *out, const RawFrame &frame)
{
    const unsigned length = std::min<unsigned>(frame.length, kClassicBytes);
    out = put::decimal(out, frame.channel);
    out = put::text(out, "  ");
    out = writeId(out, frame, kIdWidth);
    out = put::text(out, directionText(frame));
    *out++ = frame.remote ? 'r' : 'd';
    *out++ = ' ';
    const bool raw = frame.rawDlc > kClassicBytes && frame.rawDlc < 16 && length == kClassicBytes;
    *out++ = put::kHexDigits[raw ? frame.rawDlc : length];
    return writeBytes(out, frame);
}

char *AscWriter::writeFd(char *out, const RawFrame &frame)
{
    const unsigned length = lengthOnFile(frame);
    const std::uint32_t flags = asc::kFd | (frame.remote ? asc::kRemote : 0) |
                                (frame.bitRateSwitch ? asc::kBitRateSwitch : 0) |
                                (frame.errorStateIndicator ? asc::kErrorState : 0);
    out = put::text(out, "CANFD ");
    out = put::decimalRight(out, frame.channel, 3);
    out = put::text(out, directionText(frame));
    out = writeId(out, frame, kFdIdWidth);
    std::memset(out, ' ', kNameWidth);
    out += kNameWidth;
    *out++ = ' ';
    *out++ = frame.bitRateSwitch ? '1' : '0';
    *out++ = ' ';
    *out++ = frame.errorStateIndicator ? '1' : '0';
    *out++ = ' ';
    *out++ = kLowerHexDigits[dlcOfLength(frame.length)];
    *out++ = ' ';
    out = put::decimalRight(out, length, 2);
    out = writeBytes(out, frame);
    out = put::text(out, "        0    0     ");
    out = put::hex(out, flags, put::hexDigits(flags));
    return put::text(out, "        0        0        0        0        0");
}

} // namespace

std::unique_ptr<TraceWriter> writeAsc(QIODevice *device, const TraceWriterOptions &options)
{
    return std::make_unique<AscWriter>(device, options);
}
