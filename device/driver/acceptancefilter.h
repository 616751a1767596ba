// The acceptance filter of one channel, programmed range by range through property values.
#pragma once

#include "device/driver/busframe.h"

#include <string>
#include <vector>

class AcceptanceFilter
{
public:
    // Programs with the values as they come through the property interface; false = refused, nothing changed.
    // Nothing acts before acknowledge(). A number is decimal, or hexadecimal after "0x".
    bool clear(const std::string &value);       // forgets the ranges programmed so far
    bool setMode(const std::string &value);     // begins a range: 0 standard, 1 extended identifiers
    bool setStart(const std::string &value);    // first identifier of the range begun
    bool setEnd(const std::string &value);      // last identifier, which completes the range
    bool acknowledge(const std::string &value); // puts the ranges to work; no ranges: everything passes

    // What a channel's initialisation does: everything passes.
    void reset() { *this = AcceptanceFilter(); }

    bool passes(const BusFrame &frame) const;

private:
    struct Range {
        bool extended;
        std::uint32_t first;
        std::uint32_t last;
    };
    enum class Step { Idle, ModeGiven, StartGiven };

    Step step_ = Step::Idle;
    Range begun_{};
    std::vector<Range> programmed_;
    std::vector<Range> active_;
};
