#include "traces/columntitles.h"

#include "device/language.h"

QStringList columnTitles()
{
    return columnTitles(languageCode());
}

QStringList columnTitles(unsigned languageCode)
{
    return {
        text3(languageCode, "序号", "序號", "index"),
        text3(languageCode, "系统时间", "系統時間", "system time"),
        text3(languageCode, "时间标识", "時間標識", "time stamp"),
        text3(languageCode, "通道", "通道", "channel"),
        text3(languageCode, "收/发", "收/發", "Rx/Tx"),
        QStringLiteral("ID"),
        QStringLiteral("Frame"),
        text3(languageCode, "类型", "類型", "type"),
        QStringLiteral("DLC"),
        QStringLiteral("CAN-FD"),
        text3(languageCode, "数据", "數據", "data"),
    };
}
