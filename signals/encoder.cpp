#include "signals/encoder.h"

#include "device/language.h"
#include "signals/decoder.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <numeric>

namespace
{

// Bit after bit, as the format is defined: what the decoder does with words is checked against it.
void writeBits(const SignalDefinition &signal, std::uint64_t raw, std::uint8_t *payload)
{
    unsigned place = signal.startBit;
    for (unsigned i = 0; i < signal.bits; ++i) {
        const bool intel = signal.byteOrder == ByteOrder::Intel;
        const unsigned bit = intel ? i : signal.bits - 1 - i;
        const auto mask = static_cast<std::uint8_t>(1u << (place % kByteBits));
        std::uint8_t &byte = payload[place / kByteBits];
        byte = static_cast<std::uint8_t>((raw >> bit) & 1 ? byte | mask : byte & ~mask);
        if (intel)
            ++place;
        else
            place = place % kByteBits == 0 ? place + 2 * kByteBits - 1 : place - 1;
    }
}

std::uint64_t readBits(const SignalDefinition &signal, const std::uint8_t *payload)
{
    MessageDefinition message;
    message.signalList = {signal};
    message.signalList[0].multiplexedBy = -1;
    SignalValue value;
    MessageDecoder(message).decode(payload, signal.neededBytes(), &value);
    return static_cast<std::uint64_t>(value.raw);
}

template <typename To, typename From> To sameBits(From from)
{
    static_assert(sizeof(To) == sizeof(From));
    To to;
    std::memcpy(&to, &from, sizeof to);
    return to;
}

struct Raw {
    std::int64_t value;
    bool clamped;
};

// The integer of so many bits that is nearest to `wanted`.
Raw integerOf(const SignalDefinition &signal, double wanted)
{
    const bool isSigned = signal.type == SignalType::Signed;
    const double beyond = std::ldexp(1.0, isSigned ? signal.bits - 1 : signal.bits); // exact
    const std::uint64_t most = (~std::uint64_t(0) >> (kWordBits - signal.bits)) >> (isSigned ? 1 : 0);
    const double least = isSigned ? -beyond : 0;
    const double rounded = std::round(wanted);
    if (rounded >= beyond)
        return {static_cast<std::int64_t>(most), true};
    if (rounded < least)
        return {static_cast<std::int64_t>(least), true};
    if (isSigned)
        return {static_cast<std::int64_t>(rounded), false};
    return {static_cast<std::int64_t>(static_cast<std::uint64_t>(rounded)), false};
}

Raw rawOf(const SignalDefinition &signal, double physical)
{
    const double wanted = (physical - signal.offset) / signal.factor;
    if (signal.type == SignalType::Float) {
        const double kept = std::clamp(wanted, -double(FLT_MAX), double(FLT_MAX));
        return {sameBits<std::uint32_t>(static_cast<float>(kept)), kept != wanted};
    }
    if (signal.type == SignalType::Double) {
        const double kept = std::clamp(wanted, -DBL_MAX, DBL_MAX);
        return {sameBits<std::int64_t>(kept), kept != wanted};
    }
    return integerOf(signal, wanted);
}

// Whether the signal's bits can carry this raw value as it is.
bool fits(const SignalDefinition &signal, std::int64_t raw)
{
    if (signal.bits == kWordBits)
        return true;
    if (signal.type == SignalType::Signed) {
        const std::int64_t beyond = std::int64_t(1) << (signal.bits - 1);
        return raw >= -beyond && raw < beyond;
    }
    return raw >= 0 && (static_cast<std::uint64_t>(raw) >> signal.bits) == 0;
}

EncodeResult refused(EncodeRefusal reason)
{
    return {EncodeOutcome::Refused, reason, 0};
}

bool selects(const SignalDefinition &signal, std::int64_t value)
{
    return std::any_of(signal.selectedBy.begin(), signal.selectedBy.end(),
                       [&](const SelectorRange &range) { return value >= range.first && value <= range.last; });
}

// Multiplexers above a signal; of a loop, as many as there are signals.
int depthOf(const QVector<SignalDefinition> &list, int index)
{
    int depth = 0;
    while (depth < list.size() && list.at(index).multiplexedBy >= 0 && list.at(index).multiplexedBy < list.size()) {
        index = list.at(index).multiplexedBy;
        ++depth;
    }
    return depth;
}

} // namespace

QString refusalText(EncodeRefusal refusal)
{
    switch (refusal) {
    case EncodeRefusal::None:
        return {};
    case EncodeRefusal::UnknownSignal:
        return text3("没有该信号", "沒有該訊號", "there is no such signal");
    case EncodeRefusal::NotFinite:
        return text3("不是有限数值", "不是有限數值", "not a finite number");
    case EncodeRefusal::BeyondPayload:
        return text3("数据长度不足以容纳该信号", "數據長度不足以容納該訊號", "the data are too short for the signal");
    case EncodeRefusal::ConflictingSelectors:
        return text3("与其他信号要求的复用器值冲突", "與其他訊號要求的多工器值衝突",
                     "another value needs another value of the multiplexer");
    case EncodeRefusal::NeverSelected:
        return text3("复用器的任何值都不会选择该信号", "多工器的任何值都不會選擇該訊號",
                     "no value of its multiplexer selects the signal");
    }
    return {};
}

unsigned MessageEncoder::payloadLength() const
{
    return std::min<unsigned>(message_->length, kRawDataBytes);
}

void MessageEncoder::start(std::uint8_t *payload, unsigned length) const
{
    std::memset(payload, 0, length);
    const auto set = [&](const SignalDefinition &signal) {
        if (signal.startValue && signal.neededBytes() <= length) {
            const double physical = *signal.startValue * signal.factor + signal.offset;
            const Raw raw = std::isfinite(physical) ? rawOf(signal, physical) : Raw{0, false};
            writeBits(signal, static_cast<std::uint64_t>(raw.value), payload);
        }
    };
    // What is always there first, so that the multiplexers say what else is.
    for (const SignalDefinition &signal : message_->signalList)
        if (signal.multiplexedBy < 0)
            set(signal);
    const MessageDecoder decoder(*message_);
    std::vector<SignalValue> values(static_cast<std::size_t>(decoder.signalCount()));
    std::vector<bool> done(values.size(), false);
    for (bool more = true; more;) {
        more = false;
        decoder.decode(payload, length, values.data());
        for (int i = 0; i < message_->signalList.size(); ++i) {
            const SignalDefinition &signal = message_->signalList.at(i);
            if (signal.multiplexedBy < 0 || done[i] || values[i].state != SignalState::Valid)
                continue;
            set(signal);
            done[i] = true;
            more = more || signal.multiplexer;
        }
    }
}

EncodeResult MessageEncoder::set(const SignalInput &input, std::uint8_t *payload, unsigned length,
                                 EncodeLimits limits) const
{
    if (input.signal < 0 || input.signal >= message_->signalList.size())
        return refused(EncodeRefusal::UnknownSignal);
    const SignalDefinition &signal = message_->signalList.at(input.signal);
    if (signal.neededBytes() > std::min<unsigned>(length, kRawDataBytes))
        return refused(EncodeRefusal::BeyondPayload);
    double wanted = input.physical;
    Raw raw{0, false};
    if (input.raw && fits(signal, *input.raw)) {
        raw.value = *input.raw;
        wanted = physicalValue(signal, raw.value);
    } else if (input.raw) {
        raw = integerOf(signal, static_cast<double>(*input.raw));
        wanted = static_cast<double>(*input.raw) * signal.factor + signal.offset;
    }
    const bool limited = limits == EncodeLimits::Declared && signal.hasLimits();
    const double kept = limited ? std::clamp(wanted, signal.minimum, signal.maximum) : wanted;
    const bool cut = kept < wanted || kept > wanted; // false of what is not a number
    if (!input.raw || cut) {
        if (!std::isfinite(kept))
            return refused(EncodeRefusal::NotFinite);
        raw = rawOf(signal, kept);
        raw.clamped = raw.clamped || cut;
    }
    writeBits(signal, static_cast<std::uint64_t>(raw.value), payload);
    const double carried = physicalValue(signal, raw.value);
    const bool exact = carried == wanted || (input.raw && raw.value == *input.raw);
    return {raw.clamped ? EncodeOutcome::Clamped
            : exact     ? EncodeOutcome::Exact
                        : EncodeOutcome::Rounded,
            EncodeRefusal::None, carried};
}

// Finds values for all multiplexers above a signal, or tells why there are none; `choices` changes only when there are.
EncodeRefusal MessageEncoder::choose(int index, QVector<std::optional<Choice>> *choices, const std::uint8_t *payload,
                                     unsigned length) const
{
    const QVector<SignalDefinition> &list = message_->signalList;
    QVector<std::optional<Choice>> chosen = *choices;
    int steps = 0;
    for (int at = index; list.at(at).multiplexedBy >= 0; at = list.at(at).multiplexedBy) {
        const SignalDefinition &signal = list.at(at);
        if (signal.multiplexedBy >= list.size() || ++steps > list.size())
            return EncodeRefusal::NeverSelected;
        const SignalDefinition &multiplexer = list.at(signal.multiplexedBy);
        if (multiplexer.neededBytes() > std::min<unsigned>(length, kRawDataBytes))
            return EncodeRefusal::BeyondPayload;
        std::optional<Choice> &choice = chosen[signal.multiplexedBy];
        if (choice) {
            if (!selects(signal, choice->value))
                return EncodeRefusal::ConflictingSelectors;
            continue;
        }
        const auto present = static_cast<std::int64_t>(readBits(multiplexer, payload));
        if (selects(signal, present)) {
            choice = Choice{present, false};
            continue;
        }
        const auto *range = std::find_if(signal.selectedBy.begin(), signal.selectedBy.end(),
                                         [&](const SelectorRange &each) { return fits(multiplexer, each.first); });
        if (range == signal.selectedBy.end())
            return EncodeRefusal::NeverSelected;
        choice = Choice{range->first, false};
    }
    *choices = chosen;
    return EncodeRefusal::None;
}

std::vector<EncodeResult> MessageEncoder::encode(const std::vector<SignalInput> &inputs, std::uint8_t *payload,
                                                 unsigned length, EncodeLimits limits) const
{
    const QVector<SignalDefinition> &list = message_->signalList;
    QVector<std::optional<Choice>> choices(list.size());
    std::vector<EncodeResult> results(inputs.size());
    // The multiplexers that the caller gives decide, the uppermost first.
    std::vector<std::size_t> order(inputs.size());
    std::iota(order.begin(), order.end(), std::size_t(0));
    const auto rank = [&](std::size_t input) {
        const int signal = inputs.at(input).signal;
        const bool decides = signal >= 0 && signal < list.size() && list.at(signal).multiplexer;
        return decides ? depthOf(list, signal) : list.size() + 1;
    };
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return rank(a) < rank(b); });
    for (const std::size_t i : order) {
        const SignalInput &input = inputs.at(i);
        EncodeResult &result = results[i];
        if (input.signal < 0 || input.signal >= list.size()) {
            result = refused(EncodeRefusal::UnknownSignal);
            continue;
        }
        if (choices.at(input.signal)) { // given twice
            result = refused(EncodeRefusal::ConflictingSelectors);
            continue;
        }
        QVector<std::optional<Choice>> chosen = choices;
        const EncodeRefusal refusal = choose(input.signal, &chosen, payload, length);
        result = refusal == EncodeRefusal::None ? set(input, payload, length, limits) : refused(refusal);
        if (result.outcome == EncodeOutcome::Refused)
            continue;
        choices = chosen;
        const SignalDefinition &signal = list.at(input.signal);
        if (signal.multiplexer)
            choices[input.signal] = Choice{static_cast<std::int64_t>(readBits(signal, payload)), true};
    }
    for (int i = 0; i < list.size(); ++i)
        if (choices.at(i) && !choices.at(i)->given)
            writeBits(list.at(i), static_cast<std::uint64_t>(choices.at(i)->value), payload);
    return results;
}
