// What a BLF file is made of, byte for byte; everything is little-endian.
#pragma once

#include <cstddef>
#include <cstdint>

namespace blf
{

// The file's header.
constexpr std::size_t kFileHeaderBytes = 144;
constexpr std::uint32_t kApiNumber = 4070100;
namespace fileheader
{
constexpr std::size_t kSize = 4;             // u32, of this header
constexpr std::size_t kApi = 8;              // u32
constexpr std::size_t kFileBytes = 16;       // u64
constexpr std::size_t kUnpackedBytes = 24;   // u64, as if every container were stored
constexpr std::size_t kObjectCount = 32;     // u32
constexpr std::size_t kObjectsRead = 36;     // u32
constexpr std::size_t kStart = 40;           // SYSTEMTIME
constexpr std::size_t kLast = 56;            // SYSTEMTIME
constexpr std::size_t kSystemTimeBytes = 16; // year, month, day of the week, day, h, min, s, ms; u16 each
} // namespace fileheader

// What every object begins with.
constexpr std::size_t kSignatureBytes = 4;
constexpr std::size_t kObjectBaseBytes = 16;
constexpr std::size_t kObjectHeaderBytes = 32; // version 1; later ones only append
namespace objectheader
{
constexpr std::size_t kHeaderBytes = 4; // u16
constexpr std::size_t kVersion = 6;     // u16
constexpr std::size_t kObjectBytes = 8; // u32, header included, padding not
constexpr std::size_t kType = 12;       // u32
constexpr std::size_t kFlags = 16;      // u32
constexpr std::size_t kTime = 24;       // u64
} // namespace objectheader
constexpr std::uint32_t kTimeIsTenMicroseconds = 1;
constexpr std::uint32_t kTimeIsNanoseconds = 2;

enum ObjectType : std::uint32_t {
    CanMessage = 1,
    CanError = 2,
    CanOverload = 3,
    CanStatistic = 4,
    AppTrigger = 5,
    EnvironmentFirst = 6,
    EnvironmentLast = 9,
    LogContainer = 10,
    AppText = 65,
    CanErrorExt = 73,
    CanMessage2 = 86,
    EventComment = 92,
    GlobalMarker = 96,
    CanFdMessage = 100,
    CanFdMessage64 = 101,
    CanFdError64 = 104,
    ContainerEnd = 115
};

// A container, from its beginning.
namespace container
{
constexpr std::size_t kMethod = 16;        // u16
constexpr std::size_t kUnpackedBytes = 24; // u32
constexpr std::size_t kData = 32;
} // namespace container
constexpr std::uint16_t kStored = 0;
constexpr std::uint16_t kZlib = 2;

// The bodies, from the end of the object's header.
constexpr std::uint32_t kExtendedBit = 0x80000000U;
constexpr std::uint8_t kFlagSent = 0x01;
constexpr std::uint8_t kFlagRemote = 0x80;
namespace can // types 1 and 86; 100 begins alike
{
constexpr std::size_t kChannel = 0; // u16
constexpr std::size_t kFlags = 2;   // u8
constexpr std::size_t kDlc = 3;     // u8
constexpr std::size_t kId = 4;      // u32
constexpr std::size_t kData = 8;
constexpr std::size_t kBytes = 16;
} // namespace can
namespace canfd // type 100
{
constexpr std::size_t kFdFlags = 13; // u8
constexpr std::size_t kValid = 14;   // u8
constexpr std::size_t kData = 20;
constexpr std::uint8_t kFd = 1;
constexpr std::uint8_t kBitRateSwitch = 2;
constexpr std::uint8_t kErrorState = 4;
} // namespace canfd
namespace canfd64 // type 101; data as long as they are
{
constexpr std::size_t kChannel = 0;    // u8
constexpr std::size_t kDlc = 1;        // u8
constexpr std::size_t kValid = 2;      // u8
constexpr std::size_t kId = 4;         // u32
constexpr std::size_t kFlags = 12;     // u32
constexpr std::size_t kDirection = 34; // u8, 0 received
constexpr std::size_t kData = 40;
constexpr std::uint32_t kRemote = 0x0010;
constexpr std::uint32_t kFd = 0x1000;
constexpr std::uint32_t kBitRateSwitch = 0x2000;
constexpr std::uint32_t kErrorState = 0x4000;
} // namespace canfd64
namespace error // types 2 and 73; 2 ends after the channel and a length
{
constexpr std::size_t kChannel = 0; // u16
constexpr std::size_t kDlc = 10;    // u8
constexpr std::size_t kId = 16;     // u32
constexpr std::size_t kData = 24;
constexpr std::size_t kShortBytes = 4;
constexpr std::size_t kBytes = 32;
} // namespace error
namespace fderror // type 104; flags as of type 101
{
constexpr std::size_t kChannel = 0; // u8
constexpr std::size_t kDlc = 1;     // u8
constexpr std::size_t kValid = 2;   // u8
constexpr std::size_t kFlags = 4;   // u16
constexpr std::size_t kId = 12;     // u32
constexpr std::size_t kData = 44;
} // namespace fderror

// Padding that follows an object of this size: its remainder modulo 4, as the format has it, not what is missing to 4.
constexpr std::size_t paddingAfter(std::size_t objectBytes)
{
    return objectBytes % 4;
}

} // namespace blf
