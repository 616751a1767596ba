#include "traces/framefilter.h"

bool FrameFilter::matches(int index, const RawFrame &frame) const
{
    const Node &node = nodes_[static_cast<std::size_t>(index)];
    const auto within = [&node](std::int64_t value) { return value >= node.low && value <= node.high; };
    switch (node.kind) {
    case Kind::And:
        return matches(node.left, frame) && matches(node.right, frame);
    case Kind::Or:
        return matches(node.left, frame) || matches(node.right, frame);
    case Kind::Not:
        return !matches(node.left, frame);
    case Kind::Id:
        return within(frame.id);
    case Kind::IdMask:
        return (frame.id & node.high) == (node.low & node.high);
    case Kind::Channel:
        return within(frame.channel);
    case Kind::Length:
        return within(frame.length);
    case Kind::Time:
        return within(frame.time);
    case Kind::Data:
        return dataMatches(node, frame);
    case Kind::Flag:
        return hasFlag(node.flag, frame);
    case Kind::Signal:
        return signalMatches(node, frame);
    }
    return false;
}

bool FrameFilter::dataMatches(const Node &node, const RawFrame &frame) const
{
    if (frame.remote || node.low + node.right > frame.length)
        return false;
    const PatternByte *pattern = bytes_.data() + node.left;
    const std::uint8_t *data = frame.data + node.low;
    for (int i = 0; i < node.right; ++i) {
        if ((data[i] & pattern[i].mask) != pattern[i].value)
            return false;
    }
    return true;
}

bool FrameFilter::signalMatches(const Node &node, const RawFrame &frame) const
{
    const std::optional<double> value = signals_->signalValue(static_cast<int>(node.high), frame);
    if (!value)
        return false;
    switch (node.comparison) {
    case Comparison::Less:
        return *value < node.number;
    case Comparison::LessEqual:
        return *value <= node.number;
    case Comparison::Equal:
        return *value == node.number;
    case Comparison::NotEqual:
        return *value != node.number;
    case Comparison::GreaterEqual:
        return *value >= node.number;
    case Comparison::Greater:
        return *value > node.number;
    }
    return false;
}

bool FrameFilter::hasFlag(Flag flag, const RawFrame &frame)
{
    switch (flag) {
    case Flag::Received:
        return frame.direction == Direction::Received;
    case Flag::Sent:
        return frame.direction == Direction::Sent;
    case Flag::Standard:
        return !frame.extended && !frame.error;
    case Flag::Extended:
        return frame.extended;
    case Flag::Classic:
        return !frame.fd && !frame.error;
    case Flag::Fd:
        return frame.fd;
    case Flag::BitRateSwitch:
        return frame.bitRateSwitch;
    case Flag::ErrorStateIndicator:
        return frame.errorStateIndicator;
    case Flag::Remote:
        return frame.remote;
    case Flag::Error:
        return frame.error;
    }
    return false;
}
