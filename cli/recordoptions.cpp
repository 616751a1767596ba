#include "cli/recordoptions.h"

#include "cli/arguments.h"
#include "cli/inputfiles.h"
#include "cli/valuetexts.h"

namespace
{

constexpr int kMostSeconds = 10 * 365 * 86400;
constexpr int kMostFiles = 1'000'000;
constexpr double kMostPreSeconds = 86400;
constexpr int kMostChannel = 65535;

bool readIdentifiers(const QString &text, RecorderTrigger *trigger)
{
    const QStringList ends = text.split(QStringLiteral(".."));
    const auto first = identifierFromText(ends.first());
    const auto last = identifierFromText(ends.last());
    if (ends.size() > 2 || !first || !last || *first > *last)
        return false;
    trigger->firstId = *first;
    trigger->lastId = *last;
    return true;
}

bool readData(const QString &text, RecorderTrigger *trigger)
{
    trigger->kind = RecorderTrigger::Kind::Data;
    if (text.isEmpty() || text.size() % 2 != 0 || text.size() > 2 * int(kRawDataBytes))
        return false;
    QString value = text;
    QString mask = text;
    for (int i = 0; i < text.size(); ++i) {
        const bool any = text[i] == QLatin1Char('?');
        if (!any && !isxdigit(text[i].toLatin1()))
            return false;
        value[i] = any ? QLatin1Char('0') : text[i];
        mask[i] = any ? QLatin1Char('0') : QLatin1Char('F');
    }
    trigger->value = QByteArray::fromHex(value.toLatin1());
    trigger->mask = QByteArray::fromHex(mask.toLatin1());
    return true;
}

bool readChannel(const QString &text, RecorderTrigger *trigger)
{
    bool ok = false;
    const uint channel = text.toUInt(&ok);
    trigger->channel = static_cast<std::uint16_t>(channel);
    return ok && channel >= 1 && channel <= kMostChannel;
}

std::vector<RecorderTrigger> triggers(Arguments &arguments, const char *option)
{
    std::vector<RecorderTrigger> all;
    for (const QString &text : arguments.texts(option)) {
        if (const auto trigger = triggerFromText(text))
            all.push_back(*trigger);
        else
            arguments.wrong(
                QStringLiteral("--") + QLatin1String(option) + QStringLiteral(": \"") + text +
                QStringLiteral("\" is no trigger such as id:100..1FF, \"id:123 data:02??7F\", error, lost"));
    }
    return all;
}

} // namespace

std::optional<RecorderTrigger> triggerFromText(const QString &text)
{
    RecorderTrigger trigger;
    bool understood = false;
    for (const QString &word : text.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const QString key = word.section(QLatin1Char(':'), 0, 0);
        const QString value = word.section(QLatin1Char(':'), 1);
        understood = true;
        if (word == QLatin1String("error"))
            trigger.kind = RecorderTrigger::Kind::ErrorFrame;
        else if (word == QLatin1String("lost"))
            trigger.kind = RecorderTrigger::Kind::LostFrames;
        else if (key == QLatin1String("id"))
            understood = readIdentifiers(value, &trigger);
        else if (key == QLatin1String("data"))
            understood = readData(value, &trigger);
        else if (key == QLatin1String("channel"))
            understood = readChannel(value, &trigger);
        else
            understood = false;
        if (!understood)
            break;
    }
    return understood ? std::optional<RecorderTrigger>(trigger) : std::nullopt;
}

void addRecordOptions(Arguments &arguments)
{
    arguments.add("f format", "The format; without it the output's name tells.", "FORMAT");
    arguments.add("nanoseconds", "Nine decimals instead of six, in candump logs and ASC.");
    arguments.add("rotate-size", "Begin the next file, with a number in its name, at this size: 500k, 100M.", "BYTES");
    arguments.add("rotate-time", "Begin the next file after so many seconds.", "SECONDS");
    arguments.add("keep", "Keep only the newest files of this row, those of earlier recordings included.", "N");
    arguments.add("start-on",
                  "Record from a frame on: id:100..1FF, \"id:123 data:02??7F channel:1\", error, lost; "
                  "may be given several times.",
                  "TRIGGER", Repeated::Each);
    arguments.add("stop-on", "Stop with such a frame.", "TRIGGER", Repeated::Each);
    arguments.add("pre-frames", "Keep so many frames from before the start.", "N");
    arguments.add("pre-time", "Keep so many seconds from before the start.", "SECONDS");
}

RecorderSettings readRecordSettings(Arguments &arguments, const QString &path, const char *formatOptionName)
{
    RecorderSettings settings;
    settings.path = path;
    auto format = formatOption(arguments, formatOptionName);
    if (!format)
        format = traceFormatOfName(path);
    if (!format)
        arguments.wrong(QStringLiteral("the output's name does not tell its format; give --") +
                        QLatin1String(formatOptionName));
    settings.format = format.value_or(TraceFormat::Candump);
    return settings;
}

void readRecordRow(Arguments &arguments, RecorderSettings *settings)
{
    settings->options.nanoseconds = arguments.isSet("nanoseconds");
    if (arguments.isSet("rotate-size")) {
        const auto bytes = bytesFromText(arguments.text("rotate-size"));
        if (!bytes)
            arguments.wrongValue("rotate-size", QStringLiteral("is no size such as 500k or 100M"));
        settings->rotateBytes = bytes.value_or(0);
    }
    settings->rotateSeconds = static_cast<int>(arguments.integer("rotate-time", 1, kMostSeconds).value_or(0));
    settings->keepFiles = static_cast<int>(arguments.integer("keep", 1, kMostFiles).value_or(0));
    settings->start = triggers(arguments, "start-on");
    settings->stop = triggers(arguments, "stop-on");
    settings->preTriggerFrames =
        static_cast<int>(arguments.integer("pre-frames", 1, PreTriggerBuffer::kMostFrames).value_or(0));
    settings->preTriggerMilliseconds =
        static_cast<int>(arguments.number("pre-time", 0, kMostPreSeconds).value_or(0) * 1e3);
    const bool row = settings->rotateBytes > 0 || settings->rotateSeconds > 0 || !settings->start.empty();
    if (settings->keepFiles > 0 && !row)
        arguments.wrong(QStringLiteral("--keep needs --rotate-size, --rotate-time or --start-on"));
    if ((settings->preTriggerFrames > 0 || settings->preTriggerMilliseconds > 0) && settings->start.empty())
        arguments.wrong(QStringLiteral("--pre-frames and --pre-time need --start-on"));
    if (settings->path == QLatin1String("-") && (row || !settings->stop.empty()))
        arguments.wrong(QStringLiteral("rows of files and triggers need a file"));
}
