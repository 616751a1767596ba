#include "signals/valuetext.h"

#include <cmath>
#include <limits>

namespace
{

constexpr int kValueDigits = 9;
// From here on nine digits are not even those before the point; a double has fifteen.
constexpr double kLarge = 1e9;
constexpr int kMostDigits = std::numeric_limits<double>::digits10;
constexpr double kLargestWhole = 1e15; // with all digits

bool isWhole(double value)
{
    return std::abs(value) <= kLargestWhole && value == std::floor(value);
}

// raw * factor + offset without rounding; nothing when it does not fit.
std::optional<std::int64_t> exactValue(const SignalDefinition &signal, std::int64_t raw)
{
    const bool beyond = signal.type == SignalType::Unsigned && raw < 0;
    std::int64_t value = 0;
    if (beyond || !isWhole(signal.factor) || !isWhole(signal.offset) ||
        __builtin_mul_overflow(raw, static_cast<std::int64_t>(signal.factor), &value) ||
        __builtin_add_overflow(value, static_cast<std::int64_t>(signal.offset), &value))
        return std::nullopt;
    return value;
}

} // namespace

QString valueText(double value)
{
    if (isWhole(value))
        return QString::number(static_cast<qint64>(value));
    const bool large = std::abs(value) >= kLarge && std::abs(value) <= kLargestWhole;
    return QString::number(value, 'g', large ? kMostDigits : kValueDigits);
}

QString valueText(const SignalDefinition &signal, const SignalValue &value)
{
    if (signal.type == SignalType::Float || signal.type == SignalType::Double)
        return valueText(value.physical);
    const std::optional<std::int64_t> exact = exactValue(signal, value.raw);
    if (exact)
        return QString::number(*exact);
    const bool same = signal.type == SignalType::Unsigned && signal.factor == 1 && signal.offset == 0;
    return same ? QString::number(static_cast<quint64>(value.raw)) : valueText(value.physical);
}
