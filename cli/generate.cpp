#include "cli/arguments.h"
#include "cli/commands.h"
#include "cli/framegenerator.h"
#include "cli/livesender.h"
#include "cli/progress.h"
#include "cli/valuetexts.h"
#include "device/driver/wirerecords.h"

namespace
{

using Way = GeneratorSettings::Way;

constexpr double kLongestIntervalMs = 86'400'000;
constexpr double kDefaultIntervalMs = 10;

struct GeneratePlan {
    GeneratorSettings frames;
    unsigned channel = 0; // 0-based
    qint64 count = 0;     // 0: until Ctrl+C
    double intervalMs = kDefaultIntervalMs;
};

void addGenerateOptions(Arguments &arguments)
{
    arguments.add("channel", "Onto this channel, 1 or 2; 1 when not given.", "N");
    arguments.add("count", "So many frames; without it until Ctrl+C.", "N");
    arguments.add("interval", "Between two frames; 10 when not given, 0: as fast as the bus takes them.", "MS");
    arguments.add("id", "Hexadecimal: 123, or a range 100..1FF that is gone through; \"random\".", "ID");
    arguments.add("extended", "29-bit identifiers.");
    arguments.add("length", "Data bytes; \"increment\" or \"random\": every length there is. 8 when not given.", "N");
    arguments.add("data", "Hexadecimal bytes; \"increment\" (a counter; the default) or \"random\".", "BYTES");
    arguments.add("fd", "CAN FD frames.");
    arguments.add("brs", "CAN FD frames with bit-rate switch.");
    arguments.add("remote", "Remote frames.");
    arguments.add("seed", "What random values begin with: the same number gives the same frames.", "N");
}

Way wayOf(const QString &text)
{
    return text == QLatin1String("random")      ? Way::Random
           : text == QLatin1String("increment") ? Way::Increment
                                                : Way::Fixed;
}

void readIdentifier(Arguments &arguments, GeneratorSettings *frames)
{
    const QString text = arguments.text("id");
    frames->extended = arguments.isSet("extended");
    const std::uint32_t limit = largestId(frames->extended);
    if (text.isEmpty())
        return;
    if (wayOf(text) != Way::Fixed) {
        frames->idWay = wayOf(text);
        frames->firstId = 0;
        frames->lastId = limit;
        return;
    }
    const QStringList ends = text.split(QStringLiteral(".."));
    const auto first = identifierFromText(ends.first());
    const auto last = identifierFromText(ends.last());
    if (ends.size() > 2 || !first || !last || *first > *last || *last > limit) {
        arguments.wrongValue("id", QStringLiteral("is no identifier or range; above 7FF give --extended"));
        return;
    }
    frames->idWay = ends.size() == 2 ? Way::Increment : Way::Fixed;
    frames->firstId = *first;
    frames->lastId = *last;
}

void readData(Arguments &arguments, GeneratorSettings *frames)
{
    const QString text = arguments.text("data");
    if (text.isEmpty())
        return;
    frames->dataWay = wayOf(text);
    if (frames->dataWay != Way::Fixed)
        return;
    frames->data = QByteArray::fromHex(text.toLatin1());
    QString digits = text;
    digits.remove(QLatin1Char(' '));
    if (frames->data.toHex().size() != digits.size())
        arguments.wrongValue("data", QStringLiteral("is no text of hexadecimal bytes"));
    if (frames->data.size() > int(kRawDataBytes))
        arguments.wrongValue("data", QStringLiteral("has more bytes than any frame"));
    frames->length = static_cast<std::uint8_t>(std::min(frames->data.size(), int(kRawDataBytes)));
}

void readLength(Arguments &arguments, GeneratorSettings *frames)
{
    if (!arguments.isSet("length"))
        return;
    frames->lengthWay = wayOf(arguments.text("length"));
    if (frames->lengthWay == Way::Fixed)
        frames->length = static_cast<std::uint8_t>(arguments.integer("length", 0, kRawDataBytes).value_or(0));
    if (frames->lengthWay == Way::Fixed && frames->data.size() > frames->length)
        arguments.wrongValue("length", QStringLiteral("is less than --data has"));
}

void readPlan(Arguments &arguments, GeneratePlan *plan)
{
    GeneratorSettings &frames = plan->frames;
    plan->channel = static_cast<unsigned>(arguments.integer("channel", 1, kChannelCount).value_or(1) - 1);
    plan->count = arguments.integer("count", 1, INT64_MAX).value_or(0);
    plan->intervalMs = arguments.number("interval", 0, kLongestIntervalMs).value_or(kDefaultIntervalMs);
    frames.bitRateSwitch = arguments.isSet("brs");
    frames.fd = frames.bitRateSwitch || arguments.isSet("fd");
    frames.remote = arguments.isSet("remote");
    frames.seed = static_cast<std::uint32_t>(arguments.integer("seed", 0, UINT32_MAX).value_or(std::random_device()()));
    readIdentifier(arguments, &frames);
    readData(arguments, &frames);
    readLength(arguments, &frames);
    if (frames.fd && frames.remote)
        arguments.wrong(QStringLiteral("there are no remote frames in CAN FD"));
    if (frames.lengthWay == Way::Fixed && lengthOfDlc(dlcOfLength(frames.length), frames.fd) != frames.length)
        arguments.wrong(QStringLiteral("no such frame has %1 data bytes").arg(frames.length));
    if (!arguments.operands().isEmpty())
        arguments.wrong(QStringLiteral("generate takes no operands"));
}

void sendAll(const GeneratePlan &plan, LiveSender *sender)
{
    FrameGenerator generator(plan.frames);
    Progress progress(static_cast<std::uint64_t>(plan.count));
    const auto begin = LiveSender::Clock::now();
    for (qint64 number = 0; plan.count == 0 || number < plan.count; ++number) {
        // Absolute due times: what sending costs does not add up.
        const std::chrono::duration<double, std::milli> after(plan.intervalMs * static_cast<double>(number));
        if (!sender->waitUntil(begin + std::chrono::duration_cast<LiveSender::Clock::duration>(after)))
            break;
        sender->send(plan.channel, generator.next());
        progress.add(plan.count > 0 ? 1 : 0, 1);
    }
}

} // namespace

int runGenerate(const QStringList &words)
{
    Arguments arguments("generate", "", "Sends frames that are made up, to try what listens.");
    addGenerateOptions(arguments);
    LiveSender::addOptions(arguments);
    addAdapterOptions(arguments);
    if (!arguments.parse(words))
        return arguments.exitCode();
    const AdapterSetup setup = readAdapterSetup(arguments);
    GeneratePlan plan;
    readPlan(arguments, &plan);
    LiveSender sender;
    sender.readOptions(arguments, {});
    if (!arguments.fine())
        return arguments.exitCode();
    if (!sender.open(setup))
        return SomethingLost;
    sendAll(plan, &sender);
    return sender.close() ? AllWell : SomethingLost;
}
