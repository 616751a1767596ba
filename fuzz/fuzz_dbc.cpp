// A signal database: whatever the file holds, what was read is consistent, and payloads survive decoding and encoding.
#include "fuzz/require.h"
#include "signals/dbcreader.h"
#include "signals/encoder.h"
#include "signals/messagelookup.h"

#include <algorithm>
#include <cstring>

namespace
{

void checkDefinition(const MessageDefinition &message)
{
    require(message.id <= (message.extended ? 0x1FFFFFFFu : 0x7FFu));
    for (const SignalDefinition &signal : message.signalList) {
        require(signal.bits >= 1 && signal.bits <= 64 && signal.factor != 0);
        require(signal.multiplexedBy >= -1 && signal.multiplexedBy < message.signalList.size());
        require(signal.multiplexedBy < 0 || !signal.selectedBy.isEmpty());
        require(std::is_sorted(signal.valueTexts.begin(), signal.valueTexts.end(),
                               [](const ValueText &a, const ValueText &b) { return a.value < b.value; }));
    }
    for (const SignalGroup &group : message.groups)
        for (const int member : group.members)
            require(member >= 0 && member < message.signalList.size());
}

// Overlapping signals cannot all be written back, but each alone can.
void checkInverse(const KnownMessage &message, const std::uint8_t *payload, unsigned length)
{
    std::vector<SignalValue> values(std::size_t(message.decoder.signalCount()));
    message.decoder.decode(payload, length, values.data());
    const MessageEncoder encoder(*message.definition);
    for (int i = 0; i < message.decoder.signalCount(); ++i) {
        const SignalDefinition &signal = message.definition->signalList.at(i);
        require(values[i].state != SignalState::Valid || signal.neededBytes() <= length);
        if (values[i].state != SignalState::Valid)
            continue;
        std::uint8_t copy[kRawDataBytes] = {};
        std::memcpy(copy, payload, length);
        const EncodeResult result = encoder.set({i, 0, values[i].raw}, copy, length);
        require(result.outcome == EncodeOutcome::Exact && std::memcmp(copy, payload, length) == 0);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    DbcResult result = readDbc(QByteArray(reinterpret_cast<const char *>(data), int(size)));
    for (const DbcProblem &problem : result.problems)
        require((problem.line >= 1 && problem.column >= 1) || problem.fault == DbcFault::TooManyProblems);
    for (const MessageDefinition &message : result.database.messages)
        checkDefinition(message);
    const auto database = std::make_shared<LoadedDatabase>(std::move(result));
    const MessageLookup lookup({{database, DatabaseChannels::Both}});
    const auto length = unsigned(std::min<std::size_t>(size, kRawDataBytes));
    const std::uint8_t *payload = data + size - length; // the file's end is as good as any
    for (const KnownMessage &message : database->messages) {
        require(lookup.find(1, message.definition->id, message.definition->extended) == &message);
        checkInverse(message, payload, length);
        std::vector<SignalInput> inputs;
        for (int i = 0; i < std::min(message.decoder.signalCount(), 16); ++i)
            inputs.push_back({i, double(size) - i, {}});
        std::uint8_t copy[kRawDataBytes] = {};
        const MessageEncoder encoder(*message.definition);
        encoder.start(copy, encoder.payloadLength());
        encoder.encode(inputs, copy, encoder.payloadLength(), EncodeLimits::Declared);
    }
    return 0;
}
