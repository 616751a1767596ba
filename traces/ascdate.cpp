#include "device/driver/timeunits.h"
#include "traces/asctrace.h"
#include "traces/textscan.h"

#include <QDateTime>
#include <QLocale>

#include <algorithm>
#include <cctype>
#include <string>

namespace
{

// 1..12; 0 for what is no month. The umlaut of March is one byte or two, by the file's encoding.
int monthOf(std::string_view word)
{
    constexpr std::string_view english[] = {"jan", "feb", "mar", "apr", "may", "jun",
                                            "jul", "aug", "sep", "oct", "nov", "dec"};
    std::string lower(word);
    for (char &c : lower)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (lower == "m\xC3\xA4r" || lower == "m\xE4r" || lower == "mrz")
        return 3;
    if (lower == "mai")
        return 5;
    if (lower == "okt")
        return 10;
    if (lower == "dez")
        return 12;
    const auto *found = std::find(std::begin(english), std::end(english), lower);
    return found == std::end(english) ? 0 : static_cast<int>(found - std::begin(english)) + 1;
}

// "hh:mm:ss" with or without a fraction.
std::optional<QTime> timeOf(std::string_view word)
{
    std::uint64_t hours = 0;
    std::uint64_t minutes = 0;
    std::uint64_t seconds = 0;
    std::uint64_t ms = 0;
    if (!scan::number(scan::field(&word, ':'), 10, 24, &hours) ||
        !scan::number(scan::field(&word, ':'), 10, 60, &minutes) ||
        !scan::number(scan::field(&word, '.'), 10, 60, &seconds))
        return std::nullopt;
    const std::string fraction = std::string(word.substr(0, 3)) + "000";
    if (!scan::number(std::string_view(fraction).substr(0, 3), 10, 999, &ms))
        return std::nullopt;
    const QTime time(static_cast<int>(hours), static_cast<int>(minutes), static_cast<int>(seconds),
                     static_cast<int>(ms));
    return time.isValid() ? std::optional(time) : std::nullopt;
}

} // namespace

std::optional<std::int64_t> parseAscDate(std::string_view text)
{
    constexpr std::uint64_t firstYear = 1900;
    constexpr std::uint64_t lastYear = 2200;
    int month = 0;
    std::uint64_t day = 0;
    std::uint64_t year = 0;
    std::optional<QTime> time;
    int hoursAdded = 0;
    for (std::string_view word = scan::word(&text); !word.empty(); word = scan::word(&text)) {
        std::uint64_t number = 0;
        if (word.find(':') != std::string_view::npos) {
            time = timeOf(word);
        } else if (scan::number(word, 10, lastYear, &number)) {
            (number < firstYear ? day : year) = number;
        } else if (time && (word == "pm" || word == "PM") && time->hour() < 12) {
            hoursAdded = 12;
        } else if (time && (word == "am" || word == "AM") && time->hour() == 12) {
            hoursAdded = -12;
        } else if (month == 0) {
            month = monthOf(word);
        }
    }
    const QDate date(static_cast<int>(year), month, static_cast<int>(day));
    if (!time || !date.isValid())
        return std::nullopt;
    const QTime hour = time->addSecs(hoursAdded * 3600);
    return QDateTime(date, hour).toMSecsSinceEpoch() * kNanosecondsPerMillisecond;
}

std::string ascDateText(std::int64_t utc)
{
    const std::int64_t ms = utc / kNanosecondsPerMillisecond - (utc % kNanosecondsPerMillisecond < 0 ? 1 : 0);
    return QLocale::c()
        .toString(QDateTime::fromMSecsSinceEpoch(ms), QStringLiteral("ddd MMM dd hh:mm:ss.zzz yyyy"))
        .toStdString();
}
