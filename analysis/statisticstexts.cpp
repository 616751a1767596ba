#include "analysis/statisticstexts.h"

#include "device/driver/timeunits.h"
#include "device/language.h"
#include "traces/frametexts.h"

namespace
{
constexpr int kDecimals = 3;
constexpr std::uint32_t kKilo = 1000;
constexpr std::uint32_t kMega = 1000000;

} // namespace

QString kindText(FrameKind kind)
{
    switch (kind) {
    case FrameKind::Standard:
        return text3("标准帧", "標準幀", "Standard");
    case FrameKind::Extended:
        return text3("扩展帧", "擴展幀", "Extended");
    case FrameKind::Fd:
        return QStringLiteral("FD");
    case FrameKind::FdSwitched:
        return text3("FD加速", "FD加速", "FD + BRS");
    case FrameKind::Remote:
        return text3("远程帧", "遠程幀", "Remote");
    case FrameKind::Error:
        return text3("错误帧", "錯誤幀", "Error");
    }
    return {};
}

QString kindText(const IdentifierKey &key)
{
    if (key.error)
        return kindText(FrameKind::Error);
    if (key.remote)
        return kindText(FrameKind::Remote);
    return kindText(key.extended ? FrameKind::Extended : FrameKind::Standard);
}

QString directionText(Direction direction)
{
    return direction == Direction::Sent ? QStringLiteral("Tx") : QStringLiteral("Rx");
}

QString idText(const IdentifierKey &key)
{
    return QStringLiteral("0x") + identifierText(key.id, key.extended);
}

QString dataText(const RawFrame &frame)
{
    if (frame.remote)
        return {};
    const auto *bytes = reinterpret_cast<const char *>(frame.data);
    return QString::fromLatin1(QByteArray::fromRawData(bytes, frame.length).toHex(' ').toUpper());
}

QString unknownText()
{
    return text3("未知", "未知", "unknown");
}

QString percentText(std::optional<double> share)
{
    constexpr double kPercent = 100;
    return share ? QString::number(*share * kPercent, 'f', 1) + QStringLiteral(" %") : unknownText();
}

QString rateText(std::uint32_t bitsPerSecond)
{
    if (bitsPerSecond == 0)
        return unknownText();
    return bitsPerSecond >= kMega ? QString::number(double(bitsPerSecond) / kMega) + QStringLiteral(" Mbit/s")
                                  : QString::number(double(bitsPerSecond) / kKilo) + QStringLiteral(" kbit/s");
}

QString stateText(const ChannelState &state)
{
    QString text = unknownText();
    switch (state.controller) {
    case ControllerState::Unknown:
        break;
    case ControllerState::ErrorActive:
        text = text3("错误主动", "錯誤主動", "error active");
        break;
    case ControllerState::ErrorWarning:
        text = text3("错误警告", "錯誤警告", "error warning");
        break;
    case ControllerState::ErrorPassive:
        text = text3("错误被动", "錯誤被動", "error passive");
        break;
    case ControllerState::BusOff:
        text = text3("离线（Bus-Off）", "離線（Bus-Off）", "bus-off");
        break;
    }
    const QString counters = state.countersKnown
                                 ? QStringLiteral("TEC %1  REC %2").arg(state.transmitErrors).arg(state.receiveErrors)
                                 : QStringLiteral("TEC/REC ") + unknownText();
    return text + QStringLiteral("  ") + counters;
}

QString millisecondsText(double nanoseconds)
{
    return QString::number(nanoseconds / kNanosecondsPerMillisecond, 'f', kDecimals);
}

QString secondsText(std::int64_t nanoseconds)
{
    return QString::number(static_cast<double>(nanoseconds) / kNanosecondsPerSecond, 'f', kDecimals);
}

QString violationName(Violation::Kind kind)
{
    switch (kind) {
    case Violation::Kind::Late:
        return text3("迟到", "遲到", "late");
    case Violation::Kind::Early:
        return text3("早到", "早到", "early");
    case Violation::Kind::Missing:
        return text3("缺失", "缺失", "missing");
    case Violation::Kind::New:
        return text3("新出现", "新出現", "new");
    }
    return {};
}

QString violationLine(const Violation &violation)
{
    QString line = text3("监视：通道%1 %2 %3 %4", "監視：通道%1 %2 %3 %4", "Supervision: channel %1 %2 %3 %4")
                       .arg(QString::number(violation.key.channel), directionText(violation.key.direction),
                            idText(violation.key), violationName(violation.kind));
    if (violation.kind == Violation::Kind::New || violation.limit == 0)
        return line;
    return line + text3("（%1 ms，限值%2 ms）", "（%1 ms，限值%2 ms）", " (%1 ms, limit %2 ms)")
                      .arg(millisecondsText(static_cast<double>(violation.distance)),
                           millisecondsText(static_cast<double>(violation.limit)));
}
