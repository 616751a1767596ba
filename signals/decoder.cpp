#include "signals/decoder.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace
{

constexpr unsigned kWordBytes = 8;
constexpr std::uint8_t kNeverThere = kRawDataBytes + 1;

double floatOf(std::uint32_t bits)
{
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

double doubleOf(std::uint64_t bits)
{
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

} // namespace

MessageDecoder::Step MessageDecoder::stepOf(const SignalDefinition &signal, int index)
{
    Step step{};
    const unsigned needed = signal.neededBytes();
    step.target = index;
    step.factor = signal.factor;
    step.offset = signal.offset;
    step.motorola = signal.byteOrder == ByteOrder::Motorola;
    switch (signal.type) {
    case SignalType::Signed:
        step.kind = Kind::Signed;
        break;
    case SignalType::Unsigned:
        step.kind = signal.bits == kWordBits ? Kind::Unsigned64 : Kind::Unsigned;
        break;
    case SignalType::Float:
        step.kind = Kind::Float;
        break;
    case SignalType::Double:
        step.kind = Kind::Double;
        break;
    }
    if (needed > kRawDataBytes) {
        step.needed = kNeverThere;
        return step;
    }
    step.needed = static_cast<std::uint8_t>(needed);
    const unsigned firstByte = signal.startBit / kByteBits;
    const unsigned inByte = signal.startBit % kByteBits;
    // From the side of the first byte; the shift grows when the word has to begin earlier.
    const unsigned lead = step.motorola ? kByteBits - 1 - inByte : inByte;
    const unsigned end = lead + signal.bits;
    const unsigned load = end > kWordBits ? firstByte : std::min(firstByte, kRawDataBytes - kWordBytes);
    const unsigned shift = lead + kByteBits * (firstByte - load);
    step.load = static_cast<std::uint8_t>(load);
    step.down = static_cast<std::uint8_t>(kWordBits - signal.bits);
    step.extraBits = static_cast<std::uint8_t>(end > kWordBits ? end - kWordBits : 0);
    if (step.extraBits > 0)
        step.up = static_cast<std::uint8_t>(lead);
    else
        step.up = static_cast<std::uint8_t>(step.motorola ? shift : kWordBits - signal.bits - shift);
    return step;
}

MessageDecoder::MessageDecoder(const MessageDefinition &message)
{
    const QVector<SignalDefinition> &list = message.signalList;
    std::vector<int> walk(static_cast<std::size_t>(list.size()), -1); // in which a signal got its place
    std::vector<int> way;
    steps_.reserve(walk.size());
    for (int i = 0; i < list.size(); ++i) {
        way.clear();
        int at = i;
        while (at >= 0 && at < list.size() && walk[at] < 0) {
            walk[at] = i;
            way.push_back(at);
            at = list.at(at).multiplexedBy;
        }
        const bool loop = !way.empty() && at >= 0 && at < list.size() && walk[at] == i;
        for (auto index = way.rbegin(); index != way.rend(); ++index) {
            addStep(list.at(*index), *index);
            if (loop && index == way.rbegin()) { // selects itself: never there
                steps_.back().selected = false;
                steps_.back().needed = kNeverThere;
            }
        }
    }
}

void MessageDecoder::addStep(const SignalDefinition &signal, int index)
{
    Step step = stepOf(signal, index);
    step.selected = signal.multiplexedBy >= 0;
    step.multiplexer = signal.multiplexedBy;
    step.firstRange = static_cast<std::uint32_t>(ranges_.size());
    step.rangeCount = static_cast<std::uint32_t>(signal.selectedBy.size());
    ranges_.insert(ranges_.end(), signal.selectedBy.begin(), signal.selectedBy.end());
    steps_.push_back(step);
}

bool MessageDecoder::isSelected(const Step &step, const SignalValue *values) const
{
    const SignalValue &multiplexer = values[step.multiplexer];
    if (multiplexer.state != SignalState::Valid)
        return false;
    const SelectorRange *range = ranges_.data() + step.firstRange;
    for (const SelectorRange *end = range + step.rangeCount; range != end; ++range)
        if (multiplexer.raw >= range->first && multiplexer.raw <= range->last)
            return true;
    return false;
}

void MessageDecoder::decodeBytes(const std::uint8_t *data, unsigned length, SignalValue *values) const
{
    for (const Step &step : steps_) {
        SignalValue &value = values[step.target];
        if (step.selected && !isSelected(step, values)) {
            value = {0, 0, SignalState::NotSelected};
            continue;
        }
        if (step.needed > length) {
            value = {0, 0, SignalState::BeyondFrame};
            continue;
        }
        const std::uint8_t *from = data + step.load;
        std::uint64_t word = step.motorola ? qFromBigEndian<quint64>(from) : qFromLittleEndian<quint64>(from);
        if (step.extraBits > 0) {
            const std::uint64_t ninth = from[kWordBytes];
            word = step.motorola ? (word << step.up) | (ninth >> (kByteBits - step.up))
                                 : (word >> step.up) | (ninth << (kWordBits - step.up));
            if (!step.motorola)
                word <<= step.down;
        } else {
            word <<= step.up;
        }
        const auto top = static_cast<std::int64_t>(word);
        value.state = SignalState::Valid;
        switch (step.kind) {
        case Kind::Signed:
            value.raw = top >> step.down;
            value.physical = static_cast<double>(value.raw) * step.factor + step.offset;
            break;
        case Kind::Unsigned:
            value.raw = static_cast<std::int64_t>(word >> step.down);
            value.physical = static_cast<double>(value.raw) * step.factor + step.offset;
            break;
        case Kind::Unsigned64:
            value.raw = top;
            value.physical = static_cast<double>(word) * step.factor + step.offset;
            break;
        case Kind::Float:
            value.raw = static_cast<std::int64_t>(word >> step.down);
            value.physical = floatOf(static_cast<std::uint32_t>(value.raw)) * step.factor + step.offset;
            break;
        case Kind::Double:
            value.raw = top;
            value.physical = doubleOf(word) * step.factor + step.offset;
            break;
        }
    }
}

void MessageDecoder::decode(const RawFrame &frame, SignalValue *values) const
{
    const bool data = !frame.remote && !frame.error;
    decodeBytes(frame.data, data ? std::min<unsigned>(frame.length, kRawDataBytes) : 0, values);
}

void MessageDecoder::decode(const std::uint8_t *data, unsigned length, SignalValue *values) const
{
    if (length >= kRawDataBytes) {
        decodeBytes(data, kRawDataBytes, values);
        return;
    }
    std::uint8_t whole[kRawDataBytes] = {};
    if (length > 0)
        std::memcpy(whole, data, length);
    decodeBytes(whole, length, values);
}

double physicalValue(const SignalDefinition &signal, std::int64_t raw)
{
    double value = 0;
    switch (signal.type) {
    case SignalType::Signed:
        value = static_cast<double>(raw);
        break;
    case SignalType::Unsigned:
        value = static_cast<double>(static_cast<std::uint64_t>(raw));
        break;
    case SignalType::Float:
        value = floatOf(static_cast<std::uint32_t>(raw));
        break;
    case SignalType::Double:
        value = doubleOf(static_cast<std::uint64_t>(raw));
        break;
    }
    return value * signal.factor + signal.offset;
}
