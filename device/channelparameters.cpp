#include "device/channelparameters.h"

#include "device/devicelayer.h"
#include "device/language.h"
#include "device/settingsstore.h"

namespace
{

constexpr char kWorkStatus[] = "workStatus";
constexpr char kCanFdStandard[] = "canFDStandard";
constexpr char kArbitration[] = "ABIT1";
constexpr char kData[] = "ABIT2";
constexpr char kIsCustom[] = "isCustomBaudrate";
constexpr char kCustomText[] = "CustomBaudrate";
constexpr char kFilterMode[] = "filterMode";
constexpr char kFilterRows[] = "FilterID";

unsigned readNumber(unsigned channel, const char *name)
{
    return settings::number(settings::channelKey(channel, name), QStringLiteral("0"));
}

QString readText(unsigned channel, const char *name)
{
    return settings::value(settings::channelKey(channel, name), {});
}

QString boxText(bool ticked)
{
    return ticked ? QStringLiteral("1") : QStringLiteral("0");
}

// The part that opening and re-applying have in common.
ChannelStep configureBus(unsigned channel, const ChannelParameters &parameters)
{
    if (!setCanFdStandard(channel, parameters.canFdStandard))
        return ChannelStep::CanFdStandard;
    if (parameters.customBaudRate)
        return setCustomBaudRate(channel, parameters.customBaudRateText) ? ChannelStep::None
                                                                         : ChannelStep::CustomBaudRate;
    return setBaudRate(channel, parameters.arbitration, parameters.data) ? ChannelStep::None : ChannelStep::BaudRate;
}

} // namespace

ChannelParameters loadChannelParameters(unsigned channel)
{
    ChannelParameters parameters;
    parameters.workStatus = readNumber(channel, kWorkStatus);
    parameters.canFdStandard = readNumber(channel, kCanFdStandard);
    parameters.arbitration = readNumber(channel, kArbitration);
    parameters.data = readNumber(channel, kData);
    parameters.customBaudRate = readNumber(channel, kIsCustom) != 0;
    parameters.customBaudRateText = readText(channel, kCustomText);
    parameters.filterOn = readNumber(channel, kFilterMode) != 0;
    parameters.filterRows = readText(channel, kFilterRows);
    return parameters;
}

void storeChannelParameters(unsigned channel, const ChannelParameters &parameters)
{
    const auto store = [channel](const char *name, const QString &text, bool writeNow = false) {
        settings::setValue(settings::channelKey(channel, name), text, writeNow);
    };
    store(kWorkStatus, QString::number(parameters.workStatus));
    store(kCanFdStandard, QString::number(parameters.canFdStandard));
    store(kArbitration, QString::number(parameters.arbitration));
    store(kData, QString::number(parameters.data));
    store(kIsCustom, boxText(parameters.customBaudRate));
    store(kCustomText, parameters.customBaudRateText);
    store(kFilterMode, boxText(parameters.filterOn));
    store(kFilterRows, parameters.filterRows, true);
}

ChannelStep openChannel(unsigned channel, const ChannelParameters &parameters)
{
    const ChannelStep failed = configureBus(channel, parameters);
    if (failed != ChannelStep::None)
        return failed;
    if (!initChannel(channel, parameters.workStatus))
        return ChannelStep::Init;
    if (parameters.filterOn && !parameters.filterRows.isEmpty() && !applyFilterRows(channel, parameters.filterRows))
        return ChannelStep::Filter;
    return startChannel(channel) ? ChannelStep::None : ChannelStep::Start;
}

ChannelStep reconfigureChannel(unsigned channel, const ChannelParameters &parameters)
{
    const ChannelStep failed = configureBus(channel, parameters);
    if (failed != ChannelStep::None)
        return failed;
    if (parameters.filterOn && !applyFilterRows(channel, parameters.filterRows))
        return ChannelStep::Filter;
    return ChannelStep::None;
}

QString stepFailureText(ChannelStep step)
{
    switch (step) {
    case ChannelStep::CanFdStandard:
        return text3("设置CANFD标准失败！", "設置CANFD標準失敗！", "Failed to set CANFD standard!");
    case ChannelStep::BaudRate:
        return text3("设置波特率失败！", "設置波特率失敗！", "Setting baud rate failed!");
    case ChannelStep::CustomBaudRate:
        return text3("设置自定义波特率失败！", "設置自定義波特率失敗！", "Setting custom baud rate failed!");
    case ChannelStep::Init:
        return text3("CAN初始化失败！", "CAN初始化失敗！", "CAN Initialization failed!");
    case ChannelStep::Filter:
        return text3("设置滤波失败！", "設置濾波失敗！", "Setting filtering failed!");
    case ChannelStep::Start:
        return text3("CAN启动失败！", "CAN啓動失敗！", "CAN start failed!");
    case ChannelStep::None:
        break;
    }
    return {};
}

QString deviceNotOpenText()
{
    return text3("设备未打开！", "設備未打開！", "The device is not opened!");
}

QString deviceInfoFailedText()
{
    return text3("设备信息获取失败！", "設備信息獲取失敗！", "Device information acquisition failed!");
}
