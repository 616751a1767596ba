// Writes pcapng with SocketCAN packets, an interface per channel and direction-marked packets in nanoseconds.
#pragma once

#include "traces/blocksink.h"
#include "traces/losses.h"

#include <vector>

class PcapngWriter : public TraceWriter
{
public:
    PcapngWriter(QIODevice *device, const TraceWriterOptions &options);

    bool write(const RawFrame *frames, int count) override;
    bool flush() override;
    bool finish() override { return flush(); }
    QString errorText() const override { return sink_.errorText(); }
    std::vector<TraceLoss> losses() const override { return losses_.list(); }

private:
    void begin();
    std::uint32_t interfaceOf(std::uint16_t channel);
    void append(const RawFrame &frame);

    BlockSink sink_;
    LossCounts losses_;
    const std::int64_t start_;
    std::vector<std::int32_t> interfaces_; // of the channels; -1: has none yet
    std::int32_t interfaceCount_ = 0;
    bool begun_ = false;
};

std::unique_ptr<TraceWriter> writePcapng(QIODevice *device, const TraceWriterOptions &options);
