// What the SocketCAN driver says about a device of its own.
#pragma once

#include "device/driver/socketcan/caninterfaces.h"
#include "device/driver/wirerecords.h"

// "can0 + can1"
std::string deviceName(const std::vector<std::string> &interfaceNames);
// "can0+can1 vcan", or "can0 gs_usb 500k/2M, can1 mcp251xfd 1M" where they differ.
std::string hardwareText(const std::vector<CanInterface> &interfaces);
// A kernel release such as "6.18.3-amd64" as a version word: 0x618. 0 when it cannot be read.
std::uint16_t kernelVersionWord(const std::string &release);
// Every field filled: interface names as the serial number, the kernel's version as every version. No firmware image is
// newer than this firmware version.
DeviceInfoRecord socketCanDeviceInfo(const std::vector<CanInterface> &interfaces);
