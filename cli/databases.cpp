#include "cli/databases.h"

#include "cli/arguments.h"
#include "cli/messages.h"

void Databases::addOptions(Arguments &arguments)
{
    arguments.add("dbc", "A signal database for both channels; may be given several times.", "FILE", Repeated::Each);
    arguments.add("dbc1", "The same for channel 1 alone.", "FILE", Repeated::Each);
    arguments.add("dbc2", "The same for channel 2 alone.", "FILE", Repeated::Each);
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
    signalSource_ = SignalNames::of(set_);
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
