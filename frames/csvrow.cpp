#include "frames/csvrow.h"

#include "traces/frametexts.h"

#include <QByteArray>

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

namespace
{

using Field = std::string_view; // UTF-8

constexpr std::size_t kDataPrefix = 3; // "x| "

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// At most maxDigits digits of the base and nothing else.
bool readNumber(Field text, unsigned base, std::size_t maxDigits, std::uint32_t &number)
{
    if (text.empty() || text.size() > maxDigits)
        return false;
    number = 0;
    for (const char c : text) {
        const int digit = hexDigit(c);
        if (digit < 0 || static_cast<unsigned>(digit) >= base)
            return false;
        number = number * base + static_cast<unsigned>(digit);
    }
    return true;
}

bool splitFields(Field line, std::array<Field, FrameColumnCount> &fields)
{
    const char *begin = line.data();
    const char *const end = begin + line.size();
    for (int column = 0; column < FrameColumnCount; ++column) {
        const auto *comma = static_cast<const char *>(std::memchr(begin, ',', static_cast<std::size_t>(end - begin)));
        const char *const fieldEnd = comma ? comma : end;
        fields[static_cast<std::size_t>(column)] = Field(begin, static_cast<std::size_t>(fieldEnd - begin));
        if (!comma)
            return column == FrameColumnCount - 1;
        begin = fieldEnd + 1;
    }
    return true; // further fields are not looked at
}

// "hh:mm:ss.zzz", bare or as ="..." , in milliseconds; false when it is no time.
bool readTime(Field field, std::uint32_t &milliseconds)
{
    constexpr Field wrapping = "=\"";
    constexpr char pattern[] = "00:00:00.000";
    constexpr std::size_t length = sizeof pattern - 1;
    if (field.substr(0, wrapping.size()) == wrapping)
        field.remove_prefix(wrapping.size());
    if (field.size() < length)
        return false;
    for (std::size_t i = 0; i < length; ++i)
        if (pattern[i] == '0' ? !isDigit(field[i]) : field[i] != pattern[i])
            return false;
    const auto pair = [field](std::size_t at) {
        return static_cast<std::uint32_t>((field[at] - '0') * 10 + (field[at + 1] - '0'));
    };
    const std::uint32_t hours = pair(0);
    const std::uint32_t minutes = pair(3);
    const std::uint32_t seconds = pair(6);
    if (hours >= 24 || minutes >= 60 || seconds >= 60)
        return false;
    milliseconds =
        ((hours * 60 + minutes) * 60 + seconds) * 1000 + pair(9) * 10 + static_cast<std::uint32_t>(field[11] - '0');
    return true;
}

// A word of the frame texts in the three languages, as it stands in a file.
class Word
{
public:
    explicit Word(QString FrameWords::*word)
    {
        for (unsigned code = 0; code < LanguageCount; ++code)
            texts_[code] = (frameWords(code).*word).toUtf8();
    }
    bool matches(Field field) const
    {
        return std::any_of(texts_.begin(), texts_.end(), [field](const QByteArray &text) {
            return field == Field(text.constData(), static_cast<std::size_t>(text.size()));
        });
    }

private:
    std::array<QByteArray, LanguageCount> texts_;
};

bool readId(const std::array<Field, FrameColumnCount> &fields, std::uint32_t &word)
{
    static const Word standardFrame(&FrameWords::standardFrame);
    static const Word dataFrame(&FrameWords::dataFrame);
    constexpr std::size_t maxDigits = 8;
    const Field text = fields[IdColumn];
    if (text.substr(0, 2) != "0x" || !readNumber(text.substr(2), 16, maxDigits, word))
        return false;
    const bool extended = !standardFrame.matches(fields[FormatColumn]);
    if (word > largestId(extended))
        return false;
    if (extended)
        word |= kIdExtendedFlag;
    if (!dataFrame.matches(fields[TypeColumn]))
        word |= kIdRemoteFlag;
    return true;
}

// As many bytes as the length asks for and the text has; an empty part between two blanks is a 0.
bool readData(Field text, CsvFrame &frame)
{
    text.remove_prefix(std::min(text.size(), kDataPrefix));
    for (unsigned i = 0; i < frame.length && !text.empty(); ++i) {
        const std::size_t blank = std::min(text.find(' '), text.size());
        std::uint32_t byte = 0;
        if (blank != 0 && !readNumber(text.substr(0, blank), 16, 2, byte))
            return false;
        frame.data[i] = static_cast<std::uint8_t>(byte);
        text.remove_prefix(std::min(blank + 1, text.size()));
    }
    return true;
}

template <typename Record> void fill(const CsvFrame &frame, Record &record)
{
    record = Record{};
    record.id = frame.id;
    record.length = static_cast<std::uint8_t>(std::min<std::size_t>(frame.length, sizeof record.data));
    std::memcpy(record.data, frame.data, sizeof record.data);
    record.transmitType = static_cast<std::uint32_t>(TransmitType::Normal);
}

} // namespace

QString csvHeaderLine(const QStringList &titles)
{
    return titles.join(QLatin1Char(',')) + QLatin1Char('\n');
}

template <typename TextOf> static void appendRow(QString &rows, const TextOf &textOf)
{
    rows += textOf(IndexColumn);
    rows += QLatin1String(",=\"");
    rows += textOf(SystemTimeColumn);
    rows += QLatin1String("\",");
    rows += textOf(TimeStampColumn);
    for (int column = ChannelColumn; column < FrameColumnCount; ++column) {
        rows += QLatin1Char(',');
        rows += textOf(static_cast<FrameColumn>(column));
    }
    rows += QLatin1Char('\n');
}

void appendCsvRow(QString &rows, const ModelItem &item)
{
    appendRow(rows, [&item](FrameColumn column) -> const QString & { return columnText(item, column); });
}

void appendCsvRow(QString &rows, const FrameRow &row)
{
    appendRow(rows, [&row](FrameColumn column) -> const QString & { return row[column]; });
}

bool parseCsvRow(const char *line, std::size_t size, CsvFrame &frame)
{
    constexpr std::size_t maxNumberDigits = 9;
    std::array<Field, FrameColumnCount> fields;
    if (!splitFields(Field(line, size), fields))
        return false;
    frame = CsvFrame{};
    if (!readId(fields, frame.id))
        return false;
    frame.hasTime = readTime(fields[SystemTimeColumn], frame.timeMs);
    frame.canFd = fields[ProtocolColumn].find("CANFD") != Field::npos;
    frame.bitRateSwitch = frame.canFd && fields[ProtocolColumn].find('-') != Field::npos;

    std::uint32_t channel = 0;
    if (readNumber(fields[ChannelColumn], 10, maxNumberDigits, channel) && (channel == 1 || channel == 2))
        frame.channel = channel - 1;

    std::uint32_t length = 0;
    if (!readNumber(fields[DlcColumn], 10, maxNumberDigits, length))
        return false;
    const std::size_t capacity = frame.canFd ? kFdDataBytes : kClassicDataBytes;
    frame.length = static_cast<std::uint8_t>(std::min<std::size_t>(static_cast<std::uint8_t>(length), capacity));
    return readData(fields[DataColumn], frame);
}

void toRecord(const CsvFrame &frame, CanTransmitRecord &record)
{
    fill(frame, record);
}

void toRecord(const CsvFrame &frame, CanFdTransmitRecord &record)
{
    fill(frame, record);
    record.flags = frame.bitRateSwitch ? kFdBitRateSwitch : 0;
}
