// Names a signal on a channel, whatever database it is in at the moment.
#pragma once

#include <QString>

#include <cstdint>

struct SignalId {
    std::uint16_t channel = 1; // from 1
    std::uint32_t message = 0; // identifier as the database has it, without flags
    bool extended = false;
    QString signal;

    // "1:x18FF50E5:Speed"; kept in settings and carried by drag and drop.
    QString toText() const;
    // false: the text is none of these, and nothing was changed.
    bool fromText(const QString &text);
};

inline bool operator==(const SignalId &a, const SignalId &b)
{
    return a.channel == b.channel && a.message == b.message && a.extended == b.extended && a.signal == b.signal;
}

// Of dragged signals: a line with the text of each, UTF-8.
extern const char *const kSignalsMimeType;
