// A first-in first-out queue with an upper limit. Takes memory only as it fills, and keeps it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

template <typename Item> class BoundedQueue
{
public:
    explicit BoundedQueue(std::size_t capacity) : capacity_(capacity) {}

    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    bool full() const { return size_ >= capacity_; }
    const Item &front() const { return ring_[head_]; } // not when empty

    // A new last item to be filled in place; null when the queue is full.
    Item *push()
    {
        if (full())
            return nullptr;
        if (size_ == ring_.size())
            grow();
        return &ring_[wrapped(head_ + size_++)];
    }
    void pop()
    {
        head_ = wrapped(head_ + 1);
        --size_;
    }
    // Moves the oldest items out, at most `count`; answers how many.
    std::size_t take(Item *out, std::size_t count)
    {
        count = std::min(count, size_);
        const std::size_t straight = std::min(count, ring_.size() - head_);
        std::copy_n(ring_.begin() + static_cast<std::ptrdiff_t>(head_), straight, out);
        std::copy_n(ring_.begin(), count - straight, out + straight);
        head_ = wrapped(head_ + count);
        size_ -= count;
        return count;
    }
    void clear() { head_ = size_ = 0; }

private:
    static constexpr std::size_t kFirstSize = 64;

    std::size_t wrapped(std::size_t position) const
    {
        return position >= ring_.size() ? position - ring_.size() : position;
    }
    void grow()
    {
        std::rotate(ring_.begin(), ring_.begin() + static_cast<std::ptrdiff_t>(head_), ring_.end());
        head_ = 0;
        ring_.resize(std::min(capacity_, std::max(kFirstSize, 2 * ring_.size())));
    }

    std::size_t capacity_;
    std::vector<Item> ring_;
    std::size_t head_ = 0;
    std::size_t size_ = 0;
};
