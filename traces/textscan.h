// Words and numbers of a line, front to back, without copies.
#pragma once

#include "device/driver/numbertext.h"

#include <cstdint>
#include <string_view>

namespace scan
{

inline bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

inline bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// The next word between blanks, taken from the front of the text; empty at its end.
inline std::string_view word(std::string_view *text)
{
    const char *at = text->data();
    const char *const end = at + text->size();
    while (at != end && isBlank(*at))
        ++at;
    const char *const start = at;
    while (at != end && !isBlank(*at))
        ++at;
    *text = {at, static_cast<std::size_t>(end - at)};
    return {start, static_cast<std::size_t>(at - start)};
}

// The next part up to a separator, which is dropped with it.
inline std::string_view field(std::string_view *text, char separator)
{
    const std::size_t end = text->find(separator);
    const std::string_view found = text->substr(0, end);
    text->remove_prefix(end == std::string_view::npos ? text->size() : end + 1);
    return found;
}

// The whole text as a number of base 10 or 16; false when it is none or above `most`.
inline bool number(std::string_view text, unsigned base, std::uint64_t most, std::uint64_t *value)
{
    std::uint64_t sum = 0;
    for (const char c : text) {
        const int digit = hexDigitValue(c);
        if (digit < 0 || static_cast<unsigned>(digit) >= base)
            return false;
        if (sum > (most - static_cast<unsigned>(digit)) / base)
            return false;
        sum = sum * base + static_cast<unsigned>(digit);
    }
    *value = sum;
    return !text.empty();
}

inline bool startsWith(std::string_view text, std::string_view start)
{
    return text.substr(0, start.size()) == start;
}

} // namespace scan
