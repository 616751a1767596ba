#include "transmit/checksums.h"

namespace
{
constexpr std::uint8_t kCrcStart = 0xFF;
constexpr std::uint8_t kCrcFinalXor = 0xFF;
constexpr unsigned kPolynomialJ1850 = 0x1D;
constexpr unsigned kPolynomialH2F = 0x2F;
constexpr unsigned kTopBit = 0x80;

bool isCrc(Checksum kind)
{
    return kind == Checksum::Crc8SaeJ1850 || kind == Checksum::Crc8AutosarH2F;
}

std::uint8_t crcStep(unsigned crc, unsigned polynomial)
{
    for (int bit = 0; bit < 8; ++bit)
        crc = (crc & kTopBit) != 0 ? crc << 1 ^ polynomial : crc << 1;
    return static_cast<std::uint8_t>(crc);
}
} // namespace

ChecksumRun::ChecksumRun(Checksum kind) : kind_(kind), state_(isCrc(kind) ? kCrcStart : 0) {}

void ChecksumRun::add(const std::uint8_t *bytes, std::size_t count)
{
    for (const std::uint8_t *byte = bytes; byte != bytes + count; ++byte) {
        const unsigned mixed = static_cast<unsigned>(state_ ^ *byte);
        switch (kind_) {
        case Checksum::Sum:
            state_ = static_cast<std::uint8_t>(state_ + *byte);
            break;
        case Checksum::Xor:
            state_ = static_cast<std::uint8_t>(mixed);
            break;
        case Checksum::Crc8SaeJ1850:
            state_ = crcStep(mixed, kPolynomialJ1850);
            break;
        case Checksum::Crc8AutosarH2F:
            state_ = crcStep(mixed, kPolynomialH2F);
            break;
        }
    }
}

std::uint8_t ChecksumRun::value() const
{
    return isCrc(kind_) ? static_cast<std::uint8_t>(state_ ^ kCrcFinalXor) : state_;
}
