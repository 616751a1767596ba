#include "device/driver/identifiers.h"
#include "device/driver/timeunits.h"
#include "traces/columntitles.h"
#include "traces/csvtrace.h"
#include "traces/frametexts.h"
#include "traces/textscan.h"
#include "traces/texttrace.h"

#include <QTextCodec>

#include <array>
#include <cstdlib>

namespace
{

using Field = std::string_view;

using Fields = std::array<Field, FrameColumnCount>;

constexpr std::int64_t kStampTolerance = 1000 * kNanosecondsPerMillisecond;
constexpr std::int64_t kUnknown = -1;
constexpr std::uint64_t kLargestStamp = std::uint64_t(1) << 52; // microseconds

bool splitFields(Field line, Fields *fields)
{
    for (Field &field : *fields) {
        if (&field != &fields->front() && line.data() == nullptr)
            return false;
        const std::size_t comma = line.find(',');
        field = line.substr(0, comma);
        line = comma == Field::npos ? Field() : line.substr(comma + 1);
    }
    return true; // further fields are not looked at
}

// A word of the frame texts in the three languages and both encodings, as it may stand in a file.
class Word
{
public:
    explicit Word(QString FrameWords::*word)
    {
        const QTextCodec *const codec = QTextCodec::codecForName("GB18030");
        for (unsigned code = 0; code < LanguageCount; ++code) {
            const QString &text = frameWords(code).*word;
            texts_[2 * code] = text.toStdString();
            texts_[2 * code + 1] = codec ? codec->fromUnicode(text).toStdString() : texts_[2 * code];
        }
    }
    bool matches(Field field) const { return field == texts_[last_] || find(field); }

private:
    bool find(Field field) const
    {
        for (std::size_t i = 0; i < texts_.size(); ++i) {
            if (field == texts_[i]) {
                last_ = i;
                return true;
            }
        }
        return false;
    }

    std::array<std::string, 2 * LanguageCount> texts_;
    mutable std::size_t last_ = 0; // most files are of one language
};

// "hh:mm:ss.zzz", bare or as ="..." ; milliseconds since midnight, kUnknown when it is no time.
std::int64_t readTimeOfDay(Field field)
{
    constexpr Field wrapping = "=\"";
    constexpr Field pattern = "00:00:00.000";
    if (scan::startsWith(field, wrapping))
        field.remove_prefix(wrapping.size());
    if (field.size() < pattern.size())
        return kUnknown;
    for (std::size_t i = 0; i < pattern.size(); ++i)
        if (pattern[i] == '0' ? !scan::isDigit(field[i]) : field[i] != pattern[i])
            return kUnknown;
    const auto pair = [field](std::size_t at) { return (field[at] - '0') * 10 + (field[at + 1] - '0'); };
    const int hours = pair(0);
    const int minutes = pair(3);
    const int seconds = pair(6);
    if (hours >= 24 || minutes >= 60 || seconds >= 60)
        return kUnknown;
    return ((hours * 60 + minutes) * 60 + seconds) * 1000 + pair(9) * 10 + (field[11] - '0');
}

// Hexadecimal microseconds after "0x", or decimal seconds; kUnknown when it is neither.
std::int64_t readStamp(Field field)
{
    constexpr int decimals = 6;
    std::uint64_t value = 0;
    if (scan::startsWith(field, "0x"))
        return scan::number(field.substr(2), 16, kLargestStamp, &value) ? static_cast<std::int64_t>(value) : kUnknown;
    const std::size_t point = field.find('.');
    if (point == Field::npos || !scan::number(field.substr(0, point), 10, kLargestStamp / 1000000, &value))
        return kUnknown;
    Field fraction = field.substr(point + 1);
    for (int i = 0; i < decimals; ++i) {
        const bool given = !fraction.empty();
        if (given && !scan::isDigit(fraction.front()))
            return kUnknown;
        value = value * 10 + (given ? static_cast<unsigned>(fraction.front() - '0') : 0);
        fraction.remove_prefix(given ? 1 : 0);
    }
    return static_cast<std::int64_t>(value);
}

// As many bytes as the length asks for and the text has; an empty part between two blanks is a 0.
bool readData(Field text, unsigned length, std::uint8_t *data)
{
    constexpr std::size_t prefix = 3; // "x| "
    text.remove_prefix(std::min(text.size(), prefix));
    for (unsigned i = 0; i < length && !text.empty(); ++i) {
        if (text.size() >= 3 && text[2] == ' ') {
            const int high = hexDigitValue(text[0]);
            const int low = hexDigitValue(text[1]);
            if (high >= 0 && low >= 0) {
                data[i] = static_cast<std::uint8_t>(high << 4 | low);
                text.remove_prefix(3);
                continue;
            }
        }
        const Field part = scan::field(&text, ' ');
        std::uint64_t byte = 0;
        if (!part.empty() && !scan::number(part, 16, 0xFF, &byte))
            return false;
        data[i] = static_cast<std::uint8_t>(byte);
    }
    return true;
}

class CsvReader final : public TextTraceReader
{
public:
    using TextTraceReader::TextTraceReader;
    TraceFormat format() const override { return TraceFormat::Csv; }

protected:
    std::shared_ptr<const TraceState> state() override
    {
        return keepValues(day_, clockMs_, stampOrigin_, stamped_, lastTime_);
    }
    void restore(const TraceState &state) override
    {
        restoreValues(state, day_, clockMs_, stampOrigin_, stamped_, lastTime_);
    }
    LineKind readLine(std::string_view line, RawFrame *frame) override;

private:
    std::int64_t timeOf(const Fields &fields);

    std::int64_t day_ = 0;
    std::int64_t clockMs_ = kUnknown; // of the row before, within its day
    std::int64_t stampOrigin_ = 0;    // the time of stamp 0
    bool stamped_ = false;
    std::int64_t lastTime_ = 0;
};

bool readFrame(const Fields &fields, RawFrame *frame)
{
    static const Word standardFrame(&FrameWords::standardFrame);
    static const Word dataFrame(&FrameWords::dataFrame);
    std::uint64_t id = 0;
    std::uint64_t channel = 0;
    std::uint64_t length = 0;
    frame->extended = !standardFrame.matches(fields[FormatColumn]);
    frame->remote = !dataFrame.matches(fields[TypeColumn]);
    const Field protocol = fields[ProtocolColumn];
    frame->fd = protocol.find("CANFD") != Field::npos;
    frame->bitRateSwitch = frame->fd && protocol.find('-') != Field::npos;
    if (!scan::number(fields[IdColumn].substr(2), 16, largestId(frame->extended), &id) ||
        !scan::number(fields[ChannelColumn], 10, UINT16_MAX, &channel) || channel == 0 ||
        !scan::number(fields[DlcColumn], 10, UINT32_MAX, &length))
        return false;
    frame->id = static_cast<std::uint32_t>(id);
    frame->channel = static_cast<std::uint16_t>(channel);
    frame->direction = fields[DirectionColumn] == "Tx" ? Direction::Sent : Direction::Received;
    frame->length = static_cast<std::uint8_t>(
        std::min<unsigned>(static_cast<std::uint8_t>(length), frame->fd ? kRawDataBytes : kClassicBytes));
    return frame->remote || readData(fields[DataColumn], frame->length, frame->data);
}

TextTraceReader::LineKind CsvReader::readLine(std::string_view line, RawFrame *frame)
{
    Fields fields;
    if (!splitFields(line, &fields))
        return LineKind::Unknown;
    if (!scan::startsWith(fields[IdColumn], "0x"))
        return fields[IdColumn] == "ID" ? LineKind::Other : LineKind::Unknown; // the titles
    if (!readFrame(fields, frame))
        return LineKind::Unknown;
    frame->time = timeOf(fields);
    return LineKind::Frame;
}

std::int64_t CsvReader::timeOf(const Fields &fields)
{
    const std::int64_t clock = readTimeOfDay(fields[SystemTimeColumn]);
    if (clock == kUnknown)
        return lastTime_;
    if (clockMs_ != kUnknown && clock < clockMs_ - kMillisecondsPerDay / 2)
        ++day_;
    else if (clockMs_ != kUnknown && day_ > 0 && clock > clockMs_ + kMillisecondsPerDay / 2)
        --day_;
    clockMs_ = clock;
    lastTime_ = (day_ * kMillisecondsPerDay + clock) * kNanosecondsPerMillisecond;
    const std::int64_t stamp = readStamp(fields[TimeStampColumn]);
    if (stamp == kUnknown)
        return lastTime_;
    const std::int64_t stampTime = stampOrigin_ + stamp * kNanosecondsPerMicrosecond;
    if (stamped_ && std::abs(stampTime - lastTime_) <= kStampTolerance)
        return lastTime_ = stampTime;
    stampOrigin_ = lastTime_ - stamp * kNanosecondsPerMicrosecond;
    stamped_ = true;
    return lastTime_;
}

} // namespace

bool looksLikeCsv(std::string_view head)
{
    Fields fields;
    while (!head.empty()) {
        const Field line = scan::field(&head, '\n');
        if (splitFields(line, &fields) && (fields[IdColumn] == "ID" || scan::startsWith(fields[IdColumn], "0x")))
            return true;
    }
    return false;
}

std::unique_ptr<TraceReader> readCsv(ByteSource source)
{
    return std::make_unique<CsvReader>(std::move(source));
}
