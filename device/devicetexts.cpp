#include "device/devicetexts.h"

#include "device/channelparameters.h"
#include "device/language.h"

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
