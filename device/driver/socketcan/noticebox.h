// What a driver's threads have to tell until somebody asks.
#pragma once

#include "device/driver/driver.h"

#include <mutex>
#include <utility>

class NoticeBox
{
public:
    void put(DriverNotice notice)
    {
        const std::lock_guard<std::mutex> lock(guard_);
        if (notices_.size() < kMost)
            notices_.push_back(std::move(notice));
    }
    void put(DriverNotice::Kind kind, std::string detail) { put(DriverNotice{kind, std::move(detail)}); }
    std::vector<DriverNotice> take()
    {
        const std::lock_guard<std::mutex> lock(guard_);
        return std::exchange(notices_, {});
    }

private:
    static constexpr std::size_t kMost = 64; // nobody asks for more than a flapping interface can tell

    std::mutex guard_;
    std::vector<DriverNotice> notices_;
};
