// A table of signal values: a row for each frame that carries one of them, a column for each signal.
#pragma once

#include "cli/textoutput.h"
#include "traces/rawframe.h"

#include <QHash>
#include <QStringList>

#include <vector>

class Arguments;
class Databases;
struct MessageDefinition;
struct SignalValue;

// Which signals are columns; shared by all files of a conversion.
class SignalColumns
{
public:
    // names: "all", or signals and whole messages: Speed,Engine.Speed,Engine. What no database has is a usage error.
    void choose(Arguments &arguments, const QString &names, const Databases &databases);

    bool isEmpty() const { return titles_.isEmpty(); }
    const QStringList &titles() const { return titles_; }
    struct Cell {
        int signal; // in the message
        int column;
    };
    // Of a message, by column; null when none of its signals is chosen.
    const std::vector<Cell> *cells(const MessageDefinition *message) const
    {
        const auto found = cells_.constFind(message);
        return found == cells_.constEnd() ? nullptr : &*found;
    }

private:
    void add(const MessageDefinition &message, int signal);
    bool addNamed(const QString &name, const Databases &databases);

    QStringList titles_;
    QHash<const MessageDefinition *, std::vector<Cell>> cells_;
};

class SignalTable
{
public:
    // Both outlive the table.
    SignalTable(const SignalColumns &columns, const Databases &databases);

    // "-": the standard output. false, and told, when it cannot be opened.
    bool open(const QString &path) { return output_.open(path); }
    // start: nanoseconds added to every time. false once it cannot be written.
    bool write(const RawFrame *frames, int count, std::int64_t start);
    bool flush() { return output_.flush(); }
    std::uint64_t rows() const { return rows_; }

private:
    void appendRow(const RawFrame &frame, const MessageDefinition &message,
                   const std::vector<SignalColumns::Cell> &cells, std::int64_t start);

    const SignalColumns &columns_;
    const Databases &databases_;
    TextOutput output_;
    std::vector<SignalValue> values_;
    std::uint64_t rows_ = 0;
};
