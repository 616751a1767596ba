#include "cli/arguments.h"
#include "cli/commands.h"
#include "cli/databases.h"
#include "cli/frameselection.h"
#include "cli/inputfiles.h"
#include "cli/messages.h"
#include "cli/platform.h"
#include "cli/progress.h"
#include "cli/signaltable.h"
#include "cli/traceinput.h"
#include "cli/traceoutput.h"
#include "cli/valuetexts.h"
#include "traces/tracereader.h"

#include <QDir>
#include <QFileInfo>

#include <atomic>

namespace
{

struct Conversion {
    QString input;
    QString output;
};

struct ConversionPlan {
    std::vector<Conversion> files;
    std::optional<TraceFormat> inputFormat;
    TraceFormat format = TraceFormat::Candump;
    std::optional<std::int64_t> start;
    bool nanoseconds = false;
    bool relativeTimes = false;
    FrameSelection selection;
    Databases databases;
    SignalColumns columns; // not empty: a table of signals is written, whatever the format
};

void addConvertOptions(Arguments &arguments)
{
    addInputOptions(arguments, true);
    arguments.add("f format", "The format to write; without it the output's name tells.", "FORMAT");
    arguments.add("into", "Write a file for each input, of the same name but the ending, into this folder.", "FOLDER");
    arguments.add("times",
                  "How times are written where a format has both: absolute (with the date; the default) or relative.",
                  "KIND");
    arguments.add(
        "start", "The recording's start, whatever the input says: 2026-11-21T10:00:00Z or seconds since 1970.", "TIME");
    arguments.add("nanoseconds", "Nine decimals instead of six, in candump logs and ASC.");
    FrameSelection::addOptions(arguments);
    Databases::addOptions(arguments);
    arguments.add(
        "signals",
        "With --dbc csv is a table: a column for each of these signals, a row for each frame that carries one; "
        "\"all\" (the default), names such as Speed,Engine.Speed,Engine, or \"none\": frames as they are.",
        "LIST", Repeated::Joined);
}

// Where each input goes: into a folder, or the one input to the one output.
void readFiles(Arguments &arguments, std::optional<TraceFormat> format, ConversionPlan *plan)
{
    QStringList operands = arguments.operands();
    if (arguments.isSet("into")) {
        const QDir folder(arguments.text("into"));
        if (!format)
            arguments.wrong(QStringLiteral("--into needs --format"));
        if (!folder.exists())
            arguments.wrongValue("into", QStringLiteral("is no folder"));
        if (operands.isEmpty())
            arguments.wrong(QStringLiteral("there is no input"));
        const QString ending = format ? QLatin1Char('.') + traceFormatEnding(*format) : QString();
        QStringList outputs;
        for (const QString &input : operands) {
            const QString name = QFileInfo(input).completeBaseName() + ending;
            if (outputs.contains(name))
                arguments.wrong(QStringLiteral("two inputs would be written to ") + name);
            outputs.append(name);
            plan->files.push_back({input, folder.filePath(name)});
        }
    } else if (operands.size() == 2) {
        plan->files.push_back({operands[0], operands[1]});
        if (!format)
            format = traceFormatOfName(operands[1]);
        if (!format)
            arguments.wrong(QStringLiteral("the output's name does not tell its format; give --format"));
    } else {
        arguments.wrong(QStringLiteral("give one input and one output, or --into FOLDER and inputs"));
    }
    plan->format = format.value_or(TraceFormat::Candump);
    QStringList read = plan->databases.paths();
    for (const Conversion &file : plan->files)
        read.append(file.input);
    for (const Conversion &file : plan->files)
        refuseInput(arguments, file.output, read);
}

void readPlan(Arguments &arguments, ConversionPlan *plan)
{
    plan->databases.load(arguments);
    plan->inputFormat = inputFormat(arguments);
    readFiles(arguments, formatOption(arguments, "format"), plan);
    plan->nanoseconds = arguments.isSet("nanoseconds");
    if (arguments.isSet("times")) {
        plan->relativeTimes = arguments.text("times") == QLatin1String("relative");
        if (!plan->relativeTimes && arguments.text("times") != QLatin1String("absolute"))
            arguments.wrongValue("times", QStringLiteral("is neither absolute nor relative"));
    }
    if (arguments.isSet("start")) {
        plan->start = utcFromText(arguments.text("start"));
        if (!plan->start)
            arguments.wrongValue("start", QStringLiteral("is no time"));
    }
    plan->selection.read(arguments, plan->databases.signalSource());
    const bool csv = plan->format == TraceFormat::Csv;
    if (arguments.isSet("signals") && !csv)
        arguments.wrong(QStringLiteral("--signals writes csv; name the output so or give --format csv"));
    const QString names = arguments.isSet("signals")          ? arguments.text("signals")
                          : csv && !plan->databases.isEmpty() ? QStringLiteral("all")
                                                              : QStringLiteral("none");
    if (names != QLatin1String("none"))
        plan->columns.choose(arguments, names, plan->databases);
}

// What the frames of one input are written to: a recording, or a table of signals.
class Destination
{
public:
    explicit Destination(const ConversionPlan &plan) : plan_(plan)
    {
        if (!plan.columns.isEmpty())
            table_.emplace(plan.columns, plan.databases);
    }
    bool open(const QString &path) { return table_ ? table_->open(path) : recording_.open(path, plan_.format); }
    // Before the first write(). start: of the input, if it has one; base: see TraceInput.
    void begin(std::optional<std::int64_t> start, std::int64_t base)
    {
        // Times of day stay what they are unless other times are wanted.
        shift_ = plan_.start || plan_.relativeTimes ? 0 : base;
        if (plan_.start)
            start = plan_.start;
        tableStart_ = plan_.relativeTimes ? 0 : start.value_or(0);
        recording_.setOptions({start, plan_.nanoseconds, plan_.relativeTimes});
    }
    bool write(RawFrame *frames, int count)
    {
        for (int i = 0; i < count && shift_ != 0; ++i)
            frames[i].time += shift_;
        return table_ ? table_->write(frames, count, tableStart_) : recording_.write(frames, count);
    }
    bool flush() { return table_ ? table_->flush() : recording_.flush(); }
    bool finish() { return table_ ? table_->flush() : recording_.finish(); }
    std::uint64_t rows() const { return table_ ? table_->rows() : recording_.frames(); }

private:
    const ConversionPlan &plan_;
    std::optional<SignalTable> table_;
    std::int64_t tableStart_ = 0;
    std::int64_t shift_ = 0;
    TraceOutput recording_;
};

// One input to one output; false when anything was lost.
bool convertOne(const ConversionPlan &plan, const Conversion &file, Progress *progress)
{
    TraceInput input;
    Destination output(plan);
    if (!input.open(file.input, plan.inputFormat) || !output.open(file.output))
        return false;
    bool begun = false;
    const auto convert = [&](RawFrame *frames, int count) {
        if (!begun && (count > 0 || input.atEnd())) {
            begun = true;
            output.begin(input.reader().startUtc(), input.base());
        }
        const int kept = plan.selection.keep(frames, count);
        progress->add(input.newBytes(), static_cast<std::uint64_t>(count));
        return !begun || output.write(frames, kept);
    };
    const bool ended = input.readThrough(convert, [&] { return !begun || output.flush(); });
    const bool whole = input.tellTrouble();
    const bool written = output.finish();
    if (interrupted())
        tell(QStringLiteral("interrupted: %1 frames are in ").arg(output.rows()) + file.output);
    return ended && whole && written;
}

} // namespace

int runConvert(const QStringList &words)
{
    Arguments arguments("convert", "INPUT OUTPUT | --into FOLDER INPUT...",
                        "Converts recordings between formats. \"-\" is the standard input or output.\n"
                        "What a format cannot hold is told, and the exit code is 1 then.");
    addConvertOptions(arguments);
    if (!arguments.parse(words))
        return arguments.exitCode();
    ConversionPlan plan;
    readPlan(arguments, &plan);
    const int jobs = jobCount(arguments);
    if (!arguments.fine())
        return arguments.exitCode();
    QStringList inputs;
    for (const Conversion &file : plan.files)
        inputs.append(file.input);
    Progress progress(totalBytes(inputs));
    const int count = static_cast<int>(plan.files.size());
    std::atomic<int> whole{0};
    runSideBySide(count, jobs, [&](int index) {
        if (convertOne(plan, plan.files[static_cast<std::size_t>(index)], &progress))
            ++whole;
    });
    return whole == count ? AllWell : SomethingLost;
}
