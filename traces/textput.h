// Numbers as text, straight into a buffer; each answers the place behind what it wrote. The caller has made room.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace put
{

constexpr char kHexDigits[] = "0123456789ABCDEF";
constexpr int kLongestNumber = 20; // digits of the largest 64-bit number

// "00" to "FF", two characters each.
constexpr std::array<char, 512> hexPairs()
{
    std::array<char, 512> pairs{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        pairs[2 * byte] = kHexDigits[byte >> 4];
        pairs[2 * byte + 1] = kHexDigits[byte & 0xF];
    }
    return pairs;
}
inline constexpr std::array<char, 512> kHexPairs = hexPairs();

inline char *text(char *out, std::string_view text)
{
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

inline char *hexByte(char *out, std::uint8_t byte)
{
    std::memcpy(out, &kHexPairs[2u * byte], 2);
    return out + 2;
}

// Exactly so many digits; those above are cut off.
inline char *hex(char *out, std::uint64_t number, int digits)
{
    for (int i = digits - 1; i >= 0; --i, number >>= 4)
        out[i] = kHexDigits[number & 0xF];
    return out + digits;
}

inline int hexDigits(std::uint64_t number)
{
    int digits = 1;
    while (number >>= 4)
        ++digits;
    return digits;
}

// Exactly so many digits, with zeros before; those above are cut off.
inline char *decimal(char *out, std::uint64_t number, int digits)
{
    for (int i = digits - 1; i >= 0; --i, number /= 10)
        out[i] = static_cast<char>('0' + number % 10);
    return out + digits;
}

inline char *decimal(char *out, std::uint64_t number)
{
    char digits[kLongestNumber];
    int first = kLongestNumber;
    do {
        digits[--first] = static_cast<char>('0' + number % 10);
        number /= 10;
    } while (number > 0);
    return text(out, {digits + first, static_cast<std::size_t>(kLongestNumber - first)});
}

// The same, with blanks before up to a width.
inline char *decimalRight(char *out, std::uint64_t number, int width)
{
    char digits[kLongestNumber];
    const int length = static_cast<int>(decimal(digits, number) - digits);
    for (int i = length; i < width; ++i)
        *out++ = ' ';
    return text(out, {digits, static_cast<std::size_t>(length)});
}

} // namespace put
