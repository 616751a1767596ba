#include "device/driver/simulated/bittiming.h"

#include "device/driver/framelength.h"

#include <cmath>
#include <iterator>

namespace
{

// The order is the numbering of the adapter's driver.
constexpr std::uint32_t kArbitrationRates[] = {1000000, 800000, 500000, 400000, 250000, 200000, 125000, 100000, 80000,
                                               50000,   40000,  20000,  10000,  5000,   666660, 83330,  66660,  33330};
constexpr std::uint32_t kDataRates[] = {5000000, 4000000, 2000000, 1000000, 800000, 500000, 250000, 125000, 100000};

constexpr double kSlowestRate = 5000;
constexpr double kFastestArbitrationRate = 1000000;
constexpr double kFastestDataRate = 8000000;
constexpr std::uint64_t kRateTolerance = 200; // one part in so many

bool sameRate(std::uint32_t a, std::uint32_t b)
{
    const std::uint64_t difference = a > b ? a - b : b - a;
    return difference * kRateTolerance <= (a > b ? a : b);
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

char lowerCase(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// Takes the word (lower case) off the text when it begins with it, in either case.
bool takeWord(const char **text, const char *word)
{
    const char *rest = *text;
    for (; *word != 0; ++word, ++rest)
        if (lowerCase(*rest) != *word)
            return false;
    *text = rest;
    return true;
}

bool takeRate(const char **text, double *rate)
{
    double value = 0;
    if (!isDigit(**text))
        return false;
    for (; isDigit(**text); ++*text)
        value = value * 10 + (**text - '0');
    if (**text == '.')
        for (double place = 0.1; isDigit(*++*text); place /= 10)
            value += place * (**text - '0');
    if (takeWord(text, "k"))
        value *= 1e3;
    else if (takeWord(text, "m"))
        value *= 1e6;
    if (!takeWord(text, "bps"))
        takeWord(text, "bit/s");
    if (takeWord(text, "(")) {
        while (**text != ')' && **text != 0)
            ++*text;
        if (!takeWord(text, ")"))
            return false;
    }
    *rate = value;
    return true;
}

bool isSeparator(char c)
{
    return c == ' ' || c == '/' || c == ',' || c == '+';
}

} // namespace

std::uint32_t arbitrationRateAt(std::uint32_t index)
{
    return index < std::size(kArbitrationRates) ? kArbitrationRates[index] : 0;
}

std::uint32_t dataRateAt(std::uint32_t index)
{
    return index < std::size(kDataRates) ? kDataRates[index] : 0;
}

BusSettings defaultBusSettings()
{
    return {kArbitrationRates[0], kDataRates[0], 0};
}

bool parseCustomRates(const std::string &text, BusSettings *settings)
{
    const char *rest = text.c_str();
    double arbitration = 0;
    if (!takeRate(&rest, &arbitration) || (*rest != 0 && !isSeparator(*rest)))
        return false;
    while (isSeparator(*rest))
        ++rest;
    double data = arbitration;
    if (*rest != 0 && (!takeRate(&rest, &data) || (*rest != 0 && !isSeparator(*rest))))
        return false;
    if (arbitration < kSlowestRate || arbitration > kFastestArbitrationRate || data < kSlowestRate ||
        data > kFastestDataRate)
        return false;
    settings->arbitrationRate = static_cast<std::uint32_t>(std::lround(arbitration));
    settings->dataRate = static_cast<std::uint32_t>(std::lround(data));
    return true;
}

bool understands(const BusSettings &listener, const BusSettings &sender, const BusFrame &frame)
{
    if (!sameRate(listener.arbitrationRate, sender.arbitrationRate))
        return false;
    if (!frame.fd)
        return true;
    return listener.fdStandard == sender.fdStandard &&
           (!frame.bitRateSwitch || sameRate(listener.dataRate, sender.dataRate));
}

BusTime frameDuration(const BusFrame &frame, const BusSettings &settings)
{
    return wireTime(frameBits(frame), settings.arbitrationRate, settings.dataRate);
}
