#include "device/driver/identifiers.h"
#include "device/driver/timeunits.h"
#include "traces/asclayout.h"
#include "traces/asctrace.h"
#include "traces/textscan.h"
#include "traces/texttrace.h"

#include <cctype>

namespace
{
using Text = std::string_view;

constexpr std::uint64_t kMaxSeconds = std::uint64_t(1) << 32;
constexpr std::uint64_t kLargestDlc = 15;

bool startsWithAnyCase(Text text, Text lower)
{
    if (text.size() < lower.size())
        return false;
    for (std::size_t i = 0; i < lower.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(text[i])) != lower[i])
            return false;
    return true;
}

Text withoutBlanks(Text text)
{
    while (!text.empty() && scan::isBlank(text.front()))
        text.remove_prefix(1);
    return text;
}

// Seconds with a fraction of up to nine digits, taken from the front.
bool takeTime(Text *text, std::uint64_t *time)
{
    const char *at = text->data();
    const char *const end = at + text->size();
    std::uint64_t seconds = 0;
    for (; at != end && scan::isDigit(*at); ++at) {
        seconds = seconds * 10 + static_cast<unsigned>(*at - '0');
        if (seconds > kMaxSeconds)
            return false;
    }
    if (at == end || *at++ != '.')
        return false;
    std::uint64_t fraction = 0;
    std::uint64_t unit = kNanosecondsPerSecond;
    for (; at != end && scan::isDigit(*at); ++at, unit /= 10) {
        if (unit == 1)
            return false;
        fraction = fraction * 10 + static_cast<unsigned>(*at - '0');
    }
    *time = seconds * kNanosecondsPerSecond + fraction * unit;
    *text = Text(at, static_cast<std::size_t>(end - at));
    return unit != kNanosecondsPerSecond && at != end && scan::isBlank(*at);
}

class AscReader final : public TextTraceReader
{
public:
    using TextTraceReader::TextTraceReader;
    TraceFormat format() const override { return TraceFormat::Asc; }

protected:
    std::shared_ptr<const TraceState> state() override { return keepValues(base_, relative_, dated_, time_); }
    void restore(const TraceState &state) override { restoreValues(state, base_, relative_, dated_, time_); }
    LineKind readLine(std::string_view line, RawFrame *frame) override;
    bool completeWithoutEnd(std::string_view line) const override;

private:
    LineKind readHead(Text line);
    LineKind readClassic(Text channel, Text rest, RawFrame *frame) const;
    LineKind readFd(Text rest, RawFrame *frame) const;
    LineKind readId(Text word, RawFrame *frame) const;
    bool takeData(Text *text, unsigned length, std::uint8_t *data) const;

    unsigned base_ = 16;
    bool relative_ = false;
    bool dated_ = false;
    std::int64_t time_ = 0; // of the last event
};

TextTraceReader::LineKind AscReader::readLine(std::string_view line, RawFrame *frame)
{
    Text rest = withoutBlanks(line);
    if (rest.empty() || !scan::isDigit(rest.front()))
        return readHead(rest);
    std::uint64_t time = 0;
    if (!takeTime(&rest, &time))
        return LineKind::Damaged;
    const auto counted = static_cast<std::int64_t>(time);
    if (!relative_)
        time_ = counted;
    else if (__builtin_add_overflow(time_, counted, &time_))
        return LineKind::Damaged;
    frame->time = time_;
    const Text word = scan::word(&rest);
    if (word.empty())
        return LineKind::Damaged;
    if (scan::isDigit(word.front()))
        return readClassic(word, rest, frame);
    return word == "CANFD" ? readFd(rest, frame) : LineKind::Other;
}

TextTraceReader::LineKind AscReader::readHead(Text line)
{
    constexpr Text trigger = "begin triggerblock";
    if (startsWithAnyCase(line, "date ")) {
        startUtc_ = parseAscDate(line.substr(5));
        dated_ = startUtc_.has_value();
    } else if (startsWithAnyCase(line, trigger)) {
        if (!dated_)
            startUtc_ = parseAscDate(line.substr(trigger.size()));
        dated_ = startUtc_.has_value();
    } else if (startsWithAnyCase(line, "base ")) {
        Text rest = line.substr(5);
        base_ = startsWithAnyCase(scan::word(&rest), "dec") ? 10 : 16;
        if (startsWithAnyCase(scan::word(&rest), "timestamps"))
            relative_ = startsWithAnyCase(scan::word(&rest), "relative");
    } else if (!line.empty() && !scan::startsWith(line, "//") && !startsWithAnyCase(line, "end triggerblock") &&
               !startsWithAnyCase(line, "internal events") && !startsWithAnyCase(line, "no internal events")) {
        return LineKind::Unknown;
    }
    return LineKind::Other;
}

bool takeChannel(Text word, RawFrame *frame)
{
    std::uint64_t channel = 0;
    if (!scan::number(word, 10, UINT16_MAX, &channel) || channel == 0)
        return false;
    frame->channel = static_cast<std::uint16_t>(channel);
    return true;
}

TextTraceReader::LineKind AscReader::readId(Text word, RawFrame *frame) const
{
    frame->extended = !word.empty() && (word.back() == 'x' || word.back() == 'X');
    if (frame->extended)
        word.remove_suffix(1);
    std::uint64_t id = 0;
    if (!scan::number(word, base_, UINT32_MAX, &id))
        return LineKind::Unknown; // a name
    frame->id = static_cast<std::uint32_t>(id);
    return id <= largestId(frame->extended) ? LineKind::Frame : LineKind::Damaged;
}

bool AscReader::takeData(Text *text, unsigned length, std::uint8_t *data) const
{
    for (unsigned i = 0; i < length; ++i) {
        // " AB" before a blank or the end is what nearly every byte looks like
        if (base_ == 16 && text->size() >= 3 && text->front() == ' ') {
            const int high = hexDigitValue((*text)[1]);
            const int low = hexDigitValue((*text)[2]);
            if (high >= 0 && low >= 0 && (text->size() == 3 || scan::isBlank((*text)[3]))) {
                data[i] = static_cast<std::uint8_t>(high << 4 | low);
                text->remove_prefix(3);
                continue;
            }
        }
        std::uint64_t byte = 0;
        if (!scan::number(scan::word(text), base_, 0xFF, &byte))
            return false;
        data[i] = static_cast<std::uint8_t>(byte);
    }
    return true;
}

// "channel ID[x] Rx d DLC bytes"
TextTraceReader::LineKind AscReader::readClassic(Text channel, Text rest, RawFrame *frame) const
{
    const Text id = scan::word(&rest);
    if (startsWithAnyCase(id, "errorframe")) {
        frame->error = true;
        return takeChannel(channel, frame) ? LineKind::Frame : LineKind::Damaged;
    }
    const Text direction = scan::word(&rest);
    const bool sent = direction == "Tx";
    if (!sent && direction != "Rx")
        return LineKind::Other; // a statistic, a status, a request to transmit
    if (!takeChannel(channel, frame))
        return LineKind::Damaged;
    const LineKind identified = readId(id, frame);
    if (identified != LineKind::Frame)
        return identified;
    frame->direction = sent ? Direction::Sent : Direction::Received;
    const Text kind = scan::word(&rest);
    frame->remote = kind == "r";
    if (!frame->remote && kind != "d")
        return LineKind::Damaged;
    std::uint64_t dlc = 0;
    Text behind = rest;
    if (scan::number(scan::word(&behind), base_, UINT32_MAX, &dlc))
        rest = behind;
    else if (!frame->remote)
        return LineKind::Damaged;
    frame->length = static_cast<std::uint8_t>(std::min<std::uint64_t>(dlc, kClassicBytes));
    if (dlc > kClassicBytes && dlc <= kLargestDlc)
        frame->rawDlc = static_cast<std::uint8_t>(dlc);
    if (!frame->remote && !takeData(&rest, frame->length, frame->data))
        return LineKind::Damaged;
    return LineKind::Frame;
}

// "channel Rx ID[x] [name] BRS ESI DLC length bytes duration bits flags ..."
TextTraceReader::LineKind AscReader::readFd(Text rest, RawFrame *frame) const
{
    if (!takeChannel(scan::word(&rest), frame))
        return LineKind::Damaged;
    const Text direction = scan::word(&rest);
    const bool sent = direction == "Tx";
    if (!sent && direction != "Rx")
        return direction == "TxRq" ? LineKind::Other : LineKind::Damaged;
    frame->direction = sent ? Direction::Sent : Direction::Received;
    const Text id = scan::word(&rest);
    if (startsWithAnyCase(id, "errorframe")) {
        frame->error = true;
        frame->fd = true;
        return LineKind::Frame;
    }
    const LineKind identified = readId(id, frame);
    if (identified != LineKind::Frame)
        return identified;
    const auto isBit = [](Text word) { return word == "0" || word == "1"; };
    Text bitRateSwitch = scan::word(&rest);
    if (!isBit(bitRateSwitch))
        bitRateSwitch = scan::word(&rest); // behind the name
    const Text errorState = scan::word(&rest);
    std::uint64_t dlc = 0;
    std::uint64_t length = 0;
    if (!isBit(bitRateSwitch) || !isBit(errorState) || !scan::number(scan::word(&rest), base_, kLargestDlc, &dlc) ||
        !scan::number(scan::word(&rest), 10, kRawDataBytes, &length) ||
        !takeData(&rest, static_cast<unsigned>(length), frame->data))
        return LineKind::Damaged;
    frame->bitRateSwitch = bitRateSwitch == "1";
    frame->errorStateIndicator = errorState == "1";
    scan::word(&rest); // duration
    scan::word(&rest); // bits
    std::uint64_t flags = asc::kFd;
    scan::number(scan::word(&rest), 16, UINT32_MAX, &flags);
    frame->fd = (flags & asc::kFd) != 0 || frame->bitRateSwitch || frame->errorStateIndicator || length > kClassicBytes;
    frame->remote = (flags & asc::kRemote) != 0;
    frame->length =
        frame->remote ? lengthOfDlc(static_cast<unsigned>(dlc), frame->fd) : static_cast<std::uint8_t>(length);
    if (!frame->fd && dlc > kClassicBytes && frame->length == kClassicBytes)
        frame->rawDlc = static_cast<std::uint8_t>(dlc);
    return LineKind::Frame;
}

bool AscReader::completeWithoutEnd(std::string_view line) const
{
    return startsWithAnyCase(line, "end triggerblock") || TextTraceReader::completeWithoutEnd(line);
}

} // namespace

bool looksLikeAsc(std::string_view head)
{
    while (!head.empty()) {
        const Text line = withoutBlanks(scan::field(&head, '\n'));
        if (startsWithAnyCase(line, "date ") || startsWithAnyCase(line, "base hex") ||
            startsWithAnyCase(line, "base dec") || startsWithAnyCase(line, "begin triggerblock"))
            return true;
        if (!line.empty() && line != "\r" && !scan::startsWith(line, "//"))
            return false;
    }
    return false;
}

std::unique_ptr<TraceReader> readAsc(ByteSource source)
{
    return std::make_unique<AscReader>(std::move(source));
}
