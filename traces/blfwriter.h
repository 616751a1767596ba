// Writes BLF: objects in packed containers; the header's counts are filled in at the end where the device can seek.
#pragma once

#include "traces/blocksink.h"
#include "traces/losses.h"

class BlfWriter : public TraceWriter
{
public:
    BlfWriter(QIODevice *device, const TraceWriterOptions &options);

    bool write(const RawFrame *frames, int count) override;
    bool flush() override;
    bool finish() override;
    QString errorText() const override { return errorText_.isEmpty() ? sink_.errorText() : errorText_; }
    std::vector<TraceLoss> losses() const override { return losses_.list(); }

private:
    void begin();
    void fillHeader(std::uint8_t *header) const;
    void append(const RawFrame &frame);
    void closeContainer();
    bool completeHeader();

    QIODevice *device_;
    BlockSink sink_;
    LossCounts losses_;
    QString errorText_;
    const std::int64_t start_;     // UTC in nanoseconds; 0 when not known
    const std::int64_t startRest_; // of the start, which the file tells in milliseconds; it goes into the times
    qint64 headerAt_ = 0;
    std::vector<std::uint8_t> objects_; // of the container at hand
    std::size_t objectBytes_ = 0;
    std::uint64_t unpackedBytes_;
    std::uint32_t objectCount_ = 0;
    std::int64_t last_ = 0; // the latest time, from the start
    bool begun_ = false;
};
