#include "cli/frameselection.h"

#include "cli/arguments.h"

#include <algorithm>

namespace
{

constexpr double kLatestTime = 9e9;

QString secondsText(std::optional<double> seconds)
{
    return seconds ? QString::number(*seconds, 'f', 9) : QString();
}

} // namespace

void FrameSelection::addOptions(Arguments &arguments)
{
    arguments.add("id",
                  "Only these identifiers, standard and extended alike, hexadecimal: 123,100..1FF,120/7F0 "
                  "(value/mask).",
                  "LIST", Repeated::Joined);
    arguments.add("channels", "Only these channels, from 1: 1 or 1,2 or 1..4.", "LIST", Repeated::Joined);
    arguments.add("from", "Only from this time on, in seconds since the recording's start.", "SECONDS");
    arguments.add("to", "Only up to this time.", "SECONDS");
    arguments.add("filter",
                  "Only frames that match, such as \"id 100..1FF and data 02 ?? 7F and not rx\"; "
                  "with a database also \"signal Engine.Speed >= 1000\".",
                  "TEXT");
}

void FrameSelection::add(Arguments &arguments, const char *option, const QString &condition, int prefix,
                         const std::shared_ptr<const SignalSource> &signalSource)
{
    FilterError error;
    const auto filter = FrameFilter::parse(condition, &error, signalSource);
    if (filter)
        filters_.push_back(*filter);
    else
        arguments.wrong(QStringLiteral("--%1, at character %2: ")
                            .arg(QLatin1String(option))
                            .arg(std::max(0, error.position - prefix) + 1) +
                        error.message);
}

void FrameSelection::read(Arguments &arguments, const std::shared_ptr<const SignalSource> &signalSource)
{
    const QLatin1String id("id ");
    const QLatin1String channel("channel ");
    const auto from = arguments.number("from", 0, kLatestTime);
    const auto to = arguments.number("to", 0, kLatestTime);
    timed_ = from || to;
    if (from && to && *from > *to)
        arguments.wrong(QStringLiteral("--from is behind --to"));
    if (timed_)
        add(arguments, from ? "from" : "to",
            QStringLiteral("time ") + secondsText(from) + QStringLiteral("..") + secondsText(to), 0);
    if (arguments.isSet("id"))
        add(arguments, "id", id + arguments.text("id"), id.size());
    for (const QString &part : arguments.text("channels").split(QLatin1Char(',')))
        if (part.section(QStringLiteral(".."), 0, 0).trimmed() == QLatin1String("0"))
            arguments.wrongValue("channels", QStringLiteral("has a channel 0; the first one is 1"));
    if (arguments.isSet("channels"))
        add(arguments, "channels", channel + arguments.text("channels"), channel.size());
    if (arguments.isSet("filter"))
        add(arguments, "filter", arguments.text("filter"), 0, signalSource);
}

bool FrameSelection::matches(const RawFrame &frame) const
{
    return std::all_of(filters_.begin(), filters_.end(),
                       [&](const FrameFilter &filter) { return filter.matches(frame); });
}

bool FrameSelection::matchesAnyTime(const RawFrame &frame) const
{
    return std::all_of(filters_.begin() + (timed_ ? 1 : 0), filters_.end(),
                       [&](const FrameFilter &filter) { return filter.matches(frame); });
}

int FrameSelection::keep(RawFrame *frames, int count) const
{
    if (isEverything())
        return count;
    const auto end = std::remove_if(frames, frames + count, [this](const RawFrame &frame) { return !matches(frame); });
    return static_cast<int>(end - frames);
}
