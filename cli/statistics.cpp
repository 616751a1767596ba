#include "cli/arguments.h"
#include "cli/commands.h"
#include "cli/databases.h"
#include "cli/frameselection.h"
#include "cli/inputfiles.h"
#include "cli/livetap.h"
#include "cli/messages.h"
#include "cli/platform.h"
#include "cli/progress.h"
#include "cli/statisticstext.h"
#include "cli/textoutput.h"
#include "cli/traceinput.h"
#include "statistics/databasebaseline.h"
#include "traces/tracereader.h"

#include <QSaveFile>

#include <atomic>
#include <map>
#include <mutex>
#include <set>

namespace
{

constexpr double kLargestTolerance = 100;
constexpr std::int64_t kLookEvery = 100'000'000; // nanoseconds of the frames' time between looks for what is missing

struct StatisticsPlan {
    FrameSelection selection;
    Databases databases;
    std::optional<TraceFormat> inputFormat;
    BusRates rates[kChannelCount];
    std::optional<Baseline> baseline; // to check against
    bool checkDatabases = false;      // instead: their cycle times, on every channel that has frames
    double tolerance = Supervisor::kDefaultTolerance;
    QString learn; // file to write
    bool json = false;
};

// Counts the frames of one source.
class Counter
{
public:
    Counter(const StatisticsPlan &plan, const QString &input) : plan_(plan)
    {
        result_.input = input;
        for (unsigned channel = 0; channel < kChannelCount; ++channel)
            if (plan.rates[channel].arbitration > 0)
                result_.statistics.setRates(channel + 1, plan.rates[channel]);
        result_.checked = plan.baseline || plan.checkDatabases;
        if (result_.checked)
            supervisor_.emplace(chosen(plan.baseline.value_or(Baseline())), plan.tolerance);
    }

    void add(RawFrame *frames, int count)
    {
        const int kept = plan_.selection.keep(frames, count);
        result_.frames += static_cast<std::uint64_t>(kept);
        result_.statistics.add(frames, static_cast<std::size_t>(kept));
        for (int i = 0; i < kept && supervisor_; ++i)
            supervise(frames[i]);
    }

    // The end: what never came, what is to be learned. false when something failed.
    bool finish(std::string *out)
    {
        if (plan_.checkDatabases && expected_.empty())
            expect(1); // not even one channel has frames
        if (supervisor_)
            supervisor_->finish(&result_.violations);
        if (plan_.json)
            appendStatisticsJson(out, result_, plan_.databases);
        else if (supervisor_)
            appendViolations(out, result_, plan_.databases);
        else
            appendStatistics(out, result_, plan_.databases);
        if (const std::uint64_t beyond = result_.statistics.beyondCeiling())
            tell(result_.input + QStringLiteral(": %1 frames of too many identifiers or channels").arg(beyond));
        const bool learned = plan_.learn.isEmpty() || learn();
        return learned && result_.violations.empty() && result_.statistics.beyondCeiling() == 0;
    }

private:
    // Nothing is expected of messages whose frames are not chosen.
    Baseline chosen(Baseline baseline) const
    {
        for (BaselineMessage &message : baseline.messages) {
            RawFrame frame;
            frame.id = message.key.id;
            frame.channel = message.key.channel;
            frame.direction = message.key.direction;
            frame.extended = message.key.extended;
            if (plan_.selection.matchesAnyTime(frame))
                continue;
            message.mean = 0;
            message.optional = true;
        }
        return baseline;
    }

    void expect(unsigned channel)
    {
        if (plan_.checkDatabases && expected_.insert(channel).second)
            supervisor_->expect(chosen(databaseBaseline(plan_.databases.entries(), {channel})));
    }

    void supervise(const RawFrame &frame)
    {
        expect(frame.channel);
        supervisor_->add(frame, &result_.violations);
        if (frame.time < nextLook_)
            return;
        nextLook_ = frame.time + kLookEvery;
        supervisor_->advance(frame.time, &result_.violations);
    }

    bool learn() const
    {
        const Baseline baseline = learnBaseline(result_.statistics.identifiers());
        const QByteArray json = toJson(baseline);
        QSaveFile file(plan_.learn);
        if (file.open(QIODevice::WriteOnly) && file.write(json) == json.size() && file.commit()) {
            tell(QStringLiteral("%1 messages learned into ").arg(baseline.messages.size()) + plan_.learn);
            return true;
        }
        tell(plan_.learn + QStringLiteral(" cannot be written: ") + file.errorString());
        return false;
    }

    const StatisticsPlan &plan_;
    StatisticsResult result_;
    std::optional<Supervisor> supervisor_;
    std::set<unsigned> expected_; // channels whose databases are checked
    std::int64_t nextLook_ = INT64_MIN;
};

// Hands the results of side-by-side jobs to the standard output in the order of the inputs.
class OrderedOutput
{
public:
    void add(int index, std::string text)
    {
        const std::lock_guard<std::mutex> guard(lock_);
        waiting_[index] = std::move(text);
        for (auto first = waiting_.find(next_); first != waiting_.end(); first = waiting_.find(++next_)) {
            output_.text()->append(first->second);
            output_.flush();
            waiting_.erase(first);
        }
    }
    bool failed() const { return output_.failed(); }

private:
    std::mutex lock_; // guards the rest
    std::map<int, std::string> waiting_;
    int next_ = 0;
    TextOutput output_;
};

bool countFile(const StatisticsPlan &plan, const QString &path, Progress *progress, std::string *out)
{
    TraceInput input;
    if (!input.open(path, plan.inputFormat))
        return false;
    Counter counter(plan, path);
    const bool ended = input.readThrough([&](RawFrame *frames, int count) {
        counter.add(frames, count);
        progress->add(input.newBytes(), static_cast<std::uint64_t>(count));
        return true;
    });
    const bool whole = input.tellTrouble();
    return counter.finish(out) && whole && (ended || input.isLive());
}

int countFiles(const StatisticsPlan &plan, const QStringList &inputs, int jobs)
{
    OrderedOutput output;
    Progress progress(totalBytes(inputs));
    std::atomic<bool> lost{false};
    runSideBySide(inputs.size(), jobs, [&](int index) {
        std::string text;
        if (!countFile(plan, inputs[index], &progress, &text))
            lost = true;
        output.add(index, std::move(text));
    });
    return lost || output.failed() ? SomethingLost : AllWell;
}

int countLive(const StatisticsPlan &plan, const AdapterSetup &setup, std::optional<double> seconds)
{
    Counter counter(plan, QStringLiteral("live"));
    Progress progress(0);
    const bool whole = listenLive(setup, seconds,
                                  {[](std::int64_t) { return true; },
                                   [&](RawFrame *frames, int count) {
                                       counter.add(frames, count);
                                       progress.add(0, static_cast<std::uint64_t>(count));
                                       return true;
                                   },
                                   [](std::uint64_t) {}});
    TextOutput output;
    const bool well = counter.finish(output.text());
    return output.flush() && well && whole ? AllWell : SomethingLost;
}

void readBaseline(Arguments &arguments, StatisticsPlan *plan)
{
    plan->tolerance = arguments.number("tolerance", 0, kLargestTolerance).value_or(Supervisor::kDefaultTolerance);
    plan->checkDatabases = arguments.isSet("check-dbc");
    if (plan->checkDatabases && (arguments.isSet("check") || plan->databases.isEmpty()))
        arguments.wrong(QStringLiteral("--check-dbc takes --dbc in place of --check"));
    if (!arguments.isSet("check"))
        return;
    QFile file(arguments.text("check"));
    QString error;
    if (!file.open(QIODevice::ReadOnly))
        error = file.errorString();
    else
        plan->baseline = baselineFromJson(file.readAll(), &error);
    if (!plan->baseline)
        arguments.wrong(file.fileName() + QStringLiteral(": ") + error);
}

void addStatisticsOptions(Arguments &arguments)
{
    arguments.add("json", "An object a line for each input: channels, identifiers, violations.");
    arguments.add("learn", "Write what this one input does as a baseline.", "FILE");
    arguments.add("check", "Tell what is late, early, missing or new against a baseline; the exit code is 1 then.",
                  "FILE");
    arguments.add("check-dbc", "The same against the cycle times of the databases, for what is received.");
    arguments.add("tolerance", "How far distances may leave the baseline's range, as a share of it; 0.2.", "SHARE");
    arguments.add("duration", "End after so many seconds, live.", "SECONDS");
    addInputOptions(arguments, true);
    FrameSelection::addOptions(arguments);
    Databases::addOptions(arguments);
    addAdapterOptions(arguments);
}

} // namespace

int runStatistics(const QStringList &words)
{
    Arguments arguments("statistics", "[INPUT...]",
                        "Counts what each channel and each identifier carries: of recordings (\"-\": the standard "
                        "input), or live without an input.\nThe bus load of recordings needs --rate.");
    addStatisticsOptions(arguments);
    if (!arguments.parse(words))
        return arguments.exitCode();
    const QStringList inputs = arguments.operands();
    const AdapterSetup setup = readAdapterSetup(arguments);
    const auto seconds = arguments.number("duration", 0, kLongestDuration);
    const int jobs = jobCount(arguments);
    StatisticsPlan plan;
    plan.json = arguments.isSet("json");
    plan.inputFormat = inputFormat(arguments);
    plan.learn = arguments.text("learn");
    if (!plan.learn.isEmpty() && inputs.size() > 1)
        arguments.wrong(QStringLiteral("--learn takes one input"));
    for (unsigned channel = 0; channel < kChannelCount; ++channel)
        plan.rates[channel] =
            inputs.isEmpty() && setup.used[channel] ? ratesOf(setup.channel[channel]) : givenRates(arguments, channel);
    plan.databases.load(arguments);
    if (!plan.learn.isEmpty())
        refuseInput(arguments, plan.learn, inputs + plan.databases.paths());
    readBaseline(arguments, &plan);
    plan.selection.read(arguments, plan.databases.signalSource());
    if (!arguments.fine())
        return arguments.exitCode();
    return inputs.isEmpty() ? countLive(plan, setup, seconds) : countFiles(plan, inputs, jobs);
}
