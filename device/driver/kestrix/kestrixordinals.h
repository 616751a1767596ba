// What Kestrix.dll exports: its operations by ordinal, without names. One table for the side that binds them, for the
// simulated library that offers them, and for the build, which reads the ordinals and names from its lines.
#pragma once

#include "device/driver/driver.h"

// X(ordinal, operation, result, parameters)
#define OSTREL_KESTRIX_OPERATIONS(X)                                                                                   \
    X(1, OpenDevice, Driver::Handle, (std::uint32_t deviceType, std::uint32_t deviceIndex, std::uint32_t reserved))    \
    X(2, CloseDevice, std::uint32_t, (Driver::Handle device))                                                          \
    X(3, GetDeviceInfo, std::uint32_t, (Driver::Handle device, DeviceInfoRecord * record))                             \
    X(4, GetDeviceStatus, std::uint32_t, (Driver::Handle device))                                                      \
    X(5, InitChannel, Driver::Handle, (Driver::Handle device, std::uint32_t channel, const ChannelInitRecord *record)) \
    X(6, StartChannel, std::uint32_t, (Driver::Handle channel))                                                        \
    X(7, ResetChannel, std::uint32_t, (Driver::Handle channel))                                                        \
    X(12, TransmitCan, std::uint32_t, (Driver::Handle channel, const CanTransmitRecord *records, std::uint32_t count)) \
    X(13, ReceiveCan, std::uint32_t,                                                                                   \
      (Driver::Handle channel, CanReceiveRecord * records, std::uint32_t capacity, std::uint32_t waitMs))              \
    X(14, TransmitCanFd, std::uint32_t,                                                                                \
      (Driver::Handle channel, const CanFdTransmitRecord *records, std::uint32_t count))                               \
    X(15, ReceiveCanFd, std::uint32_t,                                                                                 \
      (Driver::Handle channel, CanFdReceiveRecord * records, std::uint32_t capacity, std::uint32_t waitMs))            \
    X(16, GetPropertyInterface, const PropertyInterface *, (Driver::Handle device))                                    \
    X(32, UpdateDevice, std::uint32_t, (Driver::Handle device))                                                        \
    X(33, SetArbitrationBaud, std::uint32_t, (Driver::Handle device, std::uint32_t channel, std::uint32_t value))      \
    X(34, SetDataBaud, std::uint32_t, (Driver::Handle device, std::uint32_t channel, std::uint32_t value))             \
    X(35, SetCanFdStandard, std::uint32_t, (Driver::Handle device, std::uint32_t channel, std::uint32_t value))        \
    X(64, ResetDriver, std::uint32_t, ())
