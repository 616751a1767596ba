// The blocks of a binary recording on their way to a device.
#pragma once

#include "traces/gatheredoutput.h"

#include <cstdint>

class BlockSink : public GatheredOutput
{
public:
    using GatheredOutput::GatheredOutput;

    // Room for one block of at most so many bytes; valid until the next call.
    std::uint8_t *room(std::size_t bytes) { return reinterpret_cast<std::uint8_t *>(roomFor(bytes)); }
    // The block that the room holds has so many bytes.
    void endBlock(std::size_t bytes);

    // Bytes of all blocks so far, handed over or not.
    std::uint64_t bytes() const { return bytes_; }

protected:
    std::size_t wholeWithin(std::size_t bytes) const override;
    void handedOver(std::size_t bytes) override;

private:
    std::vector<std::size_t> ends_; // of the blocks that are gathered
    std::uint64_t bytes_ = 0;
};
