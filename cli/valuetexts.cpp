#include "cli/valuetexts.h"

#include "device/driver/identifiers.h"
#include "device/driver/timeunits.h"
#include "traces/textput.h"

#include <QDateTime>
#include <QLocale>

#include <cmath>

namespace
{

constexpr double kLatestSeconds = 9e9; // whose nanoseconds fit 64 bits
constexpr int kMostDecimals = 9;

} // namespace

std::optional<std::uint64_t> bytesFromText(const QString &text)
{
    QString digits = text;
    int steps = 0;
    if (!digits.isEmpty())
        steps = QStringLiteral("kmg").indexOf(digits.back().toLower()) + 1;
    if (steps > 0)
        digits.chop(1);
    bool ok = false;
    const std::uint64_t number = digits.toULongLong(&ok);
    const int shift = 10 * steps;
    if (!ok || number == 0 || number > (std::uint64_t(1) << 62) >> shift)
        return std::nullopt;
    return number << shift;
}

std::optional<std::int64_t> utcFromText(const QString &text)
{
    bool ok = false;
    const double seconds = text.toDouble(&ok);
    if (ok) {
        if (!(seconds >= 0 && seconds < kLatestSeconds))
            return std::nullopt;
        // To the microsecond, as a double of today's dates has it.
        return std::llround(seconds * 1e6) * 1000;
    }
    const QDateTime date = QDateTime::fromString(text, Qt::ISODateWithMs);
    if (!date.isValid() || date.toMSecsSinceEpoch() < 0 ||
        date.toMSecsSinceEpoch() > static_cast<qint64>(kLatestSeconds * 1e3))
        return std::nullopt;
    return date.toMSecsSinceEpoch() * kNanosecondsPerMillisecond;
}

std::optional<std::uint32_t> identifierFromText(const QString &text)
{
    bool ok = false;
    const std::uint32_t id = text.toUInt(&ok, 16);
    return ok && id <= kLargestExtendedId ? std::optional<std::uint32_t>(id) : std::nullopt;
}

void appendSeconds(std::string *out, std::int64_t nanoseconds, int decimals)
{
    char buffer[2 * put::kLongestNumber];
    char *at = buffer;
    std::uint64_t size = static_cast<std::uint64_t>(nanoseconds);
    if (nanoseconds < 0) {
        *at++ = '-';
        size = 0 - size;
    }
    at = put::decimal(at, size / kNanosecondsPerSecond);
    *at++ = '.';
    put::decimal(at, size % kNanosecondsPerSecond, kMostDecimals);
    out->append(buffer, static_cast<std::size_t>(at - buffer + decimals));
}

void appendDecimal(std::string *out, std::uint64_t number)
{
    char buffer[put::kLongestNumber];
    out->append(buffer, static_cast<std::size_t>(put::decimal(buffer, number) - buffer));
}

void appendNumber(std::string *out, double number)
{
    if (!std::isfinite(number)) {
        out->append("null");
        return;
    }
    constexpr double kExactIntegers = 9007199254740992; // 2 to the power of 53
    if (number == std::floor(number) && std::abs(number) < kExactIntegers) {
        if (number < 0)
            out->push_back('-');
        appendDecimal(out, static_cast<std::uint64_t>(std::abs(number)));
        return;
    }
    out->append(QByteArray::number(number, 'g', QLocale::FloatingPointShortest).constData());
}

void appendText(std::string *out, const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    out->append(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

void appendJsonText(std::string *out, const QString &text)
{
    out->push_back('"');
    for (const char c : text.toUtf8()) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out->push_back('\\');
            out->push_back(c);
        } else if (byte < ' ') {
            char escape[] = "\\u0000";
            put::hexByte(escape + 4, byte);
            out->append(escape);
        } else {
            out->push_back(c);
        }
    }
    out->push_back('"');
}

void appendCsvField(std::string *out, const QString &text)
{
    const bool quoted = text.contains(QLatin1Char(',')) || text.contains(QLatin1Char('"')) ||
                        text.contains(QLatin1Char('\n')) || text.contains(QLatin1Char('\r'));
    if (!quoted) {
        appendText(out, text);
        return;
    }
    QString escaped = text;
    escaped.replace(QLatin1Char('"'), QLatin1String("\"\""));
    appendText(out, QLatin1Char('"') + escaped + QLatin1Char('"'));
}
