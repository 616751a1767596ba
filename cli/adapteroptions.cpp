#include "cli/adapteroptions.h"

#include "cli/arguments.h"
#include "cli/valuetexts.h"
#include "device/driver/simulated/bittiming.h"
#include "device/driver/wirerecords.h"

namespace
{

constexpr unsigned kArbitrationRateCount = 18; // that the adapter's driver numbers
constexpr unsigned kDataRateCount = 9;

// The option of one channel, else the one of both.
QString channelText(const Arguments &arguments, const char *option, unsigned channel)
{
    const QByteArray own = QByteArray(option) + char('1' + channel);
    return arguments.isSet(own.constData()) ? arguments.text(own.constData()) : arguments.text(option);
}

template <typename RateAt> std::optional<unsigned> indexOf(std::uint32_t rate, RateAt rateAt, unsigned count)
{
    for (unsigned index = 0; index < count; ++index)
        if (rateAt(index) == rate)
            return index;
    return std::nullopt;
}

void applyRate(Arguments &arguments, const QString &text, ChannelParameters *parameters)
{
    BusSettings rates{};
    if (!parseCustomRates(text.toStdString(), &rates)) {
        arguments.wrong(QStringLiteral("--rate: \"") + text +
                        QStringLiteral("\" is no rate such as 500000/2000000 or 500k/2M"));
        return;
    }
    const auto arbitration = indexOf(rates.arbitrationRate, arbitrationRateAt, kArbitrationRateCount);
    const auto data = indexOf(rates.dataRate, dataRateAt, kDataRateCount);
    // With one rate given the data phase stays as it is stored where there is none like it.
    const bool oneRate = rates.dataRate == rates.arbitrationRate;
    parameters->customBaudRate = !arbitration || (!data && !oneRate);
    parameters->customBaudRateText = parameters->customBaudRate ? text : QString();
    parameters->arbitration = arbitration.value_or(parameters->arbitration);
    parameters->data = data.value_or(parameters->data);
}

std::optional<QString> acceptanceRow(const QString &part)
{
    const QString trimmed = part.trimmed();
    const bool forcedExtended = trimmed.startsWith(QLatin1String("ext:"));
    const bool forcedStandard = trimmed.startsWith(QLatin1String("std:"));
    const QStringList ends = (forcedExtended || forcedStandard ? trimmed.mid(4) : trimmed).split(QStringLiteral(".."));
    const auto first = identifierFromText(ends.first());
    const auto last = identifierFromText(ends.last());
    if (ends.size() > 2 || !first || !last || *first > *last || (forcedStandard && *last >= kStandardIdLimit))
        return std::nullopt;
    const bool extended = forcedExtended || *last >= kStandardIdLimit;
    return QStringLiteral("%1-%2-%3").arg(extended ? 1 : 0).arg(*first, 0, 16).arg(*last, 0, 16);
}

void applyAcceptance(Arguments &arguments, const QString &text, ChannelParameters *parameters)
{
    QStringList rows;
    for (const QString &part : text.split(QLatin1Char(','))) {
        const auto row = acceptanceRow(part);
        if (!row)
            arguments.wrong(QStringLiteral("--accept: \"") + part + QStringLiteral("\" is no range such as 100..1FF"));
        rows.append(row.value_or(QString()));
    }
    parameters->filterOn = true;
    parameters->filterRows = rows.join(QLatin1Char('|'));
}

} // namespace

void addRateOptions(Arguments &arguments)
{
    arguments.add("rate", "Bit rates of both channels, arbitration/data phase: 500000/2000000, 500k/2M.", "RATES");
    arguments.add("rate1", "The same of channel 1 alone.", "RATES");
    arguments.add("rate2", "The same of channel 2 alone.", "RATES");
}

void addAdapterOptions(Arguments &arguments)
{
    arguments.add("device", "The adapter, by the number or name that \"devices\" shows; the first one when not given.",
                  "DEVICE");
    arguments.add("only", "Open this channel alone, 1 or 2.", "CHANNEL");
    addRateOptions(arguments);
    arguments.add("accept", "Acceptance ranges of both channels, hexadecimal: 100..1FF,ext:0..FFFF.", "RANGES",
                  Repeated::Joined);
    arguments.add("accept1", "The same of channel 1 alone.", "RANGES", Repeated::Joined);
    arguments.add("accept2", "The same of channel 2 alone.", "RANGES", Repeated::Joined);
    arguments.add("listen-only", "Send nothing, not even an acknowledgement.");
    arguments.add("fd-standard", "iso or bosch.", "STANDARD");
}

AdapterSetup readAdapterSetup(Arguments &arguments)
{
    AdapterSetup setup;
    setup.device = arguments.text("device");
    const auto only = arguments.integer("only", 1, kChannelCount);
    for (unsigned channel = 0; channel < kChannelCount; ++channel) {
        ChannelParameters &parameters = setup.channel[channel];
        parameters = loadChannelParameters(channel);
        setup.used[channel] = !only || *only == channel + 1;
        const QString rate = channelText(arguments, "rate", channel);
        if (!rate.isEmpty())
            applyRate(arguments, rate, &parameters);
        const QString ranges = channelText(arguments, "accept", channel);
        if (!ranges.isEmpty())
            applyAcceptance(arguments, ranges, &parameters);
        if (arguments.isSet("listen-only"))
            parameters.workStatus = 1;
        if (arguments.isSet("fd-standard")) {
            const QString standard = arguments.text("fd-standard");
            parameters.canFdStandard = standard == QLatin1String("bosch") ? 1 : 0;
            if (parameters.canFdStandard == 0 && standard != QLatin1String("iso"))
                arguments.wrongValue("fd-standard", QStringLiteral("is neither iso nor bosch"));
        }
    }
    return setup;
}

BusRates givenRates(Arguments &arguments, unsigned channel)
{
    const QString text = channelText(arguments, "rate", channel);
    if (text.isEmpty())
        return {};
    ChannelParameters parameters;
    applyRate(arguments, text, &parameters);
    return ratesOf(parameters);
}

BusRates ratesOf(const ChannelParameters &parameters)
{
    if (!parameters.customBaudRate)
        return {arbitrationRateAt(parameters.arbitration), dataRateAt(parameters.data)};
    BusSettings rates{};
    parseCustomRates(parameters.customBaudRateText.toStdString(), &rates);
    return {rates.arbitrationRate, rates.dataRate};
}
