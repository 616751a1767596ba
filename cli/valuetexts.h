// Values as words of a command line and as texts of its output.
#pragma once

#include "device/driver/timeunits.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <string>

// "4096", "100k", "20M", "2G" as bytes; steps of 1024.
std::optional<std::uint64_t> bytesFromText(const QString &text);
// "2026-11-21T10:00:00Z" (without "Z": local time) or seconds since 1970, as nanoseconds since 1970 UTC.
std::optional<std::int64_t> utcFromText(const QString &text);
// An identifier, hexadecimal with or without "0x", at most 29 bits.
std::optional<std::uint32_t> identifierFromText(const QString &text);

// Seconds with a point and so many decimals (0..9); what is beyond them is cut off.
void appendSeconds(std::string *out, std::int64_t nanoseconds, int decimals);
void appendDecimal(std::string *out, std::uint64_t number);
// The shortest text that reads as the same number; "null" for what is none.
void appendNumber(std::string *out, double number);
void appendText(std::string *out, const QString &text); // as UTF-8
// In quotes, as JSON has it.
void appendJsonText(std::string *out, const QString &text);
// A field of a table of comma-separated values.
void appendCsvField(std::string *out, const QString &text);
