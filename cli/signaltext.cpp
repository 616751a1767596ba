#include "cli/signaltext.h"

#include "cli/valuetexts.h"

#include <cmath>
#include <optional>

namespace
{

constexpr double kExactIntegers = 9007199254740992; // 2 to the power of 53

// A whole number of up to 64 bits, with its sign apart.
struct Whole {
    std::uint64_t size;
    bool negative;
};

std::optional<Whole> wholeOf(double number)
{
    if (number != std::floor(number) || std::abs(number) > kExactIntegers)
        return std::nullopt;
    return Whole{static_cast<std::uint64_t>(std::abs(number)), number < 0};
}

// Nothing when it has more than 64 bits.
std::optional<Whole> sum(Whole a, Whole b)
{
    if (a.negative == b.negative) {
        if (__builtin_add_overflow(a.size, b.size, &a.size))
            return std::nullopt;
        return a;
    }
    return a.size >= b.size ? Whole{a.size - b.size, a.negative} : Whole{b.size - a.size, b.negative};
}

std::optional<Whole> exactValue(const SignalDefinition &signal, std::int64_t raw)
{
    if (signal.type != SignalType::Signed && signal.type != SignalType::Unsigned)
        return std::nullopt;
    const auto factor = wholeOf(signal.factor);
    const auto offset = wholeOf(signal.offset);
    if (!factor || !offset)
        return std::nullopt;
    const bool negative = signal.type == SignalType::Signed && raw < 0;
    const auto bits = static_cast<std::uint64_t>(raw);
    Whole product{negative ? 0 - bits : bits, negative != factor->negative};
    if (__builtin_mul_overflow(product.size, factor->size, &product.size))
        return std::nullopt;
    return sum(product, *offset);
}

} // namespace

void appendSignalValue(std::string *out, const SignalDefinition &signal, const SignalValue &value)
{
    if (const auto whole = exactValue(signal, value.raw)) {
        if (whole->negative && whole->size > 0)
            out->push_back('-');
        appendDecimal(out, whole->size);
    } else if (std::isfinite(value.physical)) {
        appendNumber(out, value.physical);
    } else {
        out->append(std::isnan(value.physical) ? "nan" : value.physical < 0 ? "-inf" : "inf");
    }
}

void appendJsonSignalValue(std::string *out, const SignalDefinition &signal, const SignalValue &value)
{
    if (std::isfinite(value.physical))
        appendSignalValue(out, signal, value);
    else
        out->append("null");
}
