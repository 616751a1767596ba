#include "device/channelrates.h"

#include "device/channelparameters.h"
#include "device/driver/simulated/bittiming.h"

ChannelRates channelRates(unsigned channel)
{
    const ChannelParameters parameters = loadChannelParameters(channel);
    if (!parameters.customBaudRate)
        return {arbitrationRateAt(parameters.arbitration), dataRateAt(parameters.data)};
    BusSettings settings = defaultBusSettings();
    if (!parseCustomRates(parameters.customBaudRateText.toStdString(), &settings))
        return {};
    return {settings.arbitrationRate, settings.dataRate};
}
