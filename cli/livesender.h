// Sends frames through the adapter, and records meanwhile what its channels carry when asked to.
#pragma once

#include "cli/liveadapter.h"
#include "cli/recordtarget.h"
#include "frames/finetimers.h"
#include "frames/framesender.h"
#include "frames/livesource.h"

#include <chrono>
#include <optional>

class Arguments;

class LiveSender
{
public:
    using Clock = std::chrono::steady_clock;

    LiveSender();
    ~LiveSender();
    LiveSender(const LiveSender &) = delete;
    LiveSender &operator=(const LiveSender &) = delete;

    // --record and --linger.
    static void addOptions(Arguments &arguments);
    void readOptions(Arguments &arguments);

    // false, and told, when the adapter or the recording does not come up.
    bool open(const AdapterSetup &setup);
    // false as soon as the user interrupts or the adapter goes.
    bool waitUntil(Clock::time_point due);
    // channel: 0-based. Waits as long as the driver does; what is not taken is counted.
    void send(unsigned channel, const RawFrame &frame);
    // A frame for which there is no channel.
    void countRefused() { ++refused_; }
    // What another sender has sent through this adapter.
    void addCounts(std::uint64_t sent, std::uint64_t refused)
    {
        sent_ += sent;
        refused_ += refused;
    }
    // Whether sending makes sense any more: not after an interrupt, nor without the adapter.
    bool goesOn();
    // Lets what was sent last reach the bus, closes and tells the counts; false when anything was lost or refused.
    bool close();

    std::uint64_t sent() const { return sent_; }

private:
    class Recording;

    LiveAdapter adapter_;
    FineTimers fineTimers_;
    std::unique_ptr<Recording> recording_;
    std::optional<RecorderSettings> recordSettings_;
    std::chrono::milliseconds linger_{0};
    Clock::time_point nextPoll_{};
    std::uint64_t sent_ = 0;
    std::uint64_t refused_ = 0;
    std::uint64_t unsendable_ = 0;
};
