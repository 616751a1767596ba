#include "frames/buseventlog.h"

#include <QStringList>

#include <utility>

namespace
{

constexpr std::int64_t kSecondMs = 1000;

struct KindText {
    bool (*is)(const BusEvent &event);
    LogText name;
};

bool hasProtocol(const BusEvent &event, std::uint8_t flags)
{
    return (event.classes & buserror::kProtocol) != 0 && (event.data[buserror::ProtocolFlags] & flags) != 0;
}

bool hasClass(const BusEvent &event, std::uint32_t classes)
{
    return (event.classes & classes) != 0;
}

constexpr std::uint8_t kToldProtocol = buserror::kSingleBit | buserror::kForm | buserror::kStuff;

const KindText kKinds[] = {
    {[](const BusEvent &event) { return hasProtocol(event, buserror::kSingleBit); },
     {"位错误", "位元錯誤", "bit error"}},
    {[](const BusEvent &event) { return hasProtocol(event, buserror::kStuff); },
     {"填充错误", "填充錯誤", "stuff error"}},
    {[](const BusEvent &event) { return hasProtocol(event, buserror::kForm); }, {"格式错误", "格式錯誤", "form error"}},
    {[](const BusEvent &event) { return hasClass(event, buserror::kNoAcknowledge); },
     {"无应答", "無應答", "no acknowledgement"}},
    {[](const BusEvent &event) {
         return hasClass(event, buserror::kProtocol | buserror::kBusError) && !hasProtocol(event, kToldProtocol) &&
                !hasClass(event, buserror::kNoAcknowledge);
     },
     {"其它总线错误", "其他匯流排錯誤", "other bus error"}},
    {[](const BusEvent &event) { return hasClass(event, buserror::kLostArbitration); },
     {"仲裁丢失", "仲裁失敗", "arbitration lost"}},
    {[](const BusEvent &event) { return hasClass(event, buserror::kTransceiver); },
     {"收发器错误", "收發器錯誤", "transceiver error"}},
    {[](const BusEvent &event) { return hasClass(event, buserror::kTransmitTimeout); },
     {"发送超时", "發送逾時", "transmit timeout"}},
    {[](const BusEvent &event) {
         return hasClass(event, buserror::kController) &&
                (event.data[buserror::ControllerFlags] & (buserror::kReceiveOverflow | buserror::kTransmitOverflow)) !=
                    0;
     },
     {"控制器溢出", "控制器溢位", "controller overflow"}},
};

QString text(const LogText &text)
{
    return text3(text.simplified, text.traditional, text.english);
}

QString kindNames(std::uint32_t kinds)
{
    QStringList names;
    for (std::size_t i = 0; i < std::size(kKinds); ++i)
        if ((kinds >> i & 1) != 0)
            names.append(text(kKinds[i].name));
    return names.join(text3("、", "、", ", "));
}

// A controller with a warning is error active; one whose state nobody knows is told of by nobody.
ControllerState toldAs(ControllerState state, ControllerState before)
{
    if (state == ControllerState::Unknown)
        return before;
    return state == ControllerState::ErrorWarning ? ControllerState::ErrorActive : state;
}

} // namespace

BusEventLog::BusEventLog(unsigned channel, LogSink sink) : channel_(channel), sink_(std::move(sink)) {}

void BusEventLog::add(const BusReport &report, std::int64_t now)
{
    const std::uint64_t before = frames_;
    for (const BusEvent &event : report.events) {
        count(event);
        state_ = stateAfter(state_, event);
        follow(state_.controller, state_, now);
    }
    frames_ += report.lost;
    state_ = report.state;
    follow(state_.controller, state_, now);
    const bool more = frames_ != before;
    if (more)
        latest_ = now;
    if (more && !std::exchange(inBurst_, true))
        due_ = now + kBurstMs;
    const bool over = inBurst_ && now - latest_ > kBurstMs;
    if (inBurst_ && (over || now >= due_)) {
        tellBurst();
        due_ = now + kAgainMs;
        inBurst_ = !over;
    }
}

void BusEventLog::end()
{
    tellBurst();
    inBurst_ = false;
    state_ = ChannelState();
    told_ = ControllerState::ErrorActive;
}

void BusEventLog::count(const BusEvent &event)
{
    std::uint32_t kinds = 0;
    for (std::size_t i = 0; i < std::size(kKinds); ++i)
        kinds |= (kKinds[i].is(event) ? 1u : 0u) << i;
    kinds_ |= kinds;
    frames_ += kinds != 0 ? 1 : 0;
}

void BusEventLog::follow(ControllerState state, const ChannelState &counters, std::int64_t now)
{
    const ControllerState next = toldAs(state, told_);
    if (next == told_)
        return;
    if (now - second_ >= kSecondMs) {
        second_ = now;
        changes_ = 0;
    }
    if (changes_ >= kChangesPerSecond)
        return;
    ++changes_;
    told_ = next;
    tellState(next, counters);
}

void BusEventLog::tellBurst()
{
    if (frames_ == 0)
        return;
    QString line = text3("通道%1：%2个错误帧", "通道%1：%2個錯誤幀", "Channel %1: %2 error frames")
                       .arg(QString::number(channel_ + 1), QString::number(frames_));
    if (kinds_ != 0)
        line += text3("（%1）", "（%1）", " (%1)").arg(kindNames(kinds_));
    sink_(line);
    frames_ = 0;
    kinds_ = 0;
}

void BusEventLog::tellState(ControllerState state, const ChannelState &counters) const
{
    QString line;
    if (state == ControllerState::BusOff)
        line = text3("通道%1：控制器离线（Bus-Off）", "通道%1：控制器離線（Bus-Off）",
                     "Channel %1: the controller is bus-off");
    else if (state == ControllerState::ErrorPassive)
        line = text3("通道%1：控制器进入错误被动状态", "通道%1：控制器進入錯誤被動狀態",
                     "Channel %1: the controller is error passive");
    else
        line = text3("通道%1：控制器恢复错误主动状态", "通道%1：控制器恢復錯誤主動狀態",
                     "Channel %1: the controller is error active again");
    line = line.arg(channel_ + 1);
    if (counters.countersKnown)
        line += text3("（TEC %1，REC %2）", "（TEC %1，REC %2）", " (TEC %1, REC %2)")
                    .arg(counters.transmitErrors)
                    .arg(counters.receiveErrors);
    sink_(line);
}
