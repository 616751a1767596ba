// What the simulated vehicle does: a drive of one minute, over and over. The same at every run.
#pragma once

#include <cstdint>

constexpr int kWheelCount = 4;  // front left, front right, rear left, rear right
constexpr int kCellCount = 14;  // of the battery
constexpr int kObjectCount = 7; // that the radar sees

enum Door { DoorDriver, DoorPassenger, DoorRearLeft, DoorRearRight, DoorBoot, DoorCount };

struct RadarObject {
    double distance; // m
    double speed;    // m/s, towards the vehicle below 0
    double angle;    // degrees, to the left above 0
};

struct VehicleState {
    double speed;         // km/h
    double acceleration;  // m/s²
    int gear;             // 0 neutral, 1..5
    double revolutions;   // of the engine, 1/min
    double throttle;      // %
    double torque;        // Nm
    double brakePressure; // bar
    bool braking;
    double steeringAngle;                // degrees, to the left above 0
    double steeringRate;                 // degrees/s
    double yawRate;                      // degrees/s
    double lateral;                      // m/s²
    double wheelSpeed[kWheelCount];      // km/h
    double tyrePressure[kWheelCount];    // bar
    double tyreTemperature[kWheelCount]; // °C
    bool door[DoorCount];                // open
    bool locked;
    bool lowBeam;
    bool indicatorLeft; // lit at this moment
    bool indicatorRight;
    double coolant;                 // °C
    double oil;                     // °C
    double fuel;                    // %
    double inside;                  // °C
    double cellVoltage[kCellCount]; // V
    double batteryCurrent;          // A
    double latitude;                // degrees
    double longitude;               // degrees
    double altitude;                // m
    double heading;                 // degrees
    double energy;                  // kWh
    RadarObject object[kObjectCount];
};

// `seconds` since the vehicle began to play.
VehicleState vehicleAt(double seconds);
