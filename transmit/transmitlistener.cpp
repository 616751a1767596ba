#include "transmit/transmitlistener.h"

TransmitListener::TransmitListener(Heard heard) : heard_(std::move(heard)), thread_([this] { run(); }) {}

TransmitListener::~TransmitListener()
{
    reader_.interrupt();
    thread_.join();
}

void TransmitListener::run()
{
    constexpr std::chrono::milliseconds kLook{1000}; // nothing depends on it: a frame wakes, an interruption too
    TapBatch batch;
    while (reader_.take(batch, kLook))
        heard_(batch.frames.data(), batch.frames.size());
}
