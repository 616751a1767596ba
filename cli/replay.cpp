#include "frames/replay.h"
#include "cli/arguments.h"
#include "cli/commands.h"
#include "cli/databases.h"
#include "cli/frameselection.h"
#include "cli/inputfiles.h"
#include "cli/livesender.h"
#include "cli/messages.h"
#include "cli/platform.h"
#include "cli/progress.h"
#include "cli/traceinput.h"
#include "device/driver/timeunits.h"

#include <algorithm>

namespace
{

constexpr double kLongestIntervalMs = 86'400'000;
constexpr qint64 kMostRepeats = 1'000'000'000;
constexpr std::chrono::minutes kLongWait{1};
constexpr std::uint64_t kMeasuredBytes = 16 << 20; // larger inputs would take long to measure

struct ReplayPlan {
    QStringList inputs;
    std::optional<TraceFormat> inputFormat;
    FrameSelection selection;
    ReplayChannels channels;
    double speed = 1;
    std::optional<double> intervalMs;
    qint64 repeats = 1; // 0: without end
};

void readChannelMap(Arguments &arguments, ReplayPlan *plan)
{
    if (const auto channels = replayChannelsFromText(arguments.text("map")))
        plan->channels = *channels;
    else
        arguments.wrongValue("map", QStringLiteral("is no mapping such as 1=2,2=1"));
}

void readPlan(Arguments &arguments, const Databases &databases, ReplayPlan *plan)
{
    plan->inputs = arguments.operands();
    if (plan->inputs.isEmpty())
        arguments.wrong(QStringLiteral("there is no input"));
    plan->inputFormat = inputFormat(arguments);
    plan->speed = arguments.number("speed", 1 / kLargestReplaySpeed, kLargestReplaySpeed).value_or(1);
    plan->intervalMs = arguments.number("interval", 0, kLongestIntervalMs);
    plan->repeats = arguments.integer("repeat", 0, kMostRepeats).value_or(1);
    if (plan->repeats != 1 && plan->inputs.contains(QStringLiteral("-")))
        arguments.wrong(QStringLiteral("the standard input cannot be repeated"));
    if (plan->intervalMs && arguments.isSet("speed"))
        arguments.wrong(QStringLiteral("--speed and --interval exclude each other"));
    readChannelMap(arguments, plan);
    plan->selection.read(arguments, databases.signalSource());
}

// How far the frames of a recording lead: in recorded time, or in frames that come at a fixed distance.
class ReplayWay
{
public:
    explicit ReplayWay(const ReplayPlan &plan) : counted_(plan.intervalMs.has_value()) {}
    // What this frame adds.
    std::uint64_t step(const RawFrame &frame)
    {
        const std::int64_t before = last_.value_or(frame.time);
        last_ = std::max(before, frame.time);
        return counted_ ? 1 : microseconds(*last_) - microseconds(before);
    }

private:
    static std::uint64_t microseconds(std::int64_t time)
    {
        return static_cast<std::uint64_t>(time / kNanosecondsPerMicrosecond);
    }

    const bool counted_;
    std::optional<std::int64_t> last_;
};

// The way through all inputs, once; 0 when it is not known: inputs that are no files, are large or cannot be opened.
std::uint64_t measuredWay(const ReplayPlan &plan)
{
    std::uint64_t sum = 0;
    const std::uint64_t bytes = totalBytes(plan.inputs);
    if (bytes == 0 || bytes > kMeasuredBytes || !progressIsShown())
        return 0;
    for (const QString &path : plan.inputs) {
        TraceInput input;
        QString trouble;
        if (!input.open(path, plan.inputFormat, &trouble))
            return 0;
        ReplayWay way(plan);
        input.readThrough([&](RawFrame *frames, int count) {
            const int kept = plan.selection.keep(frames, count);
            for (int i = 0; i < kept; ++i)
                sum += way.step(frames[i]);
            return true;
        });
    }
    return sum;
}

class Replay
{
public:
    Replay(const ReplayPlan &plan, LiveSender *sender)
        : plan_(plan),
          sender_(*sender),
          clock_(plan.speed, plan.intervalMs),
          way_(measuredWay(plan)),
          progress_((way_ > 0 ? way_ : totalBytes(plan.inputs)) * static_cast<std::uint64_t>(plan.repeats))
    {
    }

    // false when an input was not read whole.
    bool run()
    {
        bool whole = true;
        for (qint64 pass = 0; whole && (plan_.repeats == 0 || pass < plan_.repeats) && sender_.goesOn(); ++pass) {
            sentInPass_ = false;
            for (const QString &path : plan_.inputs)
                whole = sendFile(path) && whole;
            if (!sentInPass_ && whole)
                break; // nothing to repeat
        }
        return whole;
    }

private:
    bool sendFile(const QString &path)
    {
        TraceInput input;
        if (!input.open(path, plan_.inputFormat))
            return false;
        clock_.beginPass();
        ReplayWay way(plan_);
        input.readThrough([&](RawFrame *frames, int count) {
            const int kept = plan_.selection.keep(frames, count);
            bool goesOn = true;
            for (int i = 0; i < kept && goesOn; ++i) {
                goesOn = sendFrame(frames[i]);
                progress_.add(way_ > 0 ? way.step(frames[i]) : 0, 1);
            }
            progress_.add(way_ > 0 ? 0 : input.newBytes(), 0);
            return goesOn && sender_.goesOn();
        });
        return input.tellTrouble();
    }

    bool sendFrame(const RawFrame &frame)
    {
        const auto due = clock_.due(frame);
        const auto wait = due - LiveSender::Clock::now();
        if (wait > kLongWait)
            tell(QStringLiteral("the next frame is due in %1 s")
                     .arg(std::chrono::duration_cast<std::chrono::seconds>(wait).count()));
        if (!sender_.waitUntil(due))
            return false;
        sentInPass_ = true;
        sender_.count(sendReplayed(frame, plan_.channels));
        return true;
    }

    const ReplayPlan &plan_;
    LiveSender &sender_;
    ReplayClock clock_;
    const std::uint64_t way_; // through all inputs, once
    Progress progress_;
    bool sentInPass_ = false;
};

} // namespace

int runReplay(const QStringList &words)
{
    Arguments arguments("replay", "INPUT...",
                        "Sends the frames of recordings (\"-\": the standard input) with their recorded timing.\n"
                        "Frames that the adapter does not take are counted and told, and the exit code is 1 then.");
    arguments.add("speed", "Times as fast as recorded: 2, 0.5.", "FACTOR");
    arguments.add("interval", "A fixed distance between frames instead; 0: as fast as the bus takes them.", "MS");
    arguments.add("repeat", "Send everything so many times; 0: until Ctrl+C.", "N");
    arguments.add("map", "The adapter's channel for a channel of the recording: 1=2,2=1.", "FROM=TO,...",
                  Repeated::Joined);
    LiveSender::addOptions(arguments);
    addInputOptions(arguments, false);
    FrameSelection::addOptions(arguments);
    Databases::addOptions(arguments);
    addAdapterOptions(arguments);
    if (!arguments.parse(words))
        return arguments.exitCode();
    const AdapterSetup setup = readAdapterSetup(arguments);
    Databases databases;
    databases.load(arguments);
    ReplayPlan plan;
    readPlan(arguments, databases, &plan);
    LiveSender sender;
    sender.readOptions(arguments, plan.inputs + databases.paths());
    if (!arguments.fine())
        return arguments.exitCode();
    if (!sender.open(setup))
        return SomethingLost;
    const bool whole = Replay(plan, &sender).run();
    return sender.close() && whole ? AllWell : SomethingLost;
}
