#include "app/drivernotices.h"

void LossReport::add(const DriverNotice &framesLost)
{
    if (framesLost.channel >= kChannelCount)
        return;
    Burst &burst = bursts_[framesLost.channel];
    burst.lost += framesLost.count;
    burst.lostThisSecond += framesLost.count;
}

QString LossReport::end(unsigned channel)
{
    const DriverNotice whole{DriverNotice::Kind::FramesLost, std::string(), channel, bursts_[channel].lost};
    bursts_[channel] = Burst();
    return noticeText(whole);
}

QStringList LossReport::secondPassed()
{
    QStringList lines;
    for (unsigned channel = 0; channel < kChannelCount; ++channel) {
        Burst &burst = bursts_[channel];
        if (burst.lost == 0)
            continue;
        const bool over = burst.lostThisSecond == 0;
        burst.lostThisSecond = 0;
        if (over || ++burst.seconds >= kLongestBurst)
            lines.append(end(channel));
    }
    return lines;
}

QStringList LossReport::finish()
{
    QStringList lines;
    for (unsigned channel = 0; channel < kChannelCount; ++channel)
        if (bursts_[channel].lost != 0)
            lines.append(end(channel));
    return lines;
}
