#include "device/driver/numbertext.h"

namespace
{

bool hasHexPrefix(const std::string &text)
{
    return text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

bool parseDigits(const std::string &text, std::size_t from, int base, std::uint32_t *value)
{
    if (from >= text.size())
        return false;
    std::uint64_t sum = 0;
    for (std::size_t i = from; i < text.size(); ++i) {
        const int digit = hexDigitValue(text[i]);
        if (digit < 0 || digit >= base)
            return false;
        sum = sum * static_cast<unsigned>(base) + static_cast<unsigned>(digit);
        if (sum > UINT32_MAX)
            return false;
    }
    *value = static_cast<std::uint32_t>(sum);
    return true;
}

} // namespace

bool parseUnsigned(const std::string &text, std::uint32_t *value)
{
    return hasHexPrefix(text) ? parseDigits(text, 2, 16, value) : parseDigits(text, 0, 10, value);
}

bool parseHexadecimal(const std::string &text, std::uint32_t *value)
{
    return parseDigits(text, hasHexPrefix(text) ? 2 : 0, 16, value);
}
