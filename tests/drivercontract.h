// What every driver has to do, whatever moves its frames: a suite that a test class derives from, once per driver.
#pragma once

#include "device/driver/driver.h"

#include <QObject>

#include <memory>
#include <vector>

class DriverContract : public QObject
{
    Q_OBJECT

protected:
    // A new driver whose device 0 has its two channels on one bus where nobody else speaks.
    virtual std::unique_ptr<Driver> createDriver() = 0;
    // Makes the first channel, which runs with the second, meet an error.
    virtual void disturbFirstChannel() = 0;

    Driver::Handle openDevice(); // device 0, kept in device_
    // Default rates; kept in channel_. Fails the test when a step does.
    void initChannel(unsigned channel, std::uint8_t workMode = 0);
    void startChannel(unsigned channel);
    void openBoth();
    std::uint32_t setProperty(const char *path, const char *value);

    // Answer how many were taken.
    std::uint32_t transmit(unsigned channel, const std::vector<CanTransmitRecord> &records)
    {
        return driver_->TransmitCan(channel_[channel], records.data(), std::uint32_t(records.size()));
    }
    std::uint32_t transmit(unsigned channel, const std::vector<CanFdTransmitRecord> &records)
    {
        return driver_->TransmitCanFd(channel_[channel], records.data(), std::uint32_t(records.size()));
    }
    // Frames of a channel, in the order they come: waits for `count`, some seconds at most. None at all when the driver
    // fills more than it was given room for.
    std::vector<CanReceiveRecord> receiveCan(unsigned channel, std::size_t count);
    std::vector<CanFdReceiveRecord> receiveFd(unsigned channel, std::size_t count);
    // Whether a classic frame arrives, with no other one, at the other channel.
    bool reachesTheOther(unsigned sender, std::uint32_t id = 0x123);
    bool hasNothing(unsigned channel); // to be fetched

    static CanTransmitRecord canRecord(std::uint32_t id, std::uint8_t length = 8,
                                       TransmitType type = TransmitType::Normal);
    static CanFdTransmitRecord fdRecord(std::uint32_t id, std::uint8_t length = 8, std::uint8_t flags = 0,
                                        TransmitType type = TransmitType::Normal);

    std::unique_ptr<Driver> driver_;
    Driver::Handle device_ = 0;
    Driver::Handle channel_[kChannelCount] = {};

private slots:
    void init();
    void cleanup();

    void openingAndClosing();
    void staleAndForeignHandlesAreRefused();
    void aChannelWorksFromStartToReset();
    void framesArriveAsTheyWereSent();
    void batchesKeepOrderAndTime();
    void aReceiveMayWait();
    void transmitTypes();
    void filtersActOnRanges();
    void errorFramesAndState();
    void closingUnderSendersAndReceivers();
};
