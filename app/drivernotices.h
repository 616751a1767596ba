// Gathers what the driver has to tell for the operation log.
#pragma once

#include "device/devicetexts.h"
#include "device/driver/driver.h"

#include <QString>
#include <QStringList>

// Collects lost frames until a burst is over, so that each burst is told once with its whole count.
class LossReport
{
public:
    void add(const DriverNotice &framesLost);
    // Call once a second; answers the lines to log now: for a burst that has ended, or one that has gone on for
    // kLongestBurst seconds.
    QStringList secondPassed();
    // The lines of bursts still under way, when the device closes.
    QStringList finish();

private:
    static constexpr int kLongestBurst = 10;
    struct Burst {
        quint64 lost = 0;
        quint64 lostThisSecond = 0;
        int seconds = 0;
    };
    QString end(unsigned channel);

    Burst bursts_[kChannelCount];
};
