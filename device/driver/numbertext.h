// Numbers as they stand in property values, environment variables and recorded logs.
#pragma once

#include <cstdint>
#include <string>

// 0..15, or -1 for what is no hexadecimal digit.
int hexDigitValue(char c);
// A whole text as an unsigned number, decimal or hexadecimal after "0x"; false when it is none or does not fit.
bool parseUnsigned(const std::string &text, std::uint32_t *value);
// The same, hexadecimal with or without "0x".
bool parseHexadecimal(const std::string &text, std::uint32_t *value);
