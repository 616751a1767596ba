#include "device/driver/simulated/vehiclestate.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace
{

constexpr double kPi = 3.14159265358979323846;
constexpr double kDrive = 60; // seconds

// The speed passes through these points, smoothly.
struct SpeedPoint {
    double second;
    double speed; // km/h
};
constexpr SpeedPoint kSpeed[] = {{0, 0}, {8, 0}, {14, 50}, {20, 50}, {30, 120}, {40, 120}, {52, 0}, {kDrive, 0}};

// Up to which speed a gear is used, and its revolutions per km/h.
struct Gear {
    double until;
    double ratio;
};
constexpr Gear kGears[] = {{20, 120}, {40, 70}, {65, 48}, {90, 36}, {1000, 28}};
constexpr double kIdle = 800;       // 1/min
constexpr double kStandstill = 0.1; // km/h
constexpr double kKmhPerMs = 3.6;
constexpr double kStep = 0.05;     // seconds, of differences
constexpr double kLocksAbove = 10; // km/h

struct Opening {
    Door door;
    double from;
    double until;
};
constexpr Opening kOpenings[] = {
    {DoorDriver, 1.5, 6}, {DoorPassenger, 3, 5.5}, {DoorRearLeft, 53, 56}, {DoorRearRight, 54, 57}, {DoorBoot, 55, 59}};

double phaseOf(double seconds)
{
    return std::fmod(std::fmod(seconds, kDrive) + kDrive, kDrive);
}

double speedAt(double seconds)
{
    const double phase = phaseOf(seconds);
    const auto *to = std::find_if(std::begin(kSpeed) + 1, std::end(kSpeed) - 1,
                                  [&](const SpeedPoint &point) { return phase < point.second; });
    const SpeedPoint &from = to[-1];
    const double part = (phase - from.second) / (to->second - from.second);
    return from.speed + (to->speed - from.speed) * part * part * (3 - 2 * part);
}

double wave(double seconds, double period, double shift = 0)
{
    return std::sin(2 * kPi * (seconds / period + shift));
}

double steeringAt(double seconds)
{
    return (150 - speedAt(seconds)) * wave(seconds, 12);
}

void drive(double seconds, VehicleState *state)
{
    state->speed = speedAt(seconds);
    state->acceleration = (speedAt(seconds + kStep) - speedAt(seconds - kStep)) / (2 * kStep) / kKmhPerMs;
    const auto *gear =
        std::find_if(std::begin(kGears), std::end(kGears), [&](const Gear &each) { return state->speed < each.until; });
    const bool moving = state->speed > kStandstill;
    state->gear = moving ? static_cast<int>(gear - std::begin(kGears)) + 1 : 0;
    state->revolutions = std::max(kIdle + 15 * wave(seconds, 3), moving ? state->speed * gear->ratio : 0);
    state->braking = state->acceleration < -0.2 || !moving;
    state->brakePressure = state->braking ? std::max(8.0, -state->acceleration * 15) : 0;
    state->throttle = state->braking ? 0 : std::clamp(state->acceleration * 22 + state->speed * 0.15, 0.0, 100.0);
    state->torque = state->braking ? -20 : state->throttle * 2.4;
    state->steeringAngle = steeringAt(seconds);
    state->steeringRate = (steeringAt(seconds + kStep) - steeringAt(seconds - kStep)) / (2 * kStep);
    state->yawRate = state->speed / kKmhPerMs * state->steeringAngle / 60;
    state->lateral = state->yawRate * kPi / 180 * state->speed / kKmhPerMs;
    for (int i = 0; i < kWheelCount; ++i) {
        const double side = i % 2 == 0 ? -1 : 1;
        state->wheelSpeed[i] = std::max(0.0, state->speed * (1 + side * state->steeringAngle / 10000));
        state->tyrePressure[i] = 2.3 + 0.02 * i + 0.04 * wave(seconds, kDrive, i / 8.0);
        state->tyreTemperature[i] = 25 + i + state->speed / 8;
    }
}

void body(double seconds, VehicleState *state)
{
    const double phase = phaseOf(seconds);
    for (const Opening &opening : kOpenings)
        state->door[opening.door] = phase >= opening.from && phase < opening.until;
    state->locked = state->speed > kLocksAbove;
    state->lowBeam = phase >= 7 && phase < 53;
    const bool blink = std::fmod(phase, 0.8) < 0.4;
    state->indicatorLeft = blink && phase >= 7 && phase < 11;
    state->indicatorRight = blink && phase >= 44 && phase < 52;
    state->coolant = 90 - 60 * std::exp(-seconds / 60);
    state->oil = 95 - 70 * std::exp(-seconds / 90);
    state->fuel = 75 - std::fmod(seconds / 60, 70);
    state->inside = 21 + 2 * wave(seconds, 120);
    for (int i = 0; i < kCellCount; ++i)
        state->cellVoltage[i] = 3.72 - state->throttle / 1000 + 0.01 * wave(seconds, 9, i / double(kCellCount));
    state->batteryCurrent = state->torque * state->revolutions / 8000;
    state->latitude = 48.1 + 0.01 * wave(seconds, 600);
    state->longitude = 11.5 + 0.01 * wave(seconds, 600, 0.25);
    state->altitude = 520 + 20 * wave(seconds, 300);
    state->heading = std::fmod(360 - seconds * 0.6 + 360 * std::ceil(seconds * 0.6 / 360), 360);
    state->energy = 1000 + seconds / 3600;
    for (int i = 0; i < kObjectCount; ++i) {
        state->object[i].distance = 60 + 10 * i + 25 * wave(seconds, 10 + i, i / 7.0);
        state->object[i].speed = 8 * wave(seconds, 10 + i, i / 7.0 + 0.25);
        state->object[i].angle = 30 * wave(seconds, 20 + i);
    }
}

} // namespace

VehicleState vehicleAt(double seconds)
{
    VehicleState state{};
    drive(seconds, &state);
    body(seconds, &state);
    return state;
}
