// The adapter of a command: opened, drained by the program's receive loop.
#pragma once

#include "cli/adapteroptions.h"
#include "frames/recvthread.h"

#include <QElapsedTimer>

#include <memory>

// Chooses the drivers as the window does; before the first call of the device layer.
void chooseDriver();

class LiveAdapter
{
public:
    LiveAdapter() = default;
    ~LiveAdapter() { close(); }
    LiveAdapter(const LiveAdapter &) = delete;
    LiveAdapter &operator=(const LiveAdapter &) = delete;

    // Opens the device and its channels and begins to receive. false, and told, when it does not come up.
    bool open(const AdapterSetup &setup);
    // To be called every few milliseconds, by the thread that opened: tells what the driver has to say. false once the
    // adapter has gone.
    bool poll();
    // Stops receiving and closes; what was received is in the tap then.
    void close();

    // Frames that the driver or the channel's queue lost.
    std::uint64_t lost() const { return lost_; }
    bool gone() const { return gone_; }
    // The moment that is time 0 of the frames, nanoseconds since 1970.
    std::int64_t startUtc() const { return startUtc_; }

private:
    bool openChannels(const AdapterSetup &setup);
    void endReceiver(unsigned channel);
    void tellNotices();

    std::unique_ptr<recvThread> receivers_[kChannelCount];
    QElapsedTimer sinceLook_; // at whether the adapter still answers
    std::uint64_t lost_ = 0;
    std::int64_t startUtc_ = 0;
    bool open_ = false;
    bool gone_ = false;
};
