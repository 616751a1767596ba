#include "traces/losses.h"

QString lossText(Loss loss)
{
    switch (loss) {
    case Loss::ErrorFrame:
        return text3("错误帧", "錯誤幀", "error frame");
    case Loss::ErrorDetails:
        return text3("错误帧的类别和数据", "錯誤幀的類別和數據", "class and data of an error frame");
    case Loss::ErrorDirection:
        return text3("错误帧的方向", "錯誤幀的方向", "direction of an error frame");
    case Loss::ErrorFd:
        return text3("错误帧的 FD 标志", "錯誤幀的 FD 旗標", "FD of an error frame");
    case Loss::Direction:
        return text3("方向", "方向", "direction");
    case Loss::Channel:
        return text3("通道", "通道", "channel");
    case Loss::Fd:
        return text3("FD 帧", "FD 幀", "FD frame");
    case Loss::BitRateSwitch:
        return text3("位速率切换（BRS）", "位元速率切換（BRS）", "bit-rate switch");
    case Loss::ErrorStateIndicator:
        return text3("错误状态指示（ESI）", "錯誤狀態指示（ESI）", "error state indicator");
    case Loss::RemoteFd:
        return text3("远程帧的 FD 标志", "遠程幀的 FD 旗標", "FD of a remote frame");
    case Loss::RemoteLength:
        return text3("远程帧的长度", "遠程幀的長度", "length of a remote frame");
    case Loss::RawDlc:
        return text3("经典帧大于 8 的 DLC", "傳統幀大於 8 的 DLC", "DLC above 8 of a classic frame");
    case Loss::FdLength:
        return text3("FD 没有的长度", "FD 沒有的長度", "length that FD does not have");
    case Loss::TimeBeforeStart:
        return text3("早于记录开始的时间", "早於記錄開始的時間", "time before the recording's start");
    case Loss::Count:
        break;
    }
    return {};
}

std::vector<TraceLoss> LossCounts::list() const
{
    std::vector<TraceLoss> losses;
    for (std::size_t kind = 0; kind < counts_.size(); ++kind)
        if (counts_[kind] > 0)
            losses.push_back({lossText(static_cast<Loss>(kind)), counts_[kind]});
    return losses;
}
