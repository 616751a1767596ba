#include "device/driver/candumpline.h"

#include "device/driver/busframe.h"
#include "device/driver/identifiers.h"
#include "device/driver/numbertext.h"
#include "device/driver/timeunits.h"

#include <algorithm>
#include <cstring>

namespace
{
constexpr std::uint64_t kMaxSeconds = 1ull << 32;
constexpr int kFirstRawDlc = 9;

// Places in a line; every step moves on over what it asks for, or answers false.
class Cursor
{
public:
    explicit Cursor(std::string_view line) : at_(line.data()), end_(line.data() + line.size()) {}

    std::string_view rest() const { return {at_, static_cast<std::size_t>(end_ - at_)}; }
    bool atBlank() const { return at_ != end_ && (*at_ == ' ' || *at_ == '\t'); }

    bool skip(char c)
    {
        if (at_ == end_ || *at_ != c)
            return false;
        ++at_;
        return true;
    }
    bool skipBlanks()
    {
        const char *const start = at_;
        while (atBlank())
            ++at_;
        return at_ != start;
    }
    bool word(std::string_view *word)
    {
        const char *const start = at_;
        while (at_ != end_ && *at_ != ' ' && *at_ != '\t')
            ++at_;
        *word = {start, static_cast<std::size_t>(at_ - start)};
        return at_ != start;
    }
    bool time(std::uint64_t *time)
    {
        std::uint64_t seconds = 0;
        const char *const start = at_;
        for (; at_ != end_ && isDecimal(*at_); ++at_) {
            seconds = seconds * 10 + static_cast<unsigned>(*at_ - '0');
            if (seconds > kMaxSeconds)
                return false;
        }
        if (at_ == start || !skip('.'))
            return false;
        std::uint64_t fraction = 0;
        std::uint64_t unit = kNanosecondsPerSecond;
        for (; at_ != end_ && isDecimal(*at_); ++at_, unit /= 10) {
            if (unit == 1)
                return false;
            fraction = fraction * 10 + static_cast<unsigned>(*at_ - '0');
        }
        *time = seconds * kNanosecondsPerSecond + fraction * unit;
        return unit != kNanosecondsPerSecond;
    }
    bool identifier(std::uint32_t *id, std::ptrdiff_t *digits)
    {
        const char *const start = at_;
        const char *const most = at_ + std::min<std::ptrdiff_t>(kExtendedIdDigits, end_ - at_);
        std::uint32_t value = 0;
        for (int digit = 0; at_ != most && (digit = hexDigitValue(*at_)) >= 0; ++at_)
            value = value << 4 | static_cast<unsigned>(digit);
        *id = value;
        *digits = at_ - start;
        return *digits == kStandardIdDigits || *digits == kExtendedIdDigits;
    }
    bool hexDigit(int *value)
    {
        *value = at_ == end_ ? -1 : hexDigitValue(*at_);
        if (*value < 0)
            return false;
        ++at_;
        return true;
    }
    // Pairs of digits as far as they go; false for a half pair or more than `most`.
    bool data(std::uint8_t *bytes, std::size_t most, std::uint8_t *length)
    {
        std::size_t count = 0;
        for (; end_ - at_ >= 2; at_ += 2, ++count) {
            const int high = hexDigitValue(at_[0]);
            if (high < 0)
                break;
            const int low = hexDigitValue(at_[1]);
            if (low < 0 || count == most)
                return false;
            bytes[count] = static_cast<std::uint8_t>(high << 4 | low);
        }
        *length = static_cast<std::uint8_t>(count);
        return at_ == end_ || hexDigitValue(*at_) < 0;
    }

private:
    static bool isDecimal(char c) { return c >= '0' && c <= '9'; }

    const char *at_;
    const char *end_;
};

bool fdPayload(Cursor *cursor, CandumpLine *frame, std::uint8_t *data)
{
    int flags = 0;
    std::uint8_t given = 0;
    if (!cursor->hexDigit(&flags) || !cursor->data(data, kFdDataBytes, &given))
        return false;
    frame->fd = true;
    frame->fdFlags = static_cast<std::uint8_t>(flags);
    frame->length = fdWireLength(given);
    std::memset(data + given, 0, frame->length - given);
    return true;
}

bool classicPayload(Cursor *cursor, CandumpLine *frame, std::uint8_t *data)
{
    int digit = 0;
    if (!frame->error && cursor->skip('R')) {
        frame->remote = true;
        if (cursor->hexDigit(&digit))
            frame->length = static_cast<std::uint8_t>(std::min<int>(digit, kClassicDataBytes));
        std::memset(data, 0, frame->length);
    } else if (!cursor->data(data, kClassicDataBytes, &frame->length)) {
        return false;
    }
    if (!cursor->skip('_'))
        return true;
    if (!cursor->hexDigit(&digit))
        return false;
    if (frame->length == kClassicDataBytes && digit >= kFirstRawDlc)
        frame->rawDlc = static_cast<std::uint8_t>(digit);
    return true;
}

bool identified(std::uint32_t id, std::ptrdiff_t digits, CandumpLine *frame)
{
    frame->id = id;
    if (digits == kStandardIdDigits)
        return id < kStandardIdLimit;
    // The flag above the 29 bits marks the controller's error reports.
    frame->error = id >= kExtendedIdLimit;
    frame->extended = !frame->error;
    if (frame->error)
        frame->id -= kExtendedIdLimit;
    return id < 2 * kExtendedIdLimit;
}

} // namespace

bool parseCandumpLine(std::string_view line, CandumpLine *parsed, std::uint8_t *data)
{
    Cursor cursor(line);
    CandumpLine frame;
    std::uint32_t id = 0;
    std::ptrdiff_t digits = 0;
    cursor.skipBlanks();
    const bool headRead = cursor.skip('(') && cursor.time(&frame.time) && cursor.skip(')') && cursor.skipBlanks() &&
                          cursor.word(&frame.interfaceName) && cursor.skipBlanks() && cursor.identifier(&id, &digits) &&
                          cursor.skip('#') && identified(id, digits, &frame);
    if (!headRead)
        return false;
    const bool payloadRead =
        cursor.skip('#') ? !frame.error && fdPayload(&cursor, &frame, data) : classicPayload(&cursor, &frame, data);
    if (!payloadRead || !(cursor.rest().empty() || cursor.atBlank()))
        return false;
    frame.rest = cursor.rest();
    *parsed = frame;
    return true;
}
