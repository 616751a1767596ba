#include "cli/signaltable.h"

#include "cli/arguments.h"
#include "cli/databases.h"
#include "cli/signaltext.h"
#include "cli/valuetexts.h"

#include <algorithm>

namespace
{

constexpr int kTimeDecimals = 6;

} // namespace

void SignalColumns::add(const MessageDefinition &message, int signal)
{
    std::vector<Cell> &cells = cells_[&message];
    if (std::any_of(cells.begin(), cells.end(), [signal](const Cell &cell) { return cell.signal == signal; }))
        return;
    const SignalDefinition &definition = message.signalList[signal];
    QString title = message.name + QLatin1Char('.') + definition.name;
    if (!definition.unit.isEmpty())
        title += QStringLiteral(" [") + definition.unit + QLatin1Char(']');
    titles_.append(title);
    cells.push_back({signal, titles_.size() - 1});
}

bool SignalColumns::addNamed(const QString &name, const Databases &databases)
{
    bool found = false;
    for (const DatabaseSet::Entry &entry : databases.entries()) {
        for (const MessageDefinition &message : entry.database->content.messages) {
            for (int signal = 0; signal < message.signalList.size(); ++signal) {
                const QString &own = message.signalList[signal].name;
                const bool wanted = name == QLatin1String("all") || name == message.name || name == own ||
                                    name == message.name + QLatin1Char('.') + own;
                if (wanted)
                    add(message, signal);
                found = found || wanted;
            }
        }
    }
    return found;
}

void SignalColumns::choose(Arguments &arguments, const QString &names, const Databases &databases)
{
    for (const QString &name : names.split(QLatin1Char(',')))
        if (!addNamed(name.trimmed(), databases))
            arguments.wrong(QStringLiteral("--signals: no database given with --dbc has \"") + name.trimmed() +
                            QLatin1Char('"'));
}

SignalTable::SignalTable(const SignalColumns &columns, const Databases &databases)
    : columns_(columns), databases_(databases)
{
    std::string *out = output_.text();
    out->append("time [s],channel");
    for (const QString &title : columns.titles()) {
        out->push_back(',');
        appendCsvField(out, title);
    }
    out->push_back('\n');
}

bool SignalTable::write(const RawFrame *frames, int count, std::int64_t start)
{
    for (const RawFrame *frame = frames; frame != frames + count; ++frame) {
        const KnownMessage *message = databases_.lookup().find(*frame);
        if (!message)
            continue;
        const std::vector<SignalColumns::Cell> *cells = columns_.cells(message->definition);
        if (!cells)
            continue;
        values_.resize(static_cast<std::size_t>(message->decoder.signalCount()));
        message->decoder.decode(*frame, values_.data());
        appendRow(*frame, *message->definition, *cells, start);
    }
    return output_.drain();
}

void SignalTable::appendRow(const RawFrame &frame, const MessageDefinition &message,
                            const std::vector<SignalColumns::Cell> &cells, std::int64_t start)
{
    const auto valid = [this](const SignalColumns::Cell &cell) {
        return values_[static_cast<std::size_t>(cell.signal)].state == SignalState::Valid;
    };
    if (std::none_of(cells.begin(), cells.end(), valid))
        return;
    std::string *out = output_.text();
    appendSeconds(out, start + frame.time, kTimeDecimals);
    out->push_back(',');
    appendDecimal(out, frame.channel);
    int column = -1;
    for (const SignalColumns::Cell &cell : cells) {
        out->append(static_cast<std::size_t>(cell.column - column), ',');
        column = cell.column;
        if (valid(cell))
            appendSignalValue(out, message.signalList[cell.signal], values_[static_cast<std::size_t>(cell.signal)]);
    }
    out->append(static_cast<std::size_t>(columns_.titles().size() - 1 - column), ',');
    out->push_back('\n');
    ++rows_;
}
