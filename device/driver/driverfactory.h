// Chooses the drivers this machine offers.
#pragma once

#include "device/driver/driver.h"

#include <memory>
#include <string>

// choice: empty for the platform's own list (Windows: the adapter's library; Linux: the kernel's CAN interfaces, then
// the simulated adapter), else one of "kestrix", "simulated", "socketcan", "socketcan:FIRST,SECOND" (the value of
// OSTREL_DRIVER). A choice that is unknown or not to be had here gives the platform's own list.
std::unique_ptr<Driver> makeDriver(const std::string &choice);
