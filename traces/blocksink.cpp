#include "traces/blocksink.h"

#include <algorithm>

void BlockSink::endBlock(std::size_t bytes)
{
    setSize(size() + bytes);
    bytes_ += bytes;
    ends_.push_back(size());
}

std::size_t BlockSink::wholeWithin(std::size_t bytes) const
{
    const auto next = std::upper_bound(ends_.begin(), ends_.end(), bytes);
    return next == ends_.begin() ? 0 : *(next - 1);
}

void BlockSink::handedOver(std::size_t bytes)
{
    ends_.erase(ends_.begin(), std::upper_bound(ends_.begin(), ends_.end(), bytes));
    for (std::size_t &end : ends_)
        end -= bytes;
}
