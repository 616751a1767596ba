#include "traces/losses.h"

const char *lossText(Loss loss)
{
    static constexpr const char *texts[] = {
        "error frame",
        "class and data of an error frame",
        "direction of an error frame",
        "direction",
        "channel",
        "FD frame",
        "bit-rate switch",
        "error state indicator",
        "FD of a remote frame",
        "length of a remote frame",
        "DLC above 8 of a classic frame",
        "time before the recording's start",
    };
    static_assert(std::size(texts) == static_cast<std::size_t>(Loss::Count), "a text for every kind");
    return texts[static_cast<std::size_t>(loss)];
}

std::vector<TraceLoss> LossCounts::list() const
{
    std::vector<TraceLoss> losses;
    for (std::size_t kind = 0; kind < counts_.size(); ++kind)
        if (counts_[kind] > 0)
            losses.push_back({QLatin1String(lossText(static_cast<Loss>(kind))), counts_[kind]});
    return losses;
}
