#include "cli/livetap.h"

#include "cli/messages.h"
#include "cli/platform.h"
#include "frames/tap.h"

namespace
{

constexpr std::chrono::milliseconds kTurn{10};
constexpr std::size_t kMuch = kTapCapacity / 2; // that wakes before the turn is over

} // namespace

bool listenLive(const AdapterSetup &setup, std::optional<double> seconds, const LiveListener &listener)
{
    TapReader reader;
    LiveAdapter adapter;
    if (!adapter.open(setup) || !listener.begin(adapter.startUtc()))
        return false;
    TapBatch batch;
    std::uint64_t lost = 0;
    const auto hand = [&](std::chrono::milliseconds timeout) {
        reader.take(batch, timeout, kMuch);
        const bool goesOn = listener.take(batch.frames.data(), static_cast<int>(batch.frames.size()));
        if (batch.lost > 0) {
            lost += batch.lost;
            listener.lost(batch.lost);
        }
        return goesOn;
    };
    QElapsedTimer timer;
    timer.start();
    const auto timeIsUp = [&] { return seconds && static_cast<double>(timer.elapsed()) >= *seconds * 1e3; };
    bool goesOn = true;
    while (goesOn && !interrupted() && !timeIsUp())
        goesOn = hand(kTurn) && adapter.poll();
    adapter.close();
    if (goesOn || adapter.gone())
        hand(std::chrono::milliseconds(0));
    if (lost > 0)
        tell(QStringLiteral("%1 frames came faster than they could be taken and are lost").arg(lost));
    return lost == 0 && adapter.lost() == 0 && !adapter.gone();
}
