// The drivers that one platform has; each platform has a source file of its own.
#pragma once

#include "device/driver/driver.h"

#include <memory>
#include <string>
#include <vector>

struct DriverKind {
    const char *name;    // as OSTREL_DRIVER gives it
    bool offeredUnasked; // part of the platform's own list
    // argument: what follows "name:" in the choice, else empty. Null when there is no such driver here.
    std::unique_ptr<Driver> (*make)(const std::string &argument);
};

// In the order in which their devices are listed.
std::vector<DriverKind> platformDrivers();
// The simulated adapter, which every platform has.
DriverKind simulatedKind(bool offeredUnasked);
