// The records that travel between the program and the adapter's driver library, byte for byte (little-endian).
#pragma once

#include "device/driver/identifiers.h"

#include <cstddef>
#include <cstdint>

constexpr std::size_t kClassicDataBytes = 8;
constexpr std::size_t kFdDataBytes = 64;

// The identifier word of every frame record: bits 0..28 identifier, 29 spare flag, 30 remote, 31 extended.
constexpr std::uint32_t kIdMask = kLargestExtendedId;
constexpr std::uint32_t kIdThirdFlag = 1u << 29;
constexpr std::uint32_t kIdRemoteFlag = 1u << 30;
constexpr std::uint32_t kIdExtendedFlag = 1u << 31;

// The flags byte of an FD record that asks for, or tells of, the bit-rate switch.
constexpr std::uint8_t kFdBitRateSwitch = 1;

// Transmit types: how often a frame is tried, and whether its sender hears it too.
enum class TransmitType : std::uint32_t { Normal = 0, Single = 1, SelfReceive = 2, SingleSelfReceive = 3 };

constexpr std::uint32_t kChannelTypeCanFd = 1;
constexpr std::uint8_t kWorkModeNormal = 0;
constexpr std::uint8_t kWorkModeListenOnly = 1;

struct ChannelInitRecord {
    std::uint32_t channelType; // always kChannelTypeCanFd
    std::uint8_t reserved1[15];
    std::uint8_t workMode1; // kWorkModeNormal or kWorkModeListenOnly
    std::uint8_t reserved2[5];
    std::uint8_t workMode2; // the same value again
    std::uint8_t reserved3[6];
};

struct CanTransmitRecord {
    std::uint32_t id; // identifier word
    std::uint8_t length;
    std::uint8_t reserved[3];
    std::uint8_t data[kClassicDataBytes];
    std::uint32_t transmitType;
};

struct CanFdTransmitRecord {
    std::uint32_t id;
    std::uint8_t length; // bytes, not a DLC code
    std::uint8_t flags;
    std::uint8_t reserved[2];
    std::uint8_t data[kFdDataBytes];
    std::uint32_t transmitType;
};

struct CanReceiveRecord {
    std::uint32_t id;
    std::uint8_t length;
    std::uint8_t reserved[3];
    std::uint8_t data[kClassicDataBytes];
    std::uint64_t timeStamp; // microseconds
};

struct CanFdReceiveRecord {
    std::uint32_t id;
    std::uint8_t length;              // bytes, not a DLC code
    std::uint8_t flags;               // kFdBitRateSwitch or 0, nothing else: rows compare the whole byte
    std::uint8_t errorStateIndicator; // 1: the sender was error passive; 0 where the driver does not know
    std::uint8_t reserved;
    std::uint8_t data[kFdDataBytes];
    std::uint64_t timeStamp; // microseconds
};

struct DeviceInfoRecord {
    std::uint16_t hardwareVersion;
    std::uint16_t firmwareVersion;
    std::uint16_t driverVersion;
    std::uint16_t interfaceVersion;
    std::uint16_t irqNumber;
    std::uint8_t channelCount;
    char serialNumber[20]; // 8-bit characters, not necessarily terminated
    char hardwareType[49]; // up to the first zero byte
};

static_assert(sizeof(ChannelInitRecord) == 32);
static_assert(offsetof(ChannelInitRecord, workMode1) == 19 && offsetof(ChannelInitRecord, workMode2) == 25);
static_assert(sizeof(CanTransmitRecord) == 20);
static_assert(offsetof(CanTransmitRecord, length) == 4 && offsetof(CanTransmitRecord, data) == 8 &&
              offsetof(CanTransmitRecord, transmitType) == 16);
static_assert(sizeof(CanFdTransmitRecord) == 76);
static_assert(offsetof(CanFdTransmitRecord, flags) == 5 && offsetof(CanFdTransmitRecord, data) == 8 &&
              offsetof(CanFdTransmitRecord, transmitType) == 72);
static_assert(sizeof(CanReceiveRecord) == 24);
static_assert(offsetof(CanReceiveRecord, data) == 8 && offsetof(CanReceiveRecord, timeStamp) == 16);
static_assert(sizeof(CanFdReceiveRecord) == 80);
static_assert(offsetof(CanFdReceiveRecord, flags) == 5 && offsetof(CanFdReceiveRecord, errorStateIndicator) == 6 &&
              offsetof(CanFdReceiveRecord, data) == 8 && offsetof(CanFdReceiveRecord, timeStamp) == 72);
static_assert(sizeof(DeviceInfoRecord) == 80);
static_assert(offsetof(DeviceInfoRecord, firmwareVersion) == 2 && offsetof(DeviceInfoRecord, driverVersion) == 4 &&
              offsetof(DeviceInfoRecord, serialNumber) == 11 && offsetof(DeviceInfoRecord, hardwareType) == 31);
