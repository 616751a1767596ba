#include "cli/arguments.h"
#include "cli/commands.h"
#include "cli/databases.h"
#include "cli/frameselection.h"
#include "cli/inputfiles.h"
#include "cli/livetap.h"
#include "cli/progress.h"
#include "cli/recordoptions.h"
#include "cli/recordtarget.h"

#include <algorithm>

int runRecord(const QStringList &words)
{
    Arguments arguments("record", "OUTPUT",
                        "Records what the adapter's channels receive and send. \"-\" is the standard output.\n"
                        "Settings that no option gives are those stored by the window. Ctrl+C ends the recording.");
    addAdapterOptions(arguments);
    arguments.add("duration", "End after so many seconds.", "SECONDS");
    arguments.add("count", "End after so many recorded frames.", "N");
    addRecordOptions(arguments);
    FrameSelection::addOptions(arguments);
    Databases::addOptions(arguments);
    if (!arguments.parse(words))
        return arguments.exitCode();
    const AdapterSetup setup = readAdapterSetup(arguments);
    const auto seconds = arguments.number("duration", 0, kLongestDuration);
    const auto most = arguments.integer("count", 1, INT64_MAX);
    if (arguments.operands().size() != 1)
        arguments.wrong(QStringLiteral("give one output"));
    RecorderSettings settings = readRecordSettings(arguments, arguments.operands().value(0), "format");
    readRecordRow(arguments, &settings);
    settings.mostFrames = static_cast<std::uint64_t>(most.value_or(0));
    Databases databases;
    databases.load(arguments);
    refuseInput(arguments, settings.path, databases.paths());
    FrameSelection selection;
    selection.read(arguments, databases.signalSource());
    if (!arguments.fine())
        return arguments.exitCode();

    RecordTarget target(settings);
    Progress progress(0);
    bool begun = false;
    const LiveListener listener = {
        [&](std::int64_t startUtc) { return begun = target.begin(startUtc); },
        [&](RawFrame *frames, int count) {
            const int kept = selection.keep(frames, count);
            progress.add(0, static_cast<std::uint64_t>(count));
            return target.write(frames, kept);
        },
        [&](std::uint64_t count) { target.markLost(count); },
    };
    const bool heardAll = listenLive(setup, seconds, listener);
    const bool recordedAll = begun && target.end();
    return heardAll && recordedAll ? AllWell : SomethingLost;
}
