// The property interface of a driver of our own: which paths there are, and the way from the table of plain function
// pointers to the driver that handed it out.
#pragma once

#include "device/driver/acceptancefilter.h"
#include "device/driver/driver.h"

// The names are the library's own, spelling included.
constexpr char kCustomRatesProperty[] = "baud_rate_custom";
constexpr char kTerminalResistanceProperty[] = "initenal_resistance";

struct PropertyWrite {
    unsigned channel = 0;
    std::string name; // without the channel and the slash
    std::string value;
};

// false for a path that is not "0/NAME" or "1/NAME", or a missing text.
bool parsePropertyWrite(const char *path, const char *value, PropertyWrite *write);

// filter_clear, filter_mode, filter_start, filter_end and filter_ack, as AcceptanceFilter takes them. Answers false,
// with nothing changed, for any other name and for values that cannot be read.
bool applyFilterProperty(const PropertyWrite &write, AcceptanceFilter *filter);

// A driver that hands out the table.
class PropertyTarget
{
public:
    virtual std::uint32_t setProperty(const char *path, const char *value) = 0; // what SetValue does

protected:
    ~PropertyTarget() = default;
};

// The table; its calls go to `target` from now on.
const PropertyInterface *beginPropertyRoute(PropertyTarget *target);
// No call goes to `target` any more, and none is under way.
void endPropertyRoute(const PropertyTarget *target);
