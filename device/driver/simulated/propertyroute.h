// The property interface of the simulated adapter: which paths there are, and the way from the table of plain function
// pointers to the driver that handed it out.
#pragma once

#include "device/driver/driver.h"
#include "device/driver/simulated/acceptancefilter.h"
#include "device/driver/simulated/bittiming.h"

class SimulatedDriver;

struct PropertyWrite {
    unsigned channel = 0;
    std::string name; // without the channel and the slash
    std::string value;
};

// false for a path that is not "0/NAME" or "1/NAME", or a missing text.
bool parsePropertyWrite(const char *path, const char *value, PropertyWrite *write);

// The paths: filter_clear, filter_mode, filter_start, filter_end, filter_ack (AcceptanceFilter), baud_rate_custom
// (parseCustomRates), initenal_resistance (a number; the virtual bus needs no termination). Answers false, with nothing
// changed, for any other path and for values that cannot be read.
bool applyProperty(const PropertyWrite &write, AcceptanceFilter *filter, BusSettings *settings);

// The table; its calls go to `driver` from now on.
const PropertyInterface *beginPropertyRoute(SimulatedDriver *driver);
// No call goes to `driver` any more, and none is under way.
void endPropertyRoute(const SimulatedDriver *driver);
