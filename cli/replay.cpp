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

#include <algorithm>
#include <map>
#include <utility>

namespace
{

constexpr int kBatch = 256;
constexpr double kLargestSpeed = 1e6;
constexpr double kLongestIntervalMs = 86'400'000;
constexpr qint64 kMostRepeats = 1'000'000'000;
constexpr std::chrono::minutes kLongWait{1};

struct ReplayPlan {
    QStringList inputs;
    std::optional<TraceFormat> inputFormat;
    FrameSelection selection;
    std::map<unsigned, unsigned> channels; // of the recording to the adapter's, both from 1; others stay as they are
    double speed = 1;
    std::optional<double> intervalMs;
    qint64 repeats = 1; // 0: without end
};

// When each frame is due: at its recorded time after the pass's first one, or one interval after the frame before.
// Absolute, so that what sending costs does not add up.
class ReplayClock
{
public:
    using Clock = LiveSender::Clock;

    ReplayClock(double speed, std::optional<double> intervalMs) : speed_(speed), intervalMs_(intervalMs) {}

    // The frames that follow begin anew, behind what was due last.
    void beginPass() { first_.reset(); }

    Clock::time_point due(const RawFrame &frame)
    {
        if (!begun_)
            last_ = Clock::now();
        const bool isFirst = !std::exchange(begun_, true);
        if (intervalMs_)
            return last_ = isFirst ? last_ : last_ + clockTime(*intervalMs_ / 1e3);
        if (!first_) {
            first_ = frame.time;
            begin_ = last_;
        }
        const auto moment = begin_ + clockTime(static_cast<double>(frame.time - *first_) / 1e9 / speed_);
        last_ = std::max(last_, moment);
        return moment;
    }

private:
    static Clock::duration clockTime(double seconds)
    {
        return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    }

    const double speed_;
    const std::optional<double> intervalMs_;
    Clock::time_point begin_{}; // of the pass
    Clock::time_point last_{};  // due so far
    std::optional<std::int64_t> first_;
    bool begun_ = false;
};

void readChannelMap(Arguments &arguments, ReplayPlan *plan)
{
    const QString text = arguments.text("map");
    for (const QString &pair : text.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        bool fromIsNumber = false;
        bool toIsNumber = false;
        const uint from = pair.section(QLatin1Char('='), 0, 0).toUInt(&fromIsNumber);
        const uint to = pair.section(QLatin1Char('='), 1).toUInt(&toIsNumber);
        if (!fromIsNumber || !toIsNumber || from < 1 || to < 1 || to > kChannelCount)
            arguments.wrongValue("map", QStringLiteral("is no mapping such as 1=2,2=1"));
        plan->channels[from] = to;
    }
}

void readPlan(Arguments &arguments, const Databases &databases, ReplayPlan *plan)
{
    plan->inputs = arguments.operands();
    if (plan->inputs.isEmpty())
        arguments.wrong(QStringLiteral("there is no input"));
    plan->inputFormat = inputFormat(arguments);
    plan->speed = arguments.number("speed", 1 / kLargestSpeed, kLargestSpeed).value_or(1);
    plan->intervalMs = arguments.number("interval", 0, kLongestIntervalMs);
    plan->repeats = arguments.integer("repeat", 0, kMostRepeats).value_or(1);
    if (plan->repeats != 1 && plan->inputs.contains(QStringLiteral("-")))
        arguments.wrong(QStringLiteral("the standard input cannot be repeated"));
    if (plan->intervalMs && arguments.isSet("speed"))
        arguments.wrong(QStringLiteral("--speed and --interval exclude each other"));
    readChannelMap(arguments, plan);
    plan->selection.read(arguments, databases.isEmpty() ? nullptr : &databases);
}

class Replay
{
public:
    Replay(const ReplayPlan &plan, LiveSender *sender)
        : plan_(plan),
          sender_(*sender),
          clock_(plan.speed, plan.intervalMs),
          progress_(totalBytes(plan.inputs) * static_cast<std::uint64_t>(plan.repeats))
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
        std::vector<RawFrame> frames(kBatch);
        bool goesOn = true;
        while (goesOn && sender_.goesOn()) {
            const int count = input.read(frames.data(), kBatch);
            const bool more = count == kBatch || !input.atEnd();
            const int kept = plan_.selection.keep(frames.data(), count);
            for (int i = 0; i < kept && goesOn; ++i)
                goesOn = sendFrame(frames[static_cast<std::size_t>(i)]);
            goesOn = goesOn && more;
            progress_.add(input.newBytes(), static_cast<std::uint64_t>(kept));
        }
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
        const auto mapped = plan_.channels.find(frame.channel);
        const unsigned channel = mapped == plan_.channels.end() ? frame.channel : mapped->second;
        if (channel >= 1 && channel <= kChannelCount)
            sender_.send(channel - 1, frame);
        else
            sender_.countRefused();
        return true;
    }

    const ReplayPlan &plan_;
    LiveSender &sender_;
    ReplayClock clock_;
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
    arguments.add("map", "The adapter's channel for a channel of the recording: 1=2,2=1.", "FROM=TO,...");
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
    sender.readOptions(arguments);
    if (!arguments.fine())
        return arguments.exitCode();
    if (!sender.open(setup))
        return SomethingLost;
    const bool whole = Replay(plan, &sender).run();
    return sender.close() && whole ? AllWell : SomethingLost;
}
