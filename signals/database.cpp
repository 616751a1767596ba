#include "signals/database.h"

#include <algorithm>

namespace
{
constexpr unsigned kBitsPerByte = 8;
}

const QString *SignalDefinition::valueText(std::int64_t raw) const
{
    const auto found = std::lower_bound(valueTexts.begin(), valueTexts.end(), raw,
                                        [](const ValueText &entry, std::int64_t value) { return entry.value < value; });
    return found != valueTexts.end() && found->value == raw ? &found->text : nullptr;
}

unsigned SignalDefinition::neededBytes() const
{
    if (byteOrder == ByteOrder::Intel)
        return (startBit + bits + kBitsPerByte - 1) / kBitsPerByte;
    const unsigned inFirstByte = startBit % kBitsPerByte + 1;
    const unsigned further = bits > inFirstByte ? bits - inFirstByte : 0;
    return startBit / kBitsPerByte + 1 + (further + kBitsPerByte - 1) / kBitsPerByte;
}

int MessageDefinition::indexOf(const QString &signalName) const
{
    const auto found = std::find_if(signalList.begin(), signalList.end(),
                                    [&](const SignalDefinition &signal) { return signal.name == signalName; });
    return found == signalList.end() ? -1 : static_cast<int>(found - signalList.begin());
}

QVariant SignalDatabase::attribute(const Attributes &own, const QString &name) const
{
    const auto found = own.find(name);
    if (found != own.end())
        return *found;
    for (const AttributeDefinition &definition : attributeDefinitions)
        if (definition.name == name)
            return definition.defaultValue;
    return {};
}

int SignalDatabase::signalCount() const
{
    int count = 0;
    for (const MessageDefinition &message : messages)
        count += message.signalList.size();
    return count;
}
