#include "transmit/framechecks.h"

#include "device/driver/wirerecords.h"
#include "device/language.h"

bool identifierFits(const QString &text, bool extended, unsigned *identifier)
{
    // Wide enough that a number with its highest bit set is out of range and not a negative one.
    const qulonglong number = text.toULongLong(nullptr, 16);
    if (number > largestId(extended))
        return false;
    *identifier = static_cast<unsigned>(number);
    return true;
}

QString identifierRangeText(bool extended, unsigned channel)
{
    if (!extended)
        return text3("发送失败，标准帧ID范围为0~0x7FF！",
                     channel == 0 ? "發送失敗，標準幀ID範圍為0~0x7FF！" : "发送失败，標準幀ID範圍為0~0x7FF！",
                     "Sending failed, standard frame ID range is 0~0x7FF!");
    return text3("发送失败，扩展帧ID范围为0~0x1FFFFFFF！",
                 channel == 0 ? "發送失敗，擴展幀ID範圍為0~0x1FFFFFFF！" : "发送失败，擴展幀ID範圍為0~0x1FFFFFFF！",
                 "Sending failed, expanding frame ID range from 0 to 0x1FFFFFFFF!");
}
