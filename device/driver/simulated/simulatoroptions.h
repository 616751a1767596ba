// How the simulated adapter and its bus are to be.
#pragma once

#include "device/driver/busframe.h"

#include <string>
#include <vector>

struct SimulatorOptions {
    enum class Traffic {
        BuiltIn, // the built-in vehicle
        Trace,   // the recorded log `tracePath`, in a loop
        Off,     // no vehicle: only the other channel acknowledges
        Flood,   // `flood` in turn, whenever the bus is free
    };

    Traffic traffic = Traffic::BuiltIn;
    std::string tracePath;
    std::vector<BusFrame> flood;            // empty: the shortest FD frame with bit-rate switch
    std::uint16_t firmwareVersion = 0x0217; // version word
    // false: frames take no time; the pace is set by the receivers then, and nothing is lost.
    bool busTime = true;
    std::size_t transmitCapacity = 128;  // frames that wait for the bus, per channel
    std::size_t receiveCapacity = 65536; // frames that wait to be fetched, per channel and kind
    std::uint32_t errorOneIn = 0;        // one frame in so many is destroyed on the wire, at random; 0: none
    unsigned transmitPatienceMs = 1000;  // a transmission waits so long for room, at most
    unsigned vehicleDelayMs = 100;       // from the first channel's start to the vehicle's first frame

    // OSTREL_SIM_TRACE: "off", "flood" or a candump log; not set or empty: the built-in vehicle.
    // OSTREL_SIM_FIRMWARE: version word, hexadecimal with or without "0x"; what is no such word is not looked at.
    // OSTREL_SIM_ERRORS: a number, one frame in so many is destroyed; what is no number is not looked at.
    static SimulatorOptions fromEnvironment();
};
