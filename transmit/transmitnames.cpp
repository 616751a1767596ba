#include "transmit/transmitnames.h"

#include "device/language.h"

FrameProtocol protocolOf(const RawFrame &frame)
{
    return !frame.fd ? ClassicCan : frame.bitRateSwitch ? CanFdBitRateSwitch : CanFd;
}

void setProtocol(RawFrame &frame, int protocol)
{
    frame.fd = protocol != ClassicCan;
    frame.bitRateSwitch = protocol == CanFdBitRateSwitch;
    if (!frame.fd && frame.length > kLongestClassicFrame)
        frame.length = kLongestClassicFrame;
}

const QStringList &protocolNames()
{
    static const QStringList names = {QStringLiteral("CAN"), QStringLiteral("CANFD"), QStringLiteral("CANFD-BRS")};
    return names;
}

const QStringList &transmitTypeNames()
{
    static const QStringList names = {QStringLiteral("normal"), QStringLiteral("single"), QStringLiteral("self"),
                                      QStringLiteral("single-self")};
    return names;
}

const QStringList &transmitModeNames()
{
    static const QStringList names = {QStringLiteral("request"), QStringLiteral("periodic"), QStringLiteral("counted"),
                                      QStringLiteral("response")};
    return names;
}

QStringList formatTexts()
{
    return {text3("标准帧", "標準幀", "Standard"), text3("扩展帧", "擴展幀", "Extended")};
}

QStringList frameTypeTexts()
{
    return {text3("数据帧", "數據幀", "Data"), text3("远程帧", "遠程幀", "Remote")};
}

QStringList protocolTexts()
{
    return {QStringLiteral("CAN"), QStringLiteral("CANFD"), text3("CANFD加速", "CANFD加速", "CANFD BRS")};
}

QStringList transmitTypeTexts()
{
    return {text3("正常发送", "正常發送", "Normal"), text3("单次发送", "單次發送", "Single"),
            text3("自发自收", "自發自收", "Self-receive"),
            text3("单次自发自收", "單次自發自收", "Single self-receive")};
}

QStringList transmitModeTexts()
{
    return {text3("按键发送", "按鍵發送", "On key"), text3("周期", "週期", "Periodic"),
            text3("指定次数", "指定次數", "Counted"), text3("收到后应答", "收到後應答", "Response")};
}

QStringList lengthTexts(bool fd)
{
    constexpr unsigned kCodes = 16;
    QStringList texts;
    for (unsigned code = 0; code < (fd ? kCodes : kLongestClassicFrame + 1); ++code)
        texts << QString::number(lengthOfDlc(code, fd));
    return texts;
}
