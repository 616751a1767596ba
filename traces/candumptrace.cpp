#include "traces/candumptrace.h"

#include "device/driver/candumpline.h"
#include "device/driver/identifiers.h"
#include "device/driver/timeunits.h"
#include "traces/channelnames.h"
#include "traces/textput.h"
#include "traces/texttrace.h"

#include <algorithm>

namespace
{

constexpr std::int64_t kFirstDate = 10 * 365 * 86400 * kNanosecondsPerSecond;
constexpr std::uint32_t kErrorFlag = 0x20000000;
constexpr int kSecondsDigits = 10;
constexpr std::size_t kLongestLine = 256;

class CandumpReader final : public TextTraceReader
{
public:
    using TextTraceReader::TextTraceReader;
    TraceFormat format() const override { return TraceFormat::Candump; }

protected:
    std::shared_ptr<const TraceState> state() override;
    void restore(const TraceState &state) override { restoreValues(state, channels_, origin_, begun_); }
    LineKind readLine(std::string_view line, RawFrame *frame) override;

private:
    ChannelNames channels_;
    std::shared_ptr<const TraceState> kept_;
    std::size_t keptNames_ = 0;
    std::int64_t origin_ = 0; // on the log's clock
    bool begun_ = false;
};

TextTraceReader::LineKind CandumpReader::readLine(std::string_view line, RawFrame *frame)
{
    CandumpLine parsed;
    if (!parseCandumpLine(line, &parsed, frame->data)) {
        const std::size_t first = line.find_first_not_of(" \t");
        const bool silent = first == std::string_view::npos || line[first] == '#' || line[first] == ';';
        return silent ? LineKind::Other : LineKind::Damaged;
    }
    const std::uint16_t channel = channels_.channelOf(parsed.interfaceName);
    const bool sent = parsed.rest == " T";
    if (channel == 0 || !(sent || parsed.rest == " R" || parsed.rest.find_first_not_of(" \t") == parsed.rest.npos))
        return LineKind::Damaged;
    const auto time = static_cast<std::int64_t>(parsed.time);
    if (!begun_ && time >= kFirstDate) {
        origin_ = time;
        startUtc_ = time;
    }
    begun_ = true;
    frame->time = time - origin_;
    frame->id = parsed.id;
    frame->channel = channel;
    frame->direction = sent ? Direction::Sent : Direction::Received;
    frame->extended = parsed.extended;
    frame->remote = parsed.remote;
    frame->fd = parsed.fd;
    frame->bitRateSwitch = (parsed.fdFlags & kCandumpBitRateSwitch) != 0;
    frame->errorStateIndicator = (parsed.fdFlags & kCandumpErrorState) != 0;
    frame->error = parsed.error;
    frame->length = parsed.length;
    frame->rawDlc = parsed.rawDlc;
    return LineKind::Frame;
}

// One for all checkpoints between which no new name came: the rest is settled by the first frame.
std::shared_ptr<const TraceState> CandumpReader::state()
{
    if (!kept_ || keptNames_ != channels_.count())
        kept_ = keepValues(channels_, origin_, begun_);
    keptNames_ = channels_.count();
    return kept_;
}

class CandumpWriter final : public TextTraceWriter
{
public:
    using TextTraceWriter::TextTraceWriter;

protected:
    void writeLines(const RawFrame *frames, int count) override;

private:
    char *writeLine(char *out, const RawFrame &frame);
    char *writeError(char *out, const RawFrame &frame);
    char *writePayload(char *out, const RawFrame &frame);
};

void CandumpWriter::writeLines(const RawFrame *frames, int count)
{
    for (int i = 0; i < count; ++i)
        sink_.filledTo(writeLine(sink_.room(kLongestLine), frames[i]));
}

char *CandumpWriter::writeLine(char *out, const RawFrame &frame)
{
    constexpr std::int64_t microsecond = 1000;
    const std::int64_t time = timeOnFile(frame.time);
    *out++ = '(';
    const auto seconds = static_cast<std::uint64_t>(time / kNanosecondsPerSecond);
    const auto rest = static_cast<std::uint64_t>(time % kNanosecondsPerSecond);
    out = put::decimal(out, seconds, kSecondsDigits);
    *out++ = '.';
    out = options_.nanoseconds ? put::decimal(out, rest, 9) : put::decimal(out, rest / microsecond, 6);
    out = put::text(out, ") can");
    out = put::decimal(out, std::max(1u, unsigned(frame.channel)) - 1);
    *out++ = ' ';
    if (frame.error) {
        out = writeError(out, frame);
    } else {
        out = frame.extended ? put::hex(out, frame.id & kLargestExtendedId, 8)
                             : put::hex(out, frame.id & kLargestStandardId, 3);
        *out++ = '#';
        out = writePayload(out, frame);
    }
    if (frame.direction == Direction::Sent)
        out = put::text(out, " T");
    *out++ = '\n';
    return out;
}

// The log knows none but those of classic CAN.
char *CandumpWriter::writeError(char *out, const RawFrame &frame)
{
    RawFrame classic = frame;
    classic.fd = classic.remote = false;
    if (frame.fd)
        losses_.add(Loss::ErrorFd);
    out = put::hex(out, (frame.id & kLargestExtendedId) | kErrorFlag, 8);
    *out++ = '#';
    return writePayload(out, classic);
}

char *CandumpWriter::writePayload(char *out, const RawFrame &frame)
{
    if (frame.remote) {
        if (frame.fd)
            losses_.add(Loss::RemoteFd);
        *out++ = 'R';
        if (frame.length > 0)
            *out++ = put::kHexDigits[std::min<unsigned>(frame.length, kClassicBytes)];
    } else {
        if (frame.fd) {
            *out++ = '#';
            *out++ = put::kHexDigits[(frame.bitRateSwitch ? kCandumpBitRateSwitch : 0) |
                                     (frame.errorStateIndicator ? kCandumpErrorState : 0)];
        }
        // A length that FD does not have is filled up, as those do who read the log.
        const unsigned length = lengthOnFile(frame);
        const unsigned written = frame.fd ? lengthOfDlc(dlcOfLength(length), true) : length;
        if (written != length)
            losses_.add(Loss::FdLength);
        for (unsigned i = 0; i < written; ++i)
            out = put::hexByte(out, i < length ? frame.data[i] : 0);
    }
    if (frame.rawDlc > kClassicBytes && frame.rawDlc < 16 && !frame.fd && frame.length == kClassicBytes) {
        *out++ = '_';
        *out++ = put::kHexDigits[frame.rawDlc];
    }
    return out;
}

} // namespace

bool looksLikeCandump(std::string_view head)
{
    // the first line that is no comment has a time
    while (!head.empty()) {
        const std::size_t end = std::min(head.find('\n'), head.size());
        const std::string_view line = head.substr(0, end);
        const std::size_t first = line.find_first_not_of(" \t\r");
        if (first != std::string_view::npos && line[first] != '#' && line[first] != ';') {
            const std::string_view rest = line.substr(first);
            const std::size_t digits = rest.find_first_not_of("0123456789", 1);
            return rest[0] == '(' && digits > 1 && digits != rest.npos && rest[digits] == '.';
        }
        head.remove_prefix(std::min(end + 1, head.size()));
    }
    return false;
}

std::unique_ptr<TraceReader> readCandump(ByteSource source)
{
    return std::make_unique<CandumpReader>(std::move(source));
}

std::unique_ptr<TraceWriter> writeCandump(QIODevice *device, const TraceWriterOptions &options)
{
    return std::make_unique<CandumpWriter>(device, options);
}
