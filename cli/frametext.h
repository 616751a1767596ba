// Frames as lines of text: as candump shows them, or as JSON objects.
#pragma once

#include "traces/rawframe.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

class Databases;
struct KnownMessage;
struct SignalValue;

enum class ShownTime {
    Relative, // since the recording's start
    Absolute, // since 1970, where the recording has a date
    Delta,    // since the frame before
};

class FrameText
{
public:
    // databases: outlive this; none: null.
    FrameText(ShownTime time, const Databases *databases) : time_(time), databases_(databases) {}

    // The start of the recording whose frames come next, nanoseconds since 1970.
    void setStart(std::optional<std::int64_t> start);

    // " (12.345678)  can0  RX B E  123  [8]  00 11 22", the database's names and values behind it.
    void appendLine(std::string *out, const RawFrame &frame);
    // One object in one line; its keys: see the manual page.
    void appendJson(std::string *out, const RawFrame &frame);

private:
    std::int64_t shownTime(const RawFrame &frame);
    // The frame's message, its values in values_; null when there is none.
    const KnownMessage *decode(const RawFrame &frame);
    void appendSignals(std::string *out, const KnownMessage &message) const;
    void appendJsonSignals(std::string *out, const KnownMessage &message) const;

    const ShownTime time_;
    const Databases *databases_;
    std::int64_t start_ = 0;
    std::optional<std::int64_t> last_;
    std::vector<SignalValue> values_;
};
