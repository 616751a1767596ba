#include "analysis/signalreading.h"

SignalReading::SignalReading(const std::optional<RecordingPart> &part, StoreUse use) : part_(part), store_(use) {}

void SignalReading::start()
{
    if (part_) {
        feed_.reset();
        store_.beginAnew();
    }
    if (!feed_)
        feed_ = std::make_unique<FrameFeed>(store_, part_);
}

void SignalReading::setLookup(const std::shared_ptr<const MessageLookup> &lookup)
{
    const bool again = part_ && feed_;
    if (again)
        stop();
    store_.setLookup(lookup);
    if (again)
        start();
}
