#include "cli/arguments.h"
#include "cli/commands.h"
#include "cli/databases.h"
#include "cli/frameselection.h"
#include "cli/frametext.h"
#include "cli/inputfiles.h"
#include "cli/livetap.h"
#include "cli/messages.h"
#include "cli/platform.h"
#include "cli/progress.h"
#include "cli/textoutput.h"
#include "cli/traceinput.h"
#include "traces/tracereader.h"

#include <algorithm>

namespace
{

// What is done with every frame that is read: chosen, worded, counted.
struct Shower {
    FrameSelection selection;
    FrameText text;
    TextOutput output;
    bool json = false;
    std::optional<qint64> left; // frames that may still be shown

    // false: enough, or nobody reads any more.
    bool show(RawFrame *frames, int count)
    {
        int kept = selection.keep(frames, count);
        if (left)
            *left -= kept = static_cast<int>(std::min<qint64>(kept, *left));
        for (int i = 0; i < kept; ++i) {
            if (json)
                text.appendJson(output.text(), frames[i]);
            else
                text.appendLine(output.text(), frames[i]);
        }
        return output.drain() && !(left && *left == 0);
    }
};

std::optional<ShownTime> shownTime(Arguments &arguments)
{
    const QString kind = arguments.isSet("times") ? arguments.text("times") : QStringLiteral("relative");
    if (kind == QLatin1String("relative"))
        return ShownTime::Relative;
    if (kind == QLatin1String("absolute"))
        return ShownTime::Absolute;
    if (kind == QLatin1String("delta"))
        return ShownTime::Delta;
    arguments.wrongValue("times", QStringLiteral("is none of relative, absolute, delta"));
    return std::nullopt;
}

// false when the input was not read to its end or not without loss.
bool showFile(const QString &path, std::optional<TraceFormat> format, Shower *shower, Progress *progress)
{
    TraceInput input;
    if (!input.open(path, format))
        return false;
    bool begun = false;
    const auto show = [&](RawFrame *frames, int count) {
        if (count > 0 && !begun)
            shower->text.setStart(input.reader().startUtc().value_or(input.base()));
        begun = begun || count > 0;
        if (progress)
            progress->add(input.newBytes(), static_cast<std::uint64_t>(count));
        return shower->show(frames, count);
    };
    input.readThrough(show, [&] { return shower->output.flush(); });
    return input.tellTrouble();
}

bool showLive(const AdapterSetup &setup, std::optional<double> seconds, Shower *shower)
{
    return listenLive(setup, seconds,
                      {[&](std::int64_t startUtc) {
                           shower->text.setStart(startUtc);
                           return true;
                       },
                       [&](RawFrame *frames, int count) {
                           const bool goesOn = shower->show(frames, count);
                           return shower->output.flush() && goesOn;
                       },
                       [](std::uint64_t) {}});
}

} // namespace

int runShow(const QStringList &words)
{
    Arguments arguments("show", "[INPUT...]",
                        "Shows frames as text: of recordings (\"-\": the standard input), or live without an input.");
    arguments.add("json", "An object a line: time, channel, direction, id, ..., with a database message and signals.");
    arguments.add("times", "relative (to the recording's start; the default), absolute (since 1970) or delta.", "KIND");
    arguments.add("count", "End after so many frames shown.", "N");
    arguments.add("duration", "End after so many seconds, live.", "SECONDS");
    addInputOptions(arguments, false);
    FrameSelection::addOptions(arguments);
    Databases::addOptions(arguments);
    addAdapterOptions(arguments);
    if (!arguments.parse(words))
        return arguments.exitCode();
    const QStringList inputs = arguments.operands();
    const AdapterSetup setup = readAdapterSetup(arguments);
    const auto seconds = arguments.number("duration", 0, kLongestDuration);
    const auto format = inputFormat(arguments);
    Databases databases;
    databases.load(arguments);
    const auto time = shownTime(arguments);
    Shower shower = {{},
                     FrameText(time.value_or(ShownTime::Relative), databases.isEmpty() ? nullptr : &databases),
                     {},
                     arguments.isSet("json"),
                     arguments.integer("count", 1, INT64_MAX)};
    shower.selection.read(arguments, databases.signalSource());
    if (!arguments.fine())
        return arguments.exitCode();

    bool whole = true;
    std::optional<Progress> progress;
    if (!inputs.isEmpty() && standardOutputIsFile())
        progress.emplace(totalBytes(inputs));
    if (inputs.isEmpty())
        whole = showLive(setup, seconds, &shower);
    for (const QString &input : inputs)
        if (!interrupted() && !shower.output.failed() && !(shower.left && *shower.left == 0))
            whole = showFile(input, format, &shower, progress ? &*progress : nullptr) && whole;
    return shower.output.flush() && whole ? AllWell : SomethingLost;
}
