#include "device/driver/simulated/vehiclesignals.h"

#include "device/driver/simulated/vehiclestate.h"
#include "device/driver/timeunits.h"

#include <cmath>
#include <cstring>

namespace
{
constexpr unsigned kByteBits = 8;
constexpr std::uint8_t kLeastChecked = 4; // data bytes from which on the last one is a checksum

void putBits(BusFrame *frame, unsigned bit, unsigned bits, std::uint64_t value)
{
    for (unsigned i = 0; i < bits; ++i, ++bit) {
        std::uint8_t &byte = frame->data[bit / kByteBits];
        const auto mask = static_cast<std::uint8_t>(1u << (bit % kByteBits));
        byte = static_cast<std::uint8_t>((value >> i) & 1 ? byte | mask : byte & ~mask);
    }
}

// (physical - offset) / factor, least significant bit first.
void put(BusFrame *frame, unsigned bit, unsigned bits, double physical, double factor = 1, double offset = 0)
{
    const double raw = std::round((physical - offset) / factor);
    putBits(frame, bit, bits, static_cast<std::uint64_t>(static_cast<std::int64_t>(raw)));
}

// Most significant bit first, from the top of a byte on.
void putMotorola(BusFrame *frame, unsigned byte, unsigned bits, double physical, double factor)
{
    const auto raw = static_cast<std::uint64_t>(std::llround(physical / factor));
    for (unsigned done = 0; done < bits; done += kByteBits, ++byte) {
        const unsigned part = bits - done < kByteBits ? bits - done : kByteBits;
        putBits(frame, byte * kByteBits + kByteBits - part, part, raw >> (bits - done - part));
    }
}

template <typename Value> void putFloating(BusFrame *frame, unsigned byte, Value value)
{
    std::memcpy(frame->data + byte, &value, sizeof value); // little-endian, as every machine that the program runs on
}

void putDynamics(BusFrame *frame, const VehicleState &state)
{
    switch (frame->identifier()) {
    case 0x0C4: // Engine
        put(frame, 8, 16, state.revolutions, 0.25);
        put(frame, 24, 8, state.throttle, 0.4);
        put(frame, 32, 12, state.torque, 0.5);
        put(frame, 44, 1, 1);
        break;
    case 0x0D1: // Speed
        putMotorola(frame, 1, 16, state.speed, 0.01);
        putMotorola(frame, 3, 12, state.acceleration, 0.01);
        put(frame, 32, 1, state.braking);
        break;
    case 0x128: // Steering
        put(frame, 8, 16, state.steeringAngle, 0.1);
        put(frame, 24, 16, state.steeringRate, 0.5);
        break;
    case 0x1A6: // Brakes
        put(frame, 8, 12, state.brakePressure, 0.1);
        put(frame, 20, 1, state.braking);
        break;
    case 0x284: // WheelSpeeds
        for (unsigned i = 0; i < kWheelCount; ++i)
            put(frame, 8 + 16 * i, 16, state.wheelSpeed[i], 0.01);
        break;
    case 0x2A8: // Motion
        putFloating(frame, 1, static_cast<float>(state.yawRate));
        putFloating(frame, 5, static_cast<float>(state.lateral));
        break;
    case 0x316: // Transmission
        put(frame, 8, 4, state.gear);
        put(frame, 12, 3, state.gear == 0 ? 0 : 3);
        put(frame, 16, 8, state.oil, 1, -40);
        break;
    default:
        break;
    }
}

void putBody(BusFrame *frame, const VehicleState &state, std::uint32_t count)
{
    switch (frame->identifier()) {
    case 0x3C0: // Lights
        put(frame, 8, 1, state.lowBeam);
        put(frame, 9, 1, state.indicatorLeft);
        put(frame, 10, 1, state.indicatorRight);
        put(frame, 11, 1, state.braking);
        put(frame, 12, 4, 0);
        break;
    case 0x43A: { // Tyres, one wheel after the other
        const std::uint32_t wheel = count % kWheelCount;
        put(frame, 8, 2, wheel);
        put(frame, 16, 8, state.tyrePressure[wheel], 0.02);
        put(frame, 24, 8, state.tyreTemperature[wheel], 1, -40);
        break;
    }
    case 0x545: // Climate
        put(frame, 8, 8, state.inside, 0.5, -40);
        put(frame, 16, 8, 21, 0.5, -40);
        put(frame, 24, 4, 3 + std::round(std::fabs(state.inside - 21)));
        break;
    case 0x5A2: // Doors
        for (unsigned i = 0; i < DoorCount; ++i)
            put(frame, 8 + i, 1, state.door[i]);
        put(frame, 13, 3, 0);
        put(frame, 16, 2, state.locked);
        break;
    default:
        break;
    }
}

void putSensors(BusFrame *frame, const VehicleState &state, double seconds)
{
    switch (frame->identifier()) {
    case 0x2B0: // BatteryCells
        for (unsigned i = 0; i < kCellCount; ++i)
            put(frame, 8 + 16 * i, 16, state.cellVoltage[i], 0.0001);
        put(frame, 232, 16, state.batteryCurrent, 0.1);
        break;
    case 0x6B4: // Radar
        for (unsigned i = 0; i < kObjectCount; ++i) {
            put(frame, 8 + 56 * i, 16, state.object[i].distance, 0.01);
            put(frame, 24 + 56 * i, 16, state.object[i].speed, 0.01);
            put(frame, 40 + 56 * i, 16, state.object[i].angle, 0.01);
            put(frame, 56 + 56 * i, 8, i % 3);
        }
        put(frame, 408, 64, seconds * kNanosecondsPerSecond);
        break;
    case 0x14F21C33: // Position
        put(frame, 8, 32, state.latitude, 1e-7);
        put(frame, 40, 32, state.longitude, 1e-7);
        put(frame, 72, 16, state.altitude, 0.1, -500);
        put(frame, 88, 16, state.heading, 0.01);
        put(frame, 104, 5, 11);
        break;
    default:
        break;
    }
}

void putDrive(BusFrame *frame, const VehicleState &state, double seconds, std::uint32_t count)
{
    constexpr std::uint32_t kPages = 4; // page 0, and page 1 with three modules
    constexpr std::uint32_t kModules = 3;
    switch (frame->identifier()) {
    case 0x0CF03D10: // Motor
        put(frame, 8, 16, state.revolutions * 1.5, 0.5);
        put(frame, 24, 16, state.torque * 0.6, 0.1);
        break;
    case 0x10A4E021: // Inverter
        putFloating(frame, 1, state.energy);
        for (unsigned i = 0; i < 3; ++i)
            put(frame, 72 + 16 * i, 16, 50 * std::sin(seconds + 2 * i), 0.1);
        break;
    case 0x18FA4210: // Temperatures
        put(frame, 8, 8, state.coolant, 1, -40);
        put(frame, 16, 16, state.oil, 0.03125, -273);
        put(frame, 32, 8, state.fuel, 0.4);
        break;
    case 0x1D30FF21: // Service
        put(frame, 8, 4, count % kPages == 0 ? 0 : 1);
        if (count % kPages == 0) {
            put(frame, 32, 32, state.energy, 0.05);
            break;
        }
        put(frame, 16, 2, (count % kPages - 1) % kModules);
        put(frame, 24, 8, 40 + 5 * (count % kPages) + state.throttle / 10, 1, -40);
        put(frame, 32, 16, 12 + 0.1 * (count % kPages), 0.01);
        break;
    default:
        break;
    }
}

} // namespace

void fillVehicleData(BusFrame *frame, double seconds, std::uint32_t count)
{
    if (frame->remote() || frame->length == 0)
        return;
    for (std::uint8_t i = 0; i < frame->length; ++i)
        frame->data[i] = static_cast<std::uint8_t>(frame->identifier() + i); // where no signal lies
    frame->data[0] = static_cast<std::uint8_t>(count);
    const VehicleState state = vehicleAt(seconds);
    if (frame->extended()) {
        putDrive(frame, state, seconds, count);
    } else {
        putDynamics(frame, state);
        putBody(frame, state, count);
    }
    putSensors(frame, state, seconds);
    if (frame->length < kLeastChecked)
        return;
    std::uint8_t &checksum = frame->data[frame->length - 1];
    checksum = 0;
    for (std::uint8_t i = 0; i + 1 < frame->length; ++i)
        checksum ^= frame->data[i];
}
