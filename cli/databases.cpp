#include "cli/databases.h"

#include "cli/arguments.h"
#include "cli/messages.h"

void Databases::addOptions(Arguments &arguments)
{
    arguments.add("dbc", "A signal database for both channels; may be given several times.", "FILE");
    arguments.add("dbc1", "The same for channel 1 alone.", "FILE");
    arguments.add("dbc2", "The same for channel 2 alone.", "FILE");
}

void Databases::load(Arguments &arguments)
{
    const auto addAll = [&](const char *option, DatabaseChannels channels) {
        for (const QString &path : arguments.texts(option))
            add(arguments, path, channels);
    };
    addAll("dbc1", DatabaseChannels::First);
    addAll("dbc2", DatabaseChannels::Second);
    addAll("dbc", DatabaseChannels::Both);
    lookup_ = set_.lookup();
    indexSignals();
}

void Databases::add(Arguments &arguments, const QString &path, DatabaseChannels channels)
{
    const DatabaseSet::Outcome outcome = set_.add(path, channels);
    if (outcome.change == DatabaseSet::Change::Kept) {
        const QString reason = outcome.problems.isEmpty() ? QStringLiteral("is no signal database")
                                                          : problemText(outcome.problems.first());
        arguments.wrong(path + QStringLiteral(": ") + reason);
        return;
    }
    for (const DbcProblem &problem : outcome.problems)
        tell(path + QStringLiteral(": ") + problemText(problem));
}

void Databases::indexSignals()
{
    const auto note = [this](const QString &name, const MessageDefinition *message, int place) {
        int number = numbers_.value(name, -1);
        if (number < 0) {
            number = static_cast<int>(named_.size());
            numbers_.insert(name, number);
            named_.emplace_back();
        }
        auto &places = named_[static_cast<std::size_t>(number)].places;
        if (!places.contains(message))
            places.insert(message, place);
    };
    for (const DatabaseSet::Entry &entry : set_.entries()) {
        for (const MessageDefinition &message : entry.database->content.messages) {
            for (int place = 0; place < message.signalList.size(); ++place) {
                const QString &name = message.signalList[place].name;
                note(message.name + QLatin1Char('.') + name, &message, place);
                note(name, &message, place);
            }
        }
    }
}

int Databases::signalNumber(const QString &name) const
{
    return numbers_.value(name, -1);
}

std::optional<double> Databases::signalValue(int number, const RawFrame &frame) const
{
    const KnownMessage *message = lookup_->find(frame);
    if (!message)
        return std::nullopt;
    const int place = named_[static_cast<std::size_t>(number)].places.value(message->definition, -1);
    if (place < 0)
        return std::nullopt;
    thread_local std::vector<SignalValue> values;
    values.resize(static_cast<std::size_t>(message->decoder.signalCount()));
    message->decoder.decode(frame, values.data());
    const SignalValue &value = values[static_cast<std::size_t>(place)];
    return value.state == SignalState::Valid ? std::optional<double>(value.physical) : std::nullopt;
}

QStringList Databases::signalNames() const
{
    return numbers_.keys();
}
