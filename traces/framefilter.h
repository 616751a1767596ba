// One line of text that chooses frames, the same in every window and on the command line:
//   id 100..1FF and data 02 ?? 7F and not rx
// Conditions, joined by "and", "or", "not" and parentheses ("and" binds closer):
//   id LIST          hexadecimal: 123, 100..1FF, 120/7F0 (value/mask), joined by ","
//   data PATTERN     bytes from the first one, "?" any digit; data[2] 7F begins at the third byte
//   channel LIST, length LIST    decimal: 1, 0..4, joined by ","
//   time A..B        seconds since the recording's start; either end may be left out
//   rx, tx, std, ext, classic, fd, brs, esi, remote, error
//   signal NAME OP NUMBER        once a database is loaded: signal Engine.Speed >= 1000; OP: < <= = != >= >
#pragma once

#include "traces/rawframe.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

// Where a filter gets the values of signals from.
class SignalSource
{
public:
    virtual ~SignalSource() = default;
    // A number for the signal "Message.Signal" or "Signal"; -1 when no loaded database has it.
    virtual int signalNumber(const QString &name) const = 0;
    // The physical value in this frame; nothing when the frame does not carry the signal. Any thread.
    virtual std::optional<double> signalValue(int number, const RawFrame &frame) const = 0;
    virtual QStringList signalNames() const = 0;
};

struct FilterError {
    int position = 0; // 0-based place in the text
    int length = 0;   // of what is wrong there; 0 at the end of the text
    QString message;  // in the current language
};

// A compiled filter: a value, cheap to copy; matches() may be called from any thread.
class FrameFilter
{
public:
    FrameFilter() = default; // lets everything through
    // Nothing, with *error filled, when the text is no filter. An empty text lets everything through. signalSource:
    // kept with the filter; without it the condition "signal" is an error.
    static std::optional<FrameFilter> parse(const QString &text, FilterError *error,
                                            std::shared_ptr<const SignalSource> signalSource = nullptr);
    // The words that may stand at this place of the text, the one under way completed.
    static QStringList completions(const QString &text, int position,
                                   std::shared_ptr<const SignalSource> signalSource = nullptr);

    bool matches(const RawFrame &frame) const { return nodes_.empty() || matches(root_, frame); }
    bool isEmpty() const { return nodes_.empty(); }

private:
    friend class FrameFilterParser;

    enum class Kind : std::uint8_t { And, Or, Not, Id, IdMask, Channel, Length, Time, Data, Flag, Signal };
    enum class Flag : std::uint8_t {
        Received,
        Sent,
        Standard,
        Extended,
        Classic,
        Fd,
        BitRateSwitch,
        ErrorStateIndicator,
        Remote,
        Error
    };
    enum class Comparison : std::uint8_t { Less, LessEqual, Equal, NotEqual, GreaterEqual, Greater };
    struct Node {
        Kind kind;
        Flag flag = Flag::Received;
        Comparison comparison = Comparison::Equal;
        int left = -1;         // operand; of Data: where its pattern begins in bytes_
        int right = -1;        // operand; of Data: how many bytes
        std::int64_t low = 0;  // range, inclusive; of IdMask: the value; of Data: the first byte's place
        std::int64_t high = 0; // of IdMask: the mask; of Signal: the signal's number
        double number = 0;
    };
    struct PatternByte {
        std::uint8_t value;
        std::uint8_t mask;
    };

    bool matches(int node, const RawFrame &frame) const;
    bool dataMatches(const Node &node, const RawFrame &frame) const;
    bool signalMatches(const Node &node, const RawFrame &frame) const;
    static bool hasFlag(Flag flag, const RawFrame &frame);

    std::vector<Node> nodes_;
    std::vector<PatternByte> bytes_;
    int root_ = -1;
    std::shared_ptr<const SignalSource> signals_;
};
