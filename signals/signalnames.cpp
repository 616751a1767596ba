#include "signals/signalnames.h"

#include <utility>

std::shared_ptr<const SignalSource> SignalNames::of(const std::vector<DatabaseSet::Entry> &entries,
                                                    std::shared_ptr<const MessageLookup> lookup)
{
    if (entries.empty())
        return nullptr;
    return std::shared_ptr<const SignalSource>(new SignalNames(entries, std::move(lookup)));
}

SignalNames::SignalNames(const std::vector<DatabaseSet::Entry> &entries, std::shared_ptr<const MessageLookup> lookup)
    : lookup_(std::move(lookup))
{
    for (const DatabaseSet::Entry &entry : entries) {
        for (const MessageDefinition &message : entry.database->content.messages) {
            for (int place = 0; place < message.signalList.size(); ++place) {
                const QString &name = message.signalList[place].name;
                note(message.name + QLatin1Char('.') + name, &message, place);
                note(name, &message, place);
            }
        }
    }
}

void SignalNames::note(const QString &name, const MessageDefinition *message, int place)
{
    int number = numbers_.value(name, -1);
    if (number < 0) {
        number = static_cast<int>(named_.size());
        numbers_.insert(name, number);
        named_.emplace_back();
    }
    Places &places = named_[static_cast<std::size_t>(number)];
    if (!places.contains(message))
        places.insert(message, place);
}

int SignalNames::signalNumber(const QString &name) const
{
    return numbers_.value(name, -1);
}

std::optional<double> SignalNames::signalValue(int number, const RawFrame &frame) const
{
    const KnownMessage *message = lookup_->find(frame);
    if (!message)
        return std::nullopt;
    const int place = named_[static_cast<std::size_t>(number)].value(message->definition, -1);
    if (place < 0)
        return std::nullopt;
    thread_local std::vector<SignalValue> values;
    values.resize(static_cast<std::size_t>(message->decoder.signalCount()));
    message->decoder.decode(frame, values.data());
    const SignalValue &value = values[static_cast<std::size_t>(place)];
    return value.state == SignalState::Valid ? std::optional<double>(value.physical) : std::nullopt;
}

QStringList SignalNames::signalNames() const
{
    return numbers_.keys();
}
