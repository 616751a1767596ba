// Which adapter a command uses, and how its channels are set up.
#pragma once

#include "device/channelparameters.h"
#include "device/driver/driver.h"
#include "statistics/channelstatistics.h"

class Arguments;

struct AdapterSetup {
    QString device; // number or name; empty: the first one
    bool used[kChannelCount] = {true, true};
    ChannelParameters channel[kChannelCount];
};

void addAdapterOptions(Arguments &arguments);
// --rate alone, for commands that work on files as well.
void addRateOptions(Arguments &arguments);
// What the options say; what they leave out is as the window stores it.
AdapterSetup readAdapterSetup(Arguments &arguments);
// Rates that the options give (0-based channel); all zero when they do not.
BusRates givenRates(Arguments &arguments, unsigned channel);
// Rates of a channel that is set up so; all zero when they are not known.
BusRates ratesOf(const ChannelParameters &parameters);
