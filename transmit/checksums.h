// Checksums over the bytes of a frame.
#pragma once

#include <cstddef>
#include <cstdint>

enum class Checksum : std::uint8_t {
    Sum,            // modulo 256
    Xor,            //
    Crc8SaeJ1850,   // polynomial 0x1D, start and final exclusive-or 0xFF; AUTOSAR's Crc_CalculateCRC8 is the same
    Crc8AutosarH2F, // polynomial 0x2F, start and final exclusive-or 0xFF; AUTOSAR's Crc_CalculateCRC8H2F
};

// Over the bytes before and after a gap: a checksum leaves out the byte that it goes into.
class ChecksumRun
{
public:
    explicit ChecksumRun(Checksum kind);
    void add(const std::uint8_t *bytes, std::size_t count);
    std::uint8_t value() const;

private:
    const Checksum kind_;
    std::uint8_t state_;
};
