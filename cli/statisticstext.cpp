#include "cli/statisticstext.h"

#include "cli/databases.h"
#include "cli/valuetexts.h"
#include "device/driver/timeunits.h"

#include <algorithm>

namespace
{

constexpr const char *kKindNames[kFrameKinds] = {"standard", "extended", "fd", "fd_brs", "remote", "error"};

QString messageName(const IdentifierKey &key, const Databases &databases)
{
    const KnownMessage *message = key.error ? nullptr : databases.lookup().find(key.channel, key.id, key.extended);
    return message ? message->definition->name : QString();
}

const char *directionText(const IdentifierKey &key)
{
    return key.direction == Direction::Sent ? "tx" : "rx";
}

QString identifierText(const IdentifierKey &key)
{
    return QStringLiteral("%1").arg(key.id, key.extended || key.error ? 8 : 3, 16, QLatin1Char('0')).toUpper();
}

double milliseconds(double nanoseconds)
{
    return nanoseconds / kNanosecondsPerMillisecond;
}

std::vector<const IdentifierStatistics *> inOrder(const IdentifierTable &table)
{
    std::vector<const IdentifierStatistics *> entries;
    for (const IdentifierStatistics &entry : table.entries())
        entries.push_back(&entry);
    std::sort(entries.begin(), entries.end(),
              [](const auto *a, const auto *b) { return a->key.packed() < b->key.packed(); });
    return entries;
}

std::uint64_t ofKind(const ChannelStatistics &channel, std::size_t kind)
{
    return channel.counted(Direction::Received, static_cast<FrameKind>(kind)).frames +
           channel.counted(Direction::Sent, static_cast<FrameKind>(kind)).frames;
}

QString percent(const std::optional<double> &share)
{
    return share ? QString::number(*share * 100, 'f', 1) + QStringLiteral(" %") : QStringLiteral("unknown");
}

void appendChannel(std::string *out, unsigned number, const ChannelStatistics &channel)
{
    const KindCount received = channel.counted(Direction::Received);
    const KindCount sent = channel.counted(Direction::Sent);
    const double seconds =
        channel.hasTime() ? static_cast<double>(channel.lastTime() - channel.firstTime()) / kNanosecondsPerSecond : 0;
    QString line = QStringLiteral("channel %1: %2 frames in %3 s, rx %4, tx %5, %6 data bytes, load %7, peak %8\n")
                       .arg(number)
                       .arg(received.frames + sent.frames)
                       .arg(seconds, 0, 'f', 6)
                       .arg(received.frames)
                       .arg(sent.frames)
                       .arg(received.bytes + sent.bytes)
                       .arg(percent(channel.loadMean()), percent(channel.loadPeak()));
    QStringList kinds;
    for (std::size_t kind = 0; kind < kFrameKinds; ++kind)
        if (const std::uint64_t frames = ofKind(channel, kind))
            kinds << QStringLiteral("%1 %2").arg(QLatin1String(kKindNames[kind])).arg(frames);
    if (!kinds.isEmpty())
        line += QStringLiteral("  ") + kinds.join(QStringLiteral(", ")) + QLatin1Char('\n');
    appendText(out, line);
}

void appendKey(std::string *out, const IdentifierKey &key, const Databases &databases)
{
    out->append("\"channel\":");
    appendDecimal(out, key.channel);
    out->append(",\"direction\":\"").append(directionText(key)).append("\",\"id\":");
    appendDecimal(out, key.id);
    const auto flag = [&](const char *name, bool value) {
        out->append(",\"").append(name).append(value ? "\":true" : "\":false");
    };
    flag("extended", key.extended);
    flag("remote", key.remote);
    flag("error", key.error);
    const QString name = messageName(key, databases);
    if (!name.isEmpty()) {
        out->append(",\"message\":");
        appendJsonText(out, name);
    }
}

void appendNamed(std::string *out, const char *name, double number)
{
    out->append(",\"").append(name).append("\":");
    appendNumber(out, number);
}

void appendTime(std::string *out, const char *name, std::int64_t time)
{
    out->append(",\"").append(name).append("\":");
    appendSeconds(out, time, 9);
}

void appendChannelJson(std::string *out, unsigned number, const ChannelStatistics &channel)
{
    const KindCount received = channel.counted(Direction::Received);
    const KindCount sent = channel.counted(Direction::Sent);
    out->append("{\"channel\":");
    appendDecimal(out, number);
    appendNamed(out, "frames", static_cast<double>(received.frames + sent.frames));
    appendNamed(out, "rx", static_cast<double>(received.frames));
    appendNamed(out, "tx", static_cast<double>(sent.frames));
    appendNamed(out, "bytes", static_cast<double>(received.bytes + sent.bytes));
    for (std::size_t kind = 0; kind < kFrameKinds; ++kind)
        appendNamed(out, kKindNames[kind], static_cast<double>(ofKind(channel, kind)));
    appendTime(out, "first", channel.hasTime() ? channel.firstTime() : 0);
    appendTime(out, "last", channel.hasTime() ? channel.lastTime() : 0);
    if (const auto load = channel.loadMean())
        appendNamed(out, "load_mean", *load);
    if (const auto load = channel.loadPeak())
        appendNamed(out, "load_peak", *load);
    out->push_back('}');
}

void appendIdentifierJson(std::string *out, const IdentifierStatistics &entry, const Databases &databases)
{
    out->push_back('{');
    appendKey(out, entry.key, databases);
    appendNamed(out, "count", static_cast<double>(entry.count));
    appendTime(out, "first", entry.firstSeen);
    appendTime(out, "last", entry.lastSeen);
    if (entry.period.count > 0) {
        appendNamed(out, "mean_ms", milliseconds(entry.period.mean));
        appendNamed(out, "minimum_ms", milliseconds(static_cast<double>(entry.period.minimum)));
        appendNamed(out, "maximum_ms", milliseconds(static_cast<double>(entry.period.maximum)));
        appendNamed(out, "deviation_ms", milliseconds(entry.period.deviation()));
    }
    out->push_back('}');
}

const char *violationName(Violation::Kind kind)
{
    switch (kind) {
    case Violation::Kind::Late:
        return "late";
    case Violation::Kind::Early:
        return "early";
    case Violation::Kind::Missing:
        return "missing";
    case Violation::Kind::New:
        break;
    }
    return "new";
}

void appendViolationJson(std::string *out, const Violation &violation, const Databases &databases)
{
    out->append("{\"kind\":\"").append(violationName(violation.kind)).append("\",");
    appendKey(out, violation.key, databases);
    appendTime(out, "time", violation.time);
    appendNamed(out, "distance_ms", milliseconds(static_cast<double>(violation.distance)));
    appendNamed(out, "limit_ms", milliseconds(static_cast<double>(violation.limit)));
    out->push_back('}');
}

template <typename Items, typename Append> void appendArray(std::string *out, const Items &items, Append append)
{
    out->push_back('[');
    bool first = true;
    for (const auto &item : items) {
        if (!first)
            out->push_back(',');
        first = false;
        append(item);
    }
    out->push_back(']');
}

} // namespace

void appendStatistics(std::string *out, const StatisticsResult &result, const Databases &databases)
{
    appendText(out, QStringLiteral("%1 frames in ").arg(result.frames) + result.input + QLatin1Char('\n'));
    for (const auto &[number, channel] : result.statistics.channels())
        appendChannel(out, number, channel);
    const auto entries = inOrder(result.statistics.identifiers());
    if (entries.empty())
        return;
    out->append("channel dir        id      count    mean ms     min ms     max ms     dev ms  last data\n");
    for (const IdentifierStatistics *entry : entries) {
        const PeriodStatistics &period = entry->period;
        QString line = QStringLiteral("%1  %2  %3 %4")
                           .arg(entry->key.channel, 7)
                           .arg(QLatin1String(directionText(entry->key)))
                           .arg(identifierText(entry->key), 8)
                           .arg(entry->count, 10);
        for (const double value : {period.mean, static_cast<double>(period.minimum),
                                   static_cast<double>(period.maximum), period.deviation()})
            line += period.count > 0 ? QStringLiteral(" %1").arg(milliseconds(value), 10, 'f', 3)
                                     : QStringLiteral("          -");
        line += QStringLiteral("  ");
        if (entry->key.error)
            line += QStringLiteral("error frame ");
        if (entry->key.remote)
            line += QStringLiteral("remote frame");
        else
            line += QString::fromLatin1(
                QByteArray(reinterpret_cast<const char *>(entry->last.data), entry->last.length).toHex(' ').toUpper());
        const QString name = messageName(entry->key, databases);
        if (!name.isEmpty())
            line += QStringLiteral("  ") + name;
        appendText(out, line + QLatin1Char('\n'));
    }
}

void appendViolations(std::string *out, const StatisticsResult &result, const Databases &databases)
{
    for (const Violation &violation : result.violations) {
        appendText(out, result.input + QStringLiteral(": "));
        appendSeconds(out, violation.time, 6);
        const QString name = messageName(violation.key, databases);
        QString line = QStringLiteral(" s: channel %1 %2 %3%4 ")
                           .arg(violation.key.channel)
                           .arg(QLatin1String(directionText(violation.key)), identifierText(violation.key),
                                name.isEmpty() ? QString() : QLatin1Char(' ') + name);
        line += QLatin1String(violationName(violation.kind));
        if (violation.kind != Violation::Kind::New)
            line += QStringLiteral(": %1 ms").arg(milliseconds(static_cast<double>(violation.distance)), 0, 'f', 3);
        if (violation.kind != Violation::Kind::New && violation.limit > 0)
            line += QStringLiteral(", the limit is %1 ms")
                        .arg(milliseconds(static_cast<double>(violation.limit)), 0, 'f', 3);
        appendText(out, line + QLatin1Char('\n'));
    }
}

void appendStatisticsJson(std::string *out, const StatisticsResult &result, const Databases &databases)
{
    out->append("{\"input\":");
    appendJsonText(out, result.input);
    out->append(",\"frames\":");
    appendDecimal(out, result.frames);
    out->append(",\"channels\":");
    appendArray(out, result.statistics.channels(),
                [&](const auto &channel) { appendChannelJson(out, channel.first, channel.second); });
    out->append(",\"identifiers\":");
    appendArray(out, inOrder(result.statistics.identifiers()),
                [&](const IdentifierStatistics *entry) { appendIdentifierJson(out, *entry, databases); });
    if (result.checked) {
        out->append(",\"violations\":");
        appendArray(out, result.violations,
                    [&](const Violation &violation) { appendViolationJson(out, violation, databases); });
    }
    out->append("}\n");
}
