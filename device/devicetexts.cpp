#include "device/devicetexts.h"

#include "device/channelparameters.h"
#include "device/driver/driver.h"
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
    case DriverNotice::Kind::BuiltInVehicle:
        return text3(
            "查看车速、转速和车门：分析 → 信号 (Ctrl+G)，按“使用内置车辆”",
            "檢視車速、轉速和車門：分析 → 訊號 (Ctrl+G)，按「使用內建車輛」",
            "To see speed, revolutions and doors: Analysis → Signals (Ctrl+G), then “Use the built-in vehicle”");
    case DriverNotice::Kind::TraceUnreadable:
        return text3("无法读取记录文件：%1", "無法讀取記錄檔案：%1", "Recorded log cannot be read: %1").arg(detail);
    case DriverNotice::Kind::InterfaceMissing:
        return text3("找不到CAN接口：%1", "找不到CAN接口：%1", "CAN interface missing: %1").arg(detail);
    case DriverNotice::Kind::InterfaceDown:
        return text3("CAN接口未启用：%1", "CAN接口未啓用：%1", "CAN interface is down: %1").arg(detail);
    case DriverNotice::Kind::InterfaceBack:
        return text3("CAN接口已重新启用：%1", "CAN接口已重新啓用：%1", "CAN interface is up again: %1").arg(detail);
    case DriverNotice::Kind::InterfaceNotFd:
        return text3("CAN接口不支持CANFD：%1", "CAN接口不支援CANFD：%1", "CAN interface is not FD-capable: %1")
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
