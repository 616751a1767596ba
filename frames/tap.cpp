#include "frames/tap.h"

#include <algorithm>

namespace
{

struct Readers {
    std::mutex lock; // taken before a reader's own
    std::vector<TapReader *> all;
    std::atomic<std::size_t> count{0}; // written under the lock
};

Readers &readers()
{
    static Readers theReaders;
    return theReaders;
}

} // namespace

TapReader::TapReader(std::size_t capacity) : capacity_(std::max<std::size_t>(capacity, 1))
{
    const std::lock_guard<std::mutex> guard(readers().lock);
    readers().all.push_back(this);
    readers().count = readers().all.size();
}

TapReader::~TapReader()
{
    const std::lock_guard<std::mutex> guard(readers().lock);
    auto &all = readers().all;
    all.erase(std::find(all.begin(), all.end(), this));
    readers().count = all.size();
}

bool TapReader::take(TapBatch &batch, std::chrono::milliseconds timeout, std::size_t enough)
{
    batch.frames.clear();
    batch.lost = 0;
    std::unique_lock<std::mutex> guard(lock_);
    enough_ = std::clamp<std::size_t>(enough, 1, capacity_);
    wake_.wait_for(guard, timeout, [this] { return interrupted_ || waiting_.frames.size() >= enough_; });
    enough_ = 0;
    std::swap(batch, waiting_);
    return !interrupted_;
}

void TapReader::interrupt()
{
    {
        const std::lock_guard<std::mutex> guard(lock_);
        interrupted_ = true;
    }
    wake_.notify_all();
}

void TapReader::offer(const RawFrame *frames, std::size_t count)
{
    bool wake = false;
    {
        const std::lock_guard<std::mutex> guard(lock_);
        const std::size_t taken = std::min(count, capacity_ - waiting_.frames.size());
        waiting_.frames.insert(waiting_.frames.end(), frames, frames + taken);
        waiting_.lost += count - taken;
        wake = enough_ != 0 && waiting_.frames.size() >= enough_;
    }
    if (wake)
        wake_.notify_one();
}

bool tapHasReaders()
{
    return readers().count.load(std::memory_order_relaxed) != 0;
}

void publishToTap(const RawFrame *frames, std::size_t count)
{
    const std::lock_guard<std::mutex> guard(readers().lock);
    for (TapReader *reader : readers().all)
        reader->offer(frames, count);
}
