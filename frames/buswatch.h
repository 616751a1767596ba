// What a channel tells beside its frames, asked now and then by its receive loop: error frames go to the tap, lines to
// the operation log, the controller's state to where others find it.
#pragma once

#include "frames/buseventlog.h"
#include "traces/rawframe.h"

#include <QElapsedTimer>

#include <vector>

class BusWatch
{
public:
    // Passes of the loop, a millisecond and more each, between two questions: a kernel interface is asked by a system
    // call.
    static constexpr int kPassesBetween = 100;

    // channel: from 0. The sink is called in the loop's thread.
    BusWatch(unsigned channel, LogSink sink);

    // The loop begins: what a past one left is forgotten.
    void begin();
    // A pass of the loop.
    void pass();
    // The loop ends: asks once more, tells what is left. The state is unknown from now on.
    void end();

    // Error frames that the driver had no room for since begin(); for others than the loop's thread when it has ended.
    std::uint64_t lost() const { return lost_; }

private:
    void ask();

    const unsigned channel_;
    BusEventLog log_;
    QElapsedTimer clock_;
    std::vector<RawFrame> frames_; // of ask()
    int passes_ = 0;
    std::uint64_t lost_ = 0;
};

// The controller as its channel's receive loop last heard of it; nothing known while none runs. Any thread; never asks
// the driver.
BusReport lastBusReport(unsigned channel);

// The error frame of an event; channel is 0-based.
RawFrame toRawFrame(const BusEvent &event, unsigned channel);
