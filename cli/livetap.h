// Live frames for a command that only listens.
#pragma once

#include "cli/liveadapter.h"
#include "traces/rawframe.h"

#include <functional>
#include <optional>

struct LiveListener {
    // The adapter is open and frames are about to come; startUtc: what their time 0 is.
    std::function<bool(std::int64_t startUtc)> begin;
    // false: enough. Called with no frames too, every few milliseconds.
    std::function<bool(RawFrame *frames, int count)> take;
    // So many frames came and found no room.
    std::function<void(std::uint64_t count)> lost;
};

// Listens until the listener has enough, the seconds are over, the adapter goes or the user interrupts. In the calling
// thread. false, and told, when the adapter did not come up, went away, or frames were lost.
bool listenLive(const AdapterSetup &setup, std::optional<double> seconds, const LiveListener &listener);
