#include "cli/arguments.h"
#include "cli/commands.h"
#include "cli/livesender.h"
#include "cli/messages.h"
#include "cli/progress.h"
#include "transmit/transmitengine.h"
#include "transmit/transmitfile.h"

#include <thread>

namespace
{

constexpr std::chrono::milliseconds kLook{10};
constexpr std::chrono::milliseconds kLastFrame{1000}; // a driver may hold its sender for so long after the end

// Counts of all entries together.
TransmitCounts sumOf(const std::vector<TransmitCounts> &counts)
{
    TransmitCounts sum;
    for (const TransmitCounts &count : counts) {
        sum.sent += count.sent;
        sum.refused += count.refused;
        sum.skipped += count.skipped;
    }
    return sum;
}

// The entries that send by themselves on a channel that is opened; what is left out is told.
TransmitList sendableEntries(const TransmitList &entries, const AdapterSetup &setup, bool *whole)
{
    TransmitList kept;
    int onRequest = 0;
    int elsewhere = 0;
    for (const TransmitEntryPointer &entry : entries) {
        if (!entry->on)
            continue;
        if (entry->mode == TransmitMode::OnRequest)
            ++onRequest;
        else if (!setup.used[entry->channel])
            ++elsewhere;
        else
            kept << entry;
    }
    if (onRequest > 0)
        tell(QStringLiteral("%1 entries are sent on a key only, in the window").arg(onRequest));
    if (elsewhere > 0)
        tell(QStringLiteral("%1 entries are on a channel that is not opened").arg(elsewhere));
    *whole = elsewhere == 0;
    return kept;
}

// Until nothing is left to send, a limit is reached, the adapter goes or the user interrupts.
TransmitCounts sendList(const TransmitList &entries, const TransmitLimits &limits, LiveSender *sender)
{
    TransmitEngine engine([](const QString &line) { tell(line); });
    Progress progress(0);
    std::uint64_t shown = 0;
    const auto wait = [&](LiveSender::Clock::time_point until) {
        const std::uint64_t sent = sumOf(engine.counts()).sent;
        progress.add(0, sent - shown);
        shown = sent;
        return sender->waitUntil(until);
    };
    engine.setEntries(entries);
    engine.start(limits);
    while (engine.hasWork() && wait(LiveSender::Clock::now() + kLook)) {
    }
    engine.stop();
    const auto patience = LiveSender::Clock::now() + kLastFrame;
    while (engine.hasWork() && LiveSender::Clock::now() < patience)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return sumOf(engine.counts());
}

} // namespace

int runTransmit(const QStringList &words)
{
    Arguments arguments("transmit", "LIST",
                        "Sends a transmit list that the window has saved: every entry that is on, with its mode,\n"
                        "interval and changes. Ends when counted entries are through and there are no others, at\n"
                        "the limit that an option gives, or with Ctrl+C. Exit code 1 when frames were refused or\n"
                        "moments missed.");
    arguments.add("duration", "End after so many seconds.", "SECONDS");
    arguments.add("count", "End after so many frames, of all entries together.", "N");
    LiveSender::addOptions(arguments);
    addAdapterOptions(arguments);
    if (!arguments.parse(words))
        return arguments.exitCode();
    const AdapterSetup setup = readAdapterSetup(arguments);
    TransmitLimits limits;
    const double seconds = arguments.number("duration", 0.001, kLongestDuration).value_or(0);
    limits.duration = std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1e3));
    limits.frames = static_cast<std::uint64_t>(arguments.integer("count", 1, INT64_MAX).value_or(0));
    if (arguments.operands().size() != 1)
        arguments.wrong(QStringLiteral("give one list"));
    LiveSender sender;
    sender.readOptions(arguments, arguments.operands());
    if (!arguments.fine())
        return arguments.exitCode();

    const QString path = arguments.operands().constFirst();
    const TransmitFile file = readTransmitFile(path);
    if (!file.error.isEmpty()) {
        tell(path + QStringLiteral(": ") + file.error);
        return SomethingLost;
    }
    bool whole = true;
    const TransmitList entries = sendableEntries(file.entries, setup, &whole);
    if (entries.isEmpty()) {
        tell(path + QStringLiteral(": there is nothing to send by itself"));
        return SomethingLost;
    }
    if (!sender.open(setup))
        return SomethingLost;
    const TransmitCounts counts = sendList(entries, limits, &sender);
    sender.addCounts(counts.sent, counts.refused);
    if (counts.skipped > 0)
        tell(QStringLiteral("%1 moments were missed").arg(counts.skipped));
    return sender.close() && whole && counts.skipped == 0 ? AllWell : SomethingLost;
}
