// The one record of the open adapter. Without a lock: handles are atomic words, the rest is the GUI thread's.
#pragma once

#include "device/driver/driver.h"

#include <QString>

#include <atomic>

struct DeviceState {
    std::atomic<Driver::Handle> device{0};
    std::atomic<Driver::Handle> channel[kChannelCount] = {};
    const PropertyInterface *properties = nullptr;
    ChannelInitRecord initRecord{}; // shared by both channels, filled just before each InitChannel
    QString infoText;

    void reset()
    {
        properties = nullptr;
        for (auto &handle : channel)
            handle = 0;
        device = 0;
        infoText.clear();
        initRecord = ChannelInitRecord{};
    }
};
