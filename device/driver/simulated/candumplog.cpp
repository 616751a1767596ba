#include "device/driver/simulated/candumplog.h"

#include "device/driver/numbertext.h"

#include <algorithm>
#include <fstream>

namespace
{

// The longest line of a frame is below 200 characters; more is not collected.
constexpr std::size_t kMaxLineLength = 512;
constexpr std::uint64_t kMaxSeconds = 1ull << 32;
constexpr unsigned kNanosecondDigits = 9;
constexpr std::size_t kStandardIdDigits = 3;
constexpr std::size_t kExtendedIdDigits = 8;
constexpr std::uint8_t kLogBitRateSwitch = 1; // of the flags digit after "##"

// Walks over one line; every step answers false when the text is not what it asks for.
class LineReader
{
public:
    explicit LineReader(const std::string &line) : line_(line) {}

    bool atEnd() const { return at_ >= line_.size(); }
    char peek() const { return atEnd() ? '\0' : line_[at_]; }

    bool skip(char c)
    {
        if (peek() != c)
            return false;
        ++at_;
        return true;
    }
    bool skipBlanks()
    {
        const std::size_t start = at_;
        while (peek() == ' ' || peek() == '\t')
            ++at_;
        return at_ > start;
    }
    bool skipWord()
    {
        const std::size_t start = at_;
        while (!atEnd() && peek() != ' ' && peek() != '\t')
            ++at_;
        return at_ > start;
    }
    bool hexDigit(int *value)
    {
        *value = hexDigitValue(peek());
        if (*value < 0)
            return false;
        ++at_;
        return true;
    }
    bool time(BusTime *time)
    {
        std::uint64_t seconds = 0;
        const std::size_t start = at_;
        for (; peek() >= '0' && peek() <= '9'; ++at_) {
            seconds = seconds * 10 + static_cast<unsigned>(peek() - '0');
            if (seconds > kMaxSeconds)
                return false;
        }
        if (at_ == start || !skip('.'))
            return false;
        std::uint64_t fraction = 0;
        unsigned digits = 0;
        for (; peek() >= '0' && peek() <= '9'; ++at_, ++digits) {
            if (digits == kNanosecondDigits)
                return false;
            fraction = fraction * 10 + static_cast<unsigned>(peek() - '0');
        }
        if (digits == 0)
            return false;
        for (; digits < kNanosecondDigits; ++digits)
            fraction *= 10;
        *time = seconds * 1000000000 + fraction;
        return true;
    }
    bool identifier(std::uint32_t *id, std::size_t *digits)
    {
        std::uint32_t value = 0;
        int digit = 0;
        for (*digits = 0; *digits < kExtendedIdDigits && hexDigit(&digit); ++*digits)
            value = value << 4 | static_cast<unsigned>(digit);
        *id = value;
        return *digits == kStandardIdDigits || *digits == kExtendedIdDigits;
    }
    // Pairs of digits as far as they go; false for a half pair or more than `most`.
    bool data(std::uint8_t *bytes, std::size_t most, std::uint8_t *length)
    {
        int high = 0;
        int low = 0;
        for (*length = 0; hexDigit(&high); ++*length) {
            if (*length == most || !hexDigit(&low))
                return false;
            bytes[*length] = static_cast<std::uint8_t>(high << 4 | low);
        }
        return true;
    }

private:
    const std::string &line_;
    std::size_t at_ = 0;
};

bool readFdPayload(LineReader *reader, BusFrame *frame)
{
    int flags = 0;
    if (!reader->hexDigit(&flags) || !reader->data(frame->data, kFdDataBytes, &frame->length))
        return false;
    frame->fd = true;
    frame->bitRateSwitch = (flags & kLogBitRateSwitch) != 0;
    frame->length = fdWireLength(frame->length);
    return true;
}

bool readClassicPayload(LineReader *reader, BusFrame *frame)
{
    int digit = 0;
    if (reader->skip('R')) {
        frame->id |= kIdRemoteFlag;
        if (reader->hexDigit(&digit))
            frame->length = static_cast<std::uint8_t>(std::min<int>(digit, kClassicDataBytes));
    } else if (!reader->data(frame->data, kClassicDataBytes, &frame->length)) {
        return false;
    }
    // "_9" to "_F": the raw length code of an eight-byte frame, which says nothing about its data
    return !reader->skip('_') || reader->hexDigit(&digit);
}

} // namespace

CandumpLine parseCandumpLine(const std::string &line, LoggedFrame *frame)
{
    LineReader reader(line);
    LoggedFrame read{0, BusFrame()};
    std::size_t digits = 0;
    reader.skipBlanks();
    const bool headRead = reader.skip('(') && reader.time(&read.time) && reader.skip(')') && reader.skipBlanks() &&
                          reader.skipWord() && reader.skipBlanks() && reader.identifier(&read.frame.id, &digits) &&
                          reader.skip('#');
    if (!headRead)
        return CandumpLine::Malformed;
    if (digits == kExtendedIdDigits) {
        // The flag above the 29 bits marks the controller's error reports.
        if (read.frame.id >= kExtendedIdLimit)
            return read.frame.id < 2 * kExtendedIdLimit ? CandumpLine::ErrorFrame : CandumpLine::Malformed;
        read.frame.id |= kIdExtendedFlag;
    } else if (read.frame.id >= kStandardIdLimit) {
        return CandumpLine::Malformed;
    }
    const bool payloadRead =
        reader.skip('#') ? readFdPayload(&reader, &read.frame) : readClassicPayload(&reader, &read.frame);
    // What follows after a blank (the direction that some recorders add) is not looked at.
    if (!payloadRead || (!reader.atEnd() && !reader.skipBlanks()))
        return CandumpLine::Malformed;
    *frame = read;
    return CandumpLine::Frame;
}

CandumpLog readCandumpLog(std::istream &stream)
{
    CandumpLog log;
    std::string line;
    LoggedFrame frame{0, BusFrame()};
    const auto endOfLine = [&] {
        while (!line.empty() && (line.back() == '\r' || line.back() == ' '))
            line.pop_back();
        if (line.empty())
            return;
        const CandumpLine kind = line.size() > kMaxLineLength ? CandumpLine::Malformed : parseCandumpLine(line, &frame);
        if (kind == CandumpLine::Frame)
            log.frames.push_back(frame);
        else
            ++(kind == CandumpLine::ErrorFrame ? log.errorFrames : log.malformed);
        line.clear();
    };
    char block[1 << 14];
    while (!log.cut && (stream.read(block, sizeof block) || stream.gcount() > 0)) {
        for (std::streamsize i = 0; i < stream.gcount() && !log.cut; ++i) {
            if (block[i] == '\n')
                endOfLine();
            else if (line.size() <= kMaxLineLength)
                line.push_back(block[i]);
            log.cut = log.frames.size() == kMaxLoggedFrames;
        }
    }
    if (!log.cut)
        endOfLine();
    return log;
}

bool loadCandumpLog(const std::string &path, CandumpLog *log)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return false;
    *log = readCandumpLog(file);
    return !log->frames.empty();
}
