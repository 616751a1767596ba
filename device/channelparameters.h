// The eight parameters of a channel: where they are stored, what they are when absent, how they reach the adapter.
#pragma once

#include <QString>

struct ChannelParameters {
    unsigned workStatus = 0;    // index of the work mode: 0 normal, 1 listen only
    unsigned canFdStandard = 0; // index of the standard: 0 ISO, 1 Bosch
    unsigned arbitration = 0;   // index into the arbitration rates
    unsigned data = 0;          // index into the data rates
    bool customBaudRate = false;
    QString customBaudRateText;
    bool filterOn = false;
    QString filterRows; // "kind-start-end|..."
};

// Reads channel 0 or 1 from the settings store; text that is no number reads as 0.
ChannelParameters loadChannelParameters(unsigned channel);
// Stores all eight and then writes the settings file once.
void storeChannelParameters(unsigned channel, const ChannelParameters &parameters);
// The filter's two alone; the file is written as well.
void storeChannelFilter(unsigned channel, bool filterOn, const QString &filterRows);

// The steps in which parameters reach the adapter.
enum class ChannelStep { None, CanFdStandard, BaudRate, CustomBaudRate, Init, Filter, Start };

// Both answer the step that failed, or None; what was already applied stays. No messages; GUI thread only.
// Configures a closed channel and starts it: standard, rates, initialisation, filters (when there are rows), start.
ChannelStep openChannel(unsigned channel, const ChannelParameters &parameters);
// Writes the parameters to a running channel: standard, rates, filters.
ChannelStep reconfigureChannel(unsigned channel, const ChannelParameters &parameters);
