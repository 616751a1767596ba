#include "app/drivernotices.h"

#include "device/language.h"

QString noticeText(const DriverNotice &notice)
{
    QString detail = QString::fromStdString(notice.detail);
    switch (notice.kind) {
    case DriverNotice::Kind::LibraryMissing:
        return text3("找不到驱动库：%1", "找不到驅動庫：%1", "Driver library missing: %1").arg(detail);
    case DriverNotice::Kind::LibraryUnusable:
        return text3("驱动库无法使用：%1", "驅動庫無法使用：%1", "Driver library cannot be used: %1").arg(detail);
    case DriverNotice::Kind::OrdinalMissing:
        return text3("驱动库缺少序号：%1", "驅動庫缺少序號：%1", "Driver library lacks ordinal: %1").arg(detail);
    case DriverNotice::Kind::NotHardware:
        return text3("数据并非来自Halden-D2，而是来自：%1", "數據並非來自Halden-D2，而是來自：%1",
                     "Frames do not come from a Halden-D2 but from: %1")
            .arg(detail);
    case DriverNotice::Kind::TraceUnreadable:
        return text3("无法读取记录文件：%1", "無法讀取記錄檔案：%1", "Recorded log cannot be read: %1").arg(detail);
    case DriverNotice::Kind::InterfaceMissing:
        return text3("找不到CAN接口：%1", "找不到CAN接口：%1", "CAN interface missing: %1").arg(detail);
    case DriverNotice::Kind::InterfaceDown:
        return text3("CAN接口未启用：%1", "CAN接口未啓用：%1", "CAN interface is down: %1").arg(detail);
    case DriverNotice::Kind::InterfaceBack:
        return text3("CAN接口已重新启用：%1", "CAN接口已重新啓用：%1", "CAN interface is up again: %1").arg(detail);
    case DriverNotice::Kind::InterfaceNotFd:
        return text3("CAN接口不支持CANFD：%1", "CAN接口不支持CANFD：%1", "CAN interface is not FD-capable: %1")
            .arg(detail);
    case DriverNotice::Kind::InterfaceRefused:
        return text3("CAN接口无法使用：%1", "CAN接口無法使用：%1", "CAN interface cannot be used: %1").arg(detail);
    case DriverNotice::Kind::FramesLost:
        return text3("通道%1接收丢失%2帧！", "通道%1接收丟失%2幀！", "Channel %1 lost %2 received frames!")
            .arg(notice.channel + 1)
            .arg(notice.count);
    }
    return detail;
}

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
