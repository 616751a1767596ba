// The seam between the program and whatever moves its frames: the adapter's library, the simulated adapter or the
// kernel's CAN interfaces. Plain C++; only the device layer holds a Driver.
#pragma once

#include "device/driver/busevent.h"
#include "device/driver/wirerecords.h"

#include <cstdint>
#include <string>
#include <vector>

constexpr std::uint32_t kDeviceType = 41;   // the Halden-D2's type code
constexpr std::uint32_t kStatusPresent = 2; // GetDeviceStatus: present and answering
constexpr std::uint32_t kStatusGone = 0;
constexpr std::uint32_t kDriverSuccess = 1; // what most operations answer on success
constexpr std::uint32_t kDriverRefused = 0;
constexpr unsigned kChannelCount = 2;

// The table of entry points that GetPropertyInterface answers; the program uses its first entry only.
struct PropertyInterface {
    // path: channel digit + "/name", both texts zero-terminated; 1 on success
    std::uint32_t (*SetValue)(const char *path, const char *value);
};

// Something a driver wants the user to know; the window words it in the current language.
struct DriverNotice {
    enum class Kind {
        LibraryMissing,   // detail: file name
        LibraryUnusable,  // detail: file name and the system's reason (wrong kind, broken)
        OrdinalMissing,   // detail: ordinal and operation
        NotHardware,      // detail: what the frames come from instead of a Halden-D2
        BuiltInVehicle,   // on the bus is the simulated adapter's own vehicle, which has a signal database
        TraceUnreadable,  // detail: file name of the recorded log that cannot be played
        InterfaceMissing, // detail: kernel interface
        InterfaceDown,    // detail: kernel interface
        InterfaceBack,    // detail: kernel interface; was down while its channel ran
        InterfaceNotFd,   // detail: kernel interface
        InterfaceRefused, // detail: kernel interface and the system's reason
        FramesLost,       // channel and count: frames that arrived but found no room since the last notice
    };
    Kind kind;
    std::string detail; // UTF-8
    unsigned channel = 0;
    std::uint64_t count = 0;
};

// What busReport is to answer.
enum class BusQuestion { State, StateAndEvents };

// The 17 operations of the adapter's library, under their own names, two questions about the driver itself, and one
// about the bus that a driver need not know the answer to.
// Threads: one thread may receive and another transmit on a channel while a third configures; no operation is called
// with a handle that another thread is closing (the device layer sees to that). Nothing throws.
class Driver
{
public:
    using Handle = std::uint32_t; // 0 = failure

    Driver() = default;
    Driver(const Driver &) = delete;
    Driver &operator=(const Driver &) = delete;
    virtual ~Driver() = default;

    // The devices on offer; the position in the list is the device index of OpenDevice. UTF-8.
    virtual std::vector<std::string> deviceNames() = 0;
    // What happened since the last call, oldest first; callable at any time from the GUI thread.
    virtual std::vector<DriverNotice> takeNotices() = 0;
    // The state of a running channel's controller, and its error frames since they were last taken. They wait in a
    // bounded queue; asked for the state alone, they stay there. Called like the receive operations, by one thread per
    // channel at a time. What is not known, or of no running channel, is an empty report.
    virtual BusReport busReport(Handle, BusQuestion) { return {}; }

    virtual Handle OpenDevice(std::uint32_t deviceType, std::uint32_t deviceIndex, std::uint32_t reserved) = 0;
    virtual std::uint32_t CloseDevice(Handle device) = 0;
    virtual std::uint32_t GetDeviceInfo(Handle device, DeviceInfoRecord *record) = 0;
    virtual std::uint32_t GetDeviceStatus(Handle device) = 0; // kStatusPresent, or anything else
    virtual Handle InitChannel(Handle device, std::uint32_t channel, const ChannelInitRecord *record) = 0;
    virtual std::uint32_t StartChannel(Handle channel) = 0;
    virtual std::uint32_t ResetChannel(Handle channel) = 0;
    // Answer: frames accepted, 0..count.
    virtual std::uint32_t TransmitCan(Handle channel, const CanTransmitRecord *records, std::uint32_t count) = 0;
    // Answer: records filled, 0..capacity. waitMs 0: never waits.
    virtual std::uint32_t ReceiveCan(Handle channel, CanReceiveRecord *records, std::uint32_t capacity,
                                     std::uint32_t waitMs) = 0;
    virtual std::uint32_t TransmitCanFd(Handle channel, const CanFdTransmitRecord *records, std::uint32_t count) = 0;
    virtual std::uint32_t ReceiveCanFd(Handle channel, CanFdReceiveRecord *records, std::uint32_t capacity,
                                       std::uint32_t waitMs) = 0;
    virtual const PropertyInterface *GetPropertyInterface(Handle device) = 0;
    virtual std::uint32_t UpdateDevice(Handle device) = 0; // restarts the adapter into its boot loader
    virtual std::uint32_t SetArbitrationBaud(Handle device, std::uint32_t channel, std::uint32_t value) = 0;
    virtual std::uint32_t SetDataBaud(Handle device, std::uint32_t channel, std::uint32_t value) = 0;
    virtual std::uint32_t SetCanFdStandard(Handle device, std::uint32_t channel, std::uint32_t value) = 0;
    virtual std::uint32_t ResetDriver() = 0;
};
