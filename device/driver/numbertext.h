// Numbers as they stand in property values, environment variables and recorded logs.
#pragma once

#include <array>
#include <cstdint>
#include <string>

constexpr int kHexBase = 16;

constexpr std::array<std::int8_t, 256> hexDigitValues()
{
    std::array<std::int8_t, 256> values{};
    for (int code = 0; code < 256; ++code)
        values[static_cast<std::size_t>(code)] = static_cast<std::int8_t>(code >= '0' && code <= '9'   ? code - '0'
                                                                          : code >= 'a' && code <= 'f' ? code - 'a' + 10
                                                                          : code >= 'A' && code <= 'F' ? code - 'A' + 10
                                                                                                       : -1);
    return values;
}
inline constexpr std::array<std::int8_t, 256> kHexDigitValues = hexDigitValues();

// 0..15, or -1 for what is no hexadecimal digit.
inline int hexDigitValue(char c)
{
    return kHexDigitValues[static_cast<unsigned char>(c)];
}
// A whole text as an unsigned number, decimal or hexadecimal after "0x"; false when it is none or does not fit.
bool parseUnsigned(const std::string &text, std::uint32_t *value);
// The same, hexadecimal with or without "0x".
bool parseHexadecimal(const std::string &text, std::uint32_t *value);
