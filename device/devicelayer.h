// The only code that talks to the adapter. Plain functions over the one process-wide DeviceState; failure is told by
// the answer alone. A channel argument selects channel 1 when it is not zero, channel 0 otherwise.
// Threads: opening, closing and configuring belong to the GUI thread; isDeviceOpen, isChannelOpen, the send and the
// receive functions may be called from any thread, one sender and one receiver per channel at a time.
#pragma once

#include "device/driver/driver.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

// --- which driver -----------------------------------------------------------------------------------------------

// Replaces the driver behind the layer; only while no device is open and no worker runs. Closes nothing. Null: none.
void setDriver(std::unique_ptr<Driver> driver);
// The devices on offer, in the order of the device index.
QStringList deviceNames();
// What the driver has to tell since the last call.
std::vector<DriverNotice> takeDriverNotices();

// --- device -----------------------------------------------------------------------------------------------------

bool isDeviceOpen();
// When openDevice() last succeeded, in nanoseconds of the steady clock. Any thread.
std::int64_t deviceOpenedAt();
// Open, and with its property interface: false after an opening refused for want of it, whose stored handle is closed.
bool isDeviceUsable();
bool isChannelOpen(unsigned channel);
// false at once when a device is open; one retry after a driver reset. Without a property interface the device is
// closed again but its handle stays stored until closeDevice().
bool openDevice(unsigned type, unsigned index, unsigned reserved);
// Waits for the worker calls under way, then closes the device and empties DeviceState.
void closeDevice();
// Restarts the adapter into its boot loader, opening it first if need be.
bool updateDevice(unsigned index);

// The answer's record is all zero when the driver does not answer.
DeviceInfoRecord readDeviceInfo();
// Rebuilds the stored info text; the firmware version word, or 0 when the device does not answer.
unsigned refreshDeviceInfo();
// The stored info text while the device answers, else empty. May hold the serial number's zero bytes.
QString deviceInfoText();
// A version word as "V1.23"; bits 12..15 are dropped.
QString versionText(unsigned word);

// --- channel configuration --------------------------------------------------------------------------------------

bool setCanFdStandard(unsigned channel, unsigned standard);
bool setBaudRate(unsigned channel, unsigned arbitration, unsigned data); // indexes of the two rate tables
bool setCustomBaudRate(unsigned channel, const QString &text);
bool setTerminalResistance(unsigned channel, unsigned value);
bool clearFilter(unsigned channel);
// kind: 0 standard, 1 extended; start and end are hexadecimal texts that begin with "0x".
bool setFilterRange(unsigned channel, unsigned kind, const QString &start, const QString &end);
bool ackFilter(unsigned channel);
// Parses "kind-start-end|kind-start-end|..." and programs it: clearFilter, every row, ackFilter. A malformed row is a
// failure; an empty text has no rows.
bool applyFilterRows(unsigned channel, const QString &rowText);
bool initChannel(unsigned channel, unsigned mode);
bool startChannel(unsigned channel);
bool resetChannel(unsigned channel); // on failure the channel stays open

// --- beside the frames ------------------------------------------------------------------------------------------

// The error frames since the last call, with the channel's state; nothing of a closed channel, or where the driver
// knows nothing of them. One thread per channel at a time, any thread.
BusReport takeBusEvents(unsigned channel);
// The state alone; the error frames stay. Any thread.
ChannelState channelState(unsigned channel);

// --- frames -----------------------------------------------------------------------------------------------------

std::uint32_t makeFrameId(std::uint32_t id, std::uint32_t extended, std::uint32_t remote, std::uint32_t third);
// true only when the driver answered exactly 1, whatever count was.
bool sendCan(unsigned channel, const CanTransmitRecord *records, std::uint32_t count);
bool sendCanFd(unsigned channel, const CanFdTransmitRecord *records, std::uint32_t count);
// Records filled, at most capacity; a driver answer above the capacity reads as 0.
std::uint32_t receiveCan(unsigned channel, CanReceiveRecord *buffer, std::uint32_t capacity, std::uint32_t waitMs);
std::uint32_t receiveCanFd(unsigned channel, CanFdReceiveRecord *buffer, std::uint32_t capacity, std::uint32_t waitMs);
