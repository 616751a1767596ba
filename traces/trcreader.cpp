#include "traces/trcreader.h"

#include "device/driver/identifiers.h"
#include "traces/trclayout.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

using namespace trc;

namespace
{

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

// The next word of a line, which it is taken from; empty at the line's end.
std::string_view takeWord(std::string_view *line)
{
    const char *begin = line->data();
    const char *const end = begin + line->size();
    while (begin != end && isBlank(*begin))
        ++begin;
    const char *stop = begin;
    while (stop != end && !isBlank(*stop))
        ++stop;
    *line = std::string_view(stop, static_cast<std::size_t>(end - stop));
    return {begin, static_cast<std::size_t>(stop - begin)};
}

// The values of hexadecimal digits; kNoDigit for everything else.
constexpr std::uint8_t kNoDigit = 0xFF;
constexpr std::array<std::uint8_t, 256> hexDigits()
{
    std::array<std::uint8_t, 256> values{};
    for (unsigned c = 0; c < values.size(); ++c) {
        values[c] = static_cast<std::uint8_t>(c >= '0' && c <= '9'   ? c - '0'
                                              : c >= 'a' && c <= 'f' ? c - 'a' + 10
                                              : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                                                     : kNoDigit);
    }
    return values;
}
constexpr std::array<std::uint8_t, 256> kHexDigits = hexDigits();

unsigned hexDigit(char c)
{
    return kHexDigits[static_cast<std::uint8_t>(c)];
}

// Up to nine decimal digits.
bool takeNumber(std::string_view word, unsigned *number)
{
    constexpr std::size_t kMostDigits = 9;
    *number = 0;
    for (const char c : word) {
        if (c < '0' || c > '9')
            return false;
        *number = *number * 10 + static_cast<unsigned>(c - '0');
    }
    return !word.empty() && word.size() <= kMostDigits;
}

// "1059.9": milliseconds with up to six decimals that count.
bool takeTime(std::string_view word, std::int64_t *time)
{
    constexpr std::int64_t kLatest = std::int64_t{9'000'000'000'000}; // ms, some 285 years
    const bool negative = !word.empty() && word.front() == '-';
    std::size_t at = negative ? 1 : 0;
    std::int64_t whole = 0;
    const std::size_t first = at;
    for (; at < word.size() && word[at] >= '0' && word[at] <= '9'; ++at) {
        whole = whole * 10 + (word[at] - '0');
        if (whole > kLatest)
            return false;
    }
    if (at == first)
        return false;
    std::int64_t nanoseconds = whole * kNanosecondsPerMillisecond;
    if (at < word.size() && word[at] == '.') {
        std::int64_t unit = kNanosecondsPerMillisecond / 10;
        for (++at; at < word.size() && word[at] >= '0' && word[at] <= '9'; ++at, unit /= 10)
            nanoseconds += (word[at] - '0') * unit;
    }
    *time = negative ? -nanoseconds : nanoseconds;
    return at == word.size();
}

// Four digits are a standard identifier, eight an extended one.
bool takeId(std::string_view word, RawFrame *frame)
{
    if (word.empty() || word.size() > kExtendedDigits)
        return false;
    for (const char c : word) {
        if (hexDigit(c) == kNoDigit)
            return false;
        frame->id = frame->id << 4 | hexDigit(c);
    }
    frame->extended = word.size() > kStandardDigits;
    return frame->id <= largestId(frame->extended);
}

bool takeData(std::string_view rest, RawFrame *frame)
{
    const char *at = rest.data();
    const char *const end = at + rest.size();
    for (unsigned index = 0; index < frame->length; ++index) {
        const char *const before = at;
        while (at != end && isBlank(*at))
            ++at;
        if (at == before || end - at < 2)
            return false;
        const unsigned high = hexDigit(at[0]);
        const unsigned low = hexDigit(at[1]);
        if ((high | low) > 0xF)
            return false;
        frame->data[index] = static_cast<std::uint8_t>(high << 4 | low);
        at += 2;
    }
    return at == end || isBlank(*at);
}

// A length, or the code of one, in decimal.
bool takeLength(std::string_view word, bool isCode, RawFrame *frame)
{
    unsigned number = 0;
    if (!takeNumber(word, &number))
        return false;
    if (!isCode) {
        frame->length = static_cast<std::uint8_t>(std::min<unsigned>(number, kRawDataBytes));
        return number <= (frame->fd ? kRawDataBytes : kClassicBytes);
    }
    frame->length = lengthOfDlc(number, frame->fd);
    if (!frame->fd && number > kClassicBytes)
        frame->rawDlc = static_cast<std::uint8_t>(number);
    return number <= kLargestCode;
}

enum class RowType : std::uint8_t { Frame, Error, Other, Unknown };

// What the rows of 2.x and 1.x call themselves.
RowType takeType(std::string_view word, RawFrame *frame)
{
    const auto is = [word](std::string_view name) { return word == name; };
    if (is("DT") || is("Rx") || is("Tx")) {
        frame->direction = is("Tx") ? Direction::Sent : Direction::Received;
        return RowType::Frame;
    }
    frame->remote = is("RR");
    frame->bitRateSwitch = is("FB") || is("BI");
    frame->errorStateIndicator = is("FE") || is("BI");
    frame->fd = frame->bitRateSwitch || frame->errorStateIndicator || is("FD");
    if (frame->remote || frame->fd)
        return RowType::Frame;
    frame->error = is("ER") || is("Error");
    if (frame->error)
        return RowType::Error;
    const bool other = is("ST") || is("EC") || is("EV") || is("Warng");
    return other ? RowType::Other : RowType::Unknown;
}

// "44548.6028595139", days since 1899-12-30, as nanoseconds since 1970; nothing for times before that.
std::optional<std::int64_t> utcFromDays(std::string_view text)
{
    const std::size_t point = std::min(text.find('.'), text.size());
    unsigned days = 0;
    if (!takeNumber(text.substr(0, point), &days) || days < kDaysTo1970 || days - kDaysTo1970 > kMostDays)
        return std::nullopt;
    double fraction = 0;
    double unit = 0.1;
    for (std::size_t at = point + 1; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at, unit /= 10)
        fraction += (text[at] - '0') * unit;
    return static_cast<std::int64_t>(days - kDaysTo1970) * kNanosecondsPerDay +
           std::llround(fraction * static_cast<double>(kNanosecondsPerDay));
}

} // namespace

TrcReader::TrcReader(ByteSource source) : TextTraceReader(std::move(source)), columns_(kColumns10) {}

TextTraceReader::LineKind TrcReader::readLine(std::string_view line, RawFrame *frame)
{
    std::string_view rest = line;
    const std::string_view first = takeWord(&rest);
    if (first.empty())
        return LineKind::Other;
    if (first.front() == ';')
        return readComment(line.substr(static_cast<std::size_t>(first.data() - line.data())));
    if (first.front() < '0' || first.front() > '9')
        return LineKind::Unknown;
    return parse(line, frame);
}

bool TrcReader::completeWithoutEnd(std::string_view line) const
{
    RawFrame frame;
    const LineKind kind = parse(line, &frame);
    // Nothing of an error's row tells where it ends.
    const bool wholeData = kind == LineKind::Frame && !frame.error && (frame.remote || frame.length > 0);
    return TextTraceReader::completeWithoutEnd(line) || line.front() == ';' || wholeData;
}

TextTraceReader::LineKind TrcReader::readComment(std::string_view line)
{
    const auto valueOf = [line](std::string_view key) -> std::optional<std::string_view> {
        if (line.substr(0, key.size()) != key)
            return std::nullopt;
        std::string_view value = line.substr(key.size());
        return takeWord(&value);
    };
    if (const auto version = valueOf(kVersionKey)) {
        setVersion(*version);
    } else if (const auto start = valueOf(kStartKey)) {
        startUtc_ = utcFromDays(*start);
    } else if (const auto columns = valueOf(kColumnsKey)) {
        columns_.clear();
        std::copy_if(columns->begin(), columns->end(), std::back_inserter(columns_), [](char c) { return c != ','; });
    }
    return LineKind::Other;
}

void TrcReader::setVersion(std::string_view version)
{
    static constexpr std::pair<std::string_view, std::string_view> known[] = {
        {"1.1", kColumns11}, {"1.2", kColumns12}, {"1.3", kColumns13}, {"2.0", kColumns20}, {"2.1", kColumns21}};
    const auto *const found = std::find_if(std::begin(known), std::end(known),
                                           [version](const auto &entry) { return entry.first == version; });
    columns_ = found == std::end(known) ? kColumns10 : found->second;
}

TextTraceReader::LineKind TrcReader::parse(std::string_view line, RawFrame *frame) const
{
    std::string_view rest = line;
    bool lengthIsCode = false;
    std::string_view id;
    std::string_view length;
    for (const char column : columns_) {
        if (column == kData)
            break;
        const std::string_view word = takeWord(&rest);
        switch (column) {
        case kOffset:
            if (!takeTime(word, &frame->time))
                return LineKind::Damaged;
            break;
        case kType: {
            const RowType type = takeType(word, frame);
            if (type == RowType::Other || type == RowType::Unknown)
                return type == RowType::Other ? LineKind::Other : LineKind::Damaged;
            break;
        }
        case kBus: {
            unsigned bus = 0;
            if (!takeNumber(word, &bus) || bus < 1 || bus > kLargestBus)
                return LineKind::Damaged;
            frame->channel = static_cast<std::uint16_t>(bus);
            break;
        }
        case kId:
            id = word;
            break;
        case kDirection:
            frame->direction = word == "Tx" ? Direction::Sent : Direction::Received;
            break;
        case kLength:
        case kCode:
            length = word;
            lengthIsCode = column == kCode;
            break;
        default:
            break;
        }
    }
    if (frame->error)
        return LineKind::Frame;
    if (id == kStatusId)
        return LineKind::Other;
    if (!takeId(id, frame) || !takeLength(length, lengthIsCode, frame))
        return LineKind::Damaged;
    std::string_view data = rest;
    frame->remote = frame->remote || takeWord(&data) == "RTR";
    return frame->remote || takeData(rest, frame) ? LineKind::Frame : LineKind::Damaged;
}
