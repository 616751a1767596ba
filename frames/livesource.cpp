#include "frames/livesource.h"

LiveSource::LiveSource(FrameConsumer &consumer) : consumer_(consumer), thread_([this] { run(); }) {}

LiveSource::~LiveSource()
{
    reader_.interrupt();
    thread_.join();
}

void LiveSource::run()
{
    TapBatch batch;
    bool goesOn = true;
    while (goesOn) {
        // Half of the room: seldom enough to cost nothing, early enough to lose nothing.
        goesOn = reader_.take(batch, kInterval, kTapCapacity / 2);
        if (!batch.frames.empty())
            consumer_.consume(batch.frames.data(), batch.frames.size());
        if (batch.lost > 0)
            consumer_.framesLost(batch.lost);
        consumer_.intervalEnded();
    }
}
