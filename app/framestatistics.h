// The four counters of the statistics group: frames per channel and direction, as totals and as frames per second.
// The total lives in its label: an update reads the label, adds and writes the sum back. GUI thread only.
#pragma once

#include <QtGlobal>

#include <array>

class QLabel;

class FrameStatistics
{
public:
    enum Counter { Channel1Received, Channel2Received, Channel1Transmitted, Channel2Transmitted, CounterCount };
    using Counts = std::array<quint32, CounterCount>;

    // channel is 0-based, direction a FrameDirection.
    static Counter counterOf(unsigned channel, unsigned direction);

    // The labels stay their owner's and outlive this object.
    void attach(Counter counter, QLabel *total, QLabel *rate);
    void add(Counter counter, quint32 frames);
    void add(const Counts &frames);
    // Writes the frames since the last call as "%1/s;" and starts the next second.
    void showRates();
    // The totals start at 0 again; the rates are left alone.
    void resetTotals();

private:
    struct Line {
        QLabel *total = nullptr;
        QLabel *rate = nullptr;
        quint32 thisSecond = 0;
    };
    std::array<Line, CounterCount> lines_;
};
