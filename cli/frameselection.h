// Which frames a command works on: the options that choose them, and the choice.
#pragma once

#include "traces/framefilter.h"

class Arguments;

class FrameSelection
{
public:
    static void addOptions(Arguments &arguments);
    // signalSource: null: the filter's condition "signal" is an error.
    void read(Arguments &arguments, const std::shared_ptr<const SignalSource> &signalSource);

    bool isEverything() const { return filters_.empty(); }
    bool matches(const RawFrame &frame) const;
    // The same whatever the frame's time is.
    bool matchesAnyTime(const RawFrame &frame) const;
    // Moves the frames that match to the front; answers how many.
    int keep(RawFrame *frames, int count) const;

private:
    void add(Arguments &arguments, const char *option, const QString &condition, int prefix,
             const std::shared_ptr<const SignalSource> &signalSource = nullptr);

    std::vector<FrameFilter> filters_; // all of them must match; that of the times is the first one
    bool timed_ = false;               // there is one
};
