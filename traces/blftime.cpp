#include "traces/blftime.h"

#include <QDateTime>
#include <QtEndian>

namespace blf
{

namespace
{

// Years whose nanoseconds since 1970 fit 64 bits.
constexpr int kFirstYear = 1970;
constexpr int kLastYear = 2261;

enum DateField { Year, Month, DayOfWeek, Day, Hour, Minute, Second, Millisecond };

int get(const std::uint8_t *bytes, DateField field)
{
    return qFromLittleEndian<std::uint16_t>(bytes + 2 * field);
}

void put(std::uint8_t *bytes, DateField field, int value)
{
    qToLittleEndian<std::uint16_t>(static_cast<std::uint16_t>(value), bytes + 2 * field);
}

} // namespace

std::optional<std::int64_t> utcFromSystemTime(const std::uint8_t *bytes)
{
    const QDate date(get(bytes, Year), get(bytes, Month), get(bytes, Day));
    const QTime time(get(bytes, Hour), get(bytes, Minute), get(bytes, Second), get(bytes, Millisecond));
    if (!date.isValid() || !time.isValid() || date.year() < kFirstYear || date.year() > kLastYear)
        return std::nullopt;
    return QDateTime(date, time, Qt::UTC).toMSecsSinceEpoch() * kStartResolution;
}

void putSystemTime(std::int64_t utc, std::uint8_t *bytes)
{
    const QDateTime moment = QDateTime::fromMSecsSinceEpoch(utc / kStartResolution, Qt::UTC);
    constexpr int kDaysPerWeek = 7;
    put(bytes, Year, moment.date().year());
    put(bytes, Month, moment.date().month());
    put(bytes, DayOfWeek, moment.date().dayOfWeek() % kDaysPerWeek);
    put(bytes, Day, moment.date().day());
    put(bytes, Hour, moment.time().hour());
    put(bytes, Minute, moment.time().minute());
    put(bytes, Second, moment.time().second());
    put(bytes, Millisecond, moment.time().msec());
}

} // namespace blf
