#include "device/channelparameters.h"

#include "device/devicelayer.h"
#include "device/settingsstore.h"

namespace
{

constexpr char kWorkStatus[] = "workStatus";
constexpr char kCanFdStandard[] = "canFDStandard";
constexpr char kArbitration[] = "ABIT1";
constexpr char kData[] = "ABIT2";
constexpr char kIsCustom[] = "isCustomBaudrate";
constexpr char kCustomText[] = "CustomBaudrate";
constexpr char kFilterMode[] = "filterMode";
constexpr char kFilterRows[] = "FilterID";

unsigned readNumber(unsigned channel, const char *name)
{
    return settings::number(settings::channelKey(channel, name), QStringLiteral("0"));
}

QString readText(unsigned channel, const char *name)
{
    return settings::value(settings::channelKey(channel, name), {});
}

QString boxText(bool ticked)
{
    return ticked ? QStringLiteral("1") : QStringLiteral("0");
}

void store(unsigned channel, const char *name, const QString &text, bool writeNow = false)
{
    settings::setValue(settings::channelKey(channel, name), text, writeNow);
}

// The part that opening and re-applying have in common.
ChannelStep configureBus(unsigned channel, const ChannelParameters &parameters)
{
    if (!setCanFdStandard(channel, parameters.canFdStandard))
        return ChannelStep::CanFdStandard;
    if (parameters.customBaudRate)
        return setCustomBaudRate(channel, parameters.customBaudRateText) ? ChannelStep::None
                                                                         : ChannelStep::CustomBaudRate;
    return setBaudRate(channel, parameters.arbitration, parameters.data) ? ChannelStep::None : ChannelStep::BaudRate;
}

} // namespace

ChannelParameters loadChannelParameters(unsigned channel)
{
    ChannelParameters parameters;
    parameters.workStatus = readNumber(channel, kWorkStatus);
    parameters.canFdStandard = readNumber(channel, kCanFdStandard);
    parameters.arbitration = readNumber(channel, kArbitration);
    parameters.data = readNumber(channel, kData);
    parameters.customBaudRate = readNumber(channel, kIsCustom) != 0;
    parameters.customBaudRateText = readText(channel, kCustomText);
    parameters.filterOn = readNumber(channel, kFilterMode) != 0;
    parameters.filterRows = readText(channel, kFilterRows);
    return parameters;
}

void storeChannelParameters(unsigned channel, const ChannelParameters &parameters)
{
    store(channel, kWorkStatus, QString::number(parameters.workStatus));
    store(channel, kCanFdStandard, QString::number(parameters.canFdStandard));
    store(channel, kArbitration, QString::number(parameters.arbitration));
    store(channel, kData, QString::number(parameters.data));
    store(channel, kIsCustom, boxText(parameters.customBaudRate));
    store(channel, kCustomText, parameters.customBaudRateText);
    storeChannelFilter(channel, parameters.filterOn, parameters.filterRows);
}

void storeChannelFilter(unsigned channel, bool filterOn, const QString &filterRows)
{
    store(channel, kFilterMode, boxText(filterOn));
    store(channel, kFilterRows, filterRows, true);
}

ChannelStep openChannel(unsigned channel, const ChannelParameters &parameters)
{
    const ChannelStep failed = configureBus(channel, parameters);
    if (failed != ChannelStep::None)
        return failed;
    if (!initChannel(channel, parameters.workStatus))
        return ChannelStep::Init;
    if (parameters.filterOn && !parameters.filterRows.isEmpty() && !applyFilterRows(channel, parameters.filterRows))
        return ChannelStep::Filter;
    return startChannel(channel) ? ChannelStep::None : ChannelStep::Start;
}

ChannelStep reconfigureChannel(unsigned channel, const ChannelParameters &parameters)
{
    const ChannelStep failed = configureBus(channel, parameters);
    if (failed != ChannelStep::None)
        return failed;
    if (parameters.filterOn && !applyFilterRows(channel, parameters.filterRows))
        return ChannelStep::Filter;
    return ChannelStep::None;
}
