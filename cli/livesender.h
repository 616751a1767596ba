// Sends frames through the adapter, and records meanwhile what its channels carry when asked to.
#pragma once

#include "cli/liveadapter.h"
#include "cli/recordtarget.h"
#include "frames/finetimers.h"
#include "frames/livesource.h"
#include "frames/replay.h"

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
    // read: files that the command reads, which --record must not overwrite.
    void readOptions(Arguments &arguments, const QStringList &read);

    // false, and told, when the adapter or the recording does not come up.
    bool open(const AdapterSetup &setup);
    // false as soon as the user interrupts or the adapter goes.
    bool waitUntil(Clock::time_point due);
    // channel: 0-based. Waits as long as the driver does; what is not taken is counted.
    void send(unsigned channel, const RawFrame &frame);
    // The same for a frame that was sent another way.
    void count(SendResult result) { counts_.count(result); }
    // What another sender has sent through this adapter.
    void addCounts(std::uint64_t sent, std::uint64_t refused)
    {
        counts_.sent += sent;
        counts_.refused += refused;
    }
    // Whether sending makes sense any more: not after an interrupt, nor without the adapter.
    bool goesOn();
    // Lets what was sent last reach the bus, closes and tells the counts; false when anything was lost or refused.
    bool close();

    std::uint64_t sent() const { return counts_.sent; }

private:
    class Recording;

    LiveAdapter adapter_;
    FineTimers fineTimers_;
    std::unique_ptr<Recording> recording_;
    std::optional<RecorderSettings> recordSettings_;
    std::chrono::milliseconds linger_{0};
    Clock::time_point nextPoll_{};
    SendCounts counts_;
};
