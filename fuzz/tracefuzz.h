// Recordings: whatever a file holds, reading ends, every frame is one, and what was read comes back when it is written.
#pragma once

#include "fuzz/require.h"
#include "traces/tracewriter.h"

#include <QBuffer>

#include <vector>

inline std::vector<RawFrame> fuzzRead(const QByteArray &bytes, TraceFormat format)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QString reason;
    std::vector<RawFrame> frames;
    const auto reader = openTrace(&buffer, format, &reason);
    require(reader != nullptr);
    RawFrame piece[3];
    while (!reader->atEnd()) {
        const int count = reader->read(piece, 3);
        require(count == 3 || reader->atEnd());
        frames.insert(frames.end(), piece, piece + count);
    }
    require(!reader->error() || !reader->error()->place.toString().isEmpty());
    return frames;
}

inline int fuzzTrace(TraceFormat format, const std::uint8_t *data, std::size_t size)
{
    const auto frames = fuzzRead(QByteArray(reinterpret_cast<const char *>(data), static_cast<int>(size)), format);
    require(frames.size() <= size);
    for (const RawFrame &frame : frames) {
        require(frame.length <= (frame.fd ? kRawDataBytes : 8) && frame.channel > 0);
        require(frame.id <= (frame.extended || frame.error ? 0x1FFFFFFF : 0x7FF));
        require(frame.rawDlc == 0 || (frame.rawDlc > 8 && frame.rawDlc < 16 && frame.length == 8));
    }
    QByteArray written;
    QBuffer buffer(&written);
    buffer.open(QIODevice::WriteOnly);
    const auto writer = createTrace(&buffer, format, {});
    require(writer->write(frames.data(), static_cast<int>(frames.size())) && writer->finish());
    if (!writer->losses().empty())
        return 0;
    const auto again = fuzzRead(written, format);
    require(again.size() == frames.size());
    for (std::size_t i = 0; i < frames.size(); ++i)
        require(sameFrame(frames[i], again[i]));
    return 0;
}
