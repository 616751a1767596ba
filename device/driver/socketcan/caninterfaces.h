// The kernel's CAN network interfaces, as rtnetlink tells of them.
#pragma once

#include "device/driver/busevent.h"

#include <cstdint>
#include <string>
#include <vector>

struct CanInterface {
    int index = 0; // the kernel's number; stays through a rename, never comes back after a removal
    std::string name;
    std::string driver; // of the kernel: "gs_usb", "vcan"; empty when unknown
    bool up = false;
    bool fd = false;               // takes CAN FD frames (its MTU says so)
    std::uint32_t bitRate = 0;     // bits per second of the arbitration phase; 0 when not told
    std::uint32_t dataBitRate = 0; // of the data phase; 0 when not told, or classic only
    std::uint16_t irq = 0;         // 0 when not told
    ChannelState state;            // unknown when not told: virtual interfaces, interfaces that are down
};

// All of them in the kernel's order; empty where there are none or the kernel cannot be asked.
std::vector<CanInterface> canInterfaces();
// The interface of that name; false, with nothing changed, when there is none.
bool findCanInterface(const std::string &name, CanInterface *found);

// "can0 gs_usb 500k/2M": name, driver, bit rates, as far as known.
std::string description(const CanInterface &interface);
// "500k", "1M", "83333": bits per second.
std::string bitRateText(std::uint32_t bitsPerSecond);
