// BLF: whatever a file holds, reading ends, every frame is one, and what was read comes back when it is written.
#include "fuzz/require.h"
#include "traces/tracewriter.h"

#include <QBuffer>

#include <vector>

namespace
{

std::vector<RawFrame> readAll(const QByteArray &bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QString reason;
    const auto reader = openTrace(&buffer, TraceFormat::Blf, &reason);
    require(reader != nullptr);
    std::vector<RawFrame> frames;
    RawFrame piece[3];
    while (!reader->atEnd()) {
        const int count = reader->read(piece, 3);
        require(count == 3 || reader->atEnd());
        frames.insert(frames.end(), piece, piece + count);
    }
    require(!reader->error() || !reader->error()->place.toString().isEmpty());
    return frames;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto frames = readAll(QByteArray(reinterpret_cast<const char *>(data), static_cast<int>(size)));
    for (const RawFrame &frame : frames) {
        require(frame.length <= (frame.fd ? kRawDataBytes : 8) && frame.channel > 0 && frame.time >= 0);
        require(frame.id <= 0x1FFFFFFF);
        require(frame.rawDlc == 0 || (frame.rawDlc > 8 && frame.rawDlc < 16 && frame.length == 8));
    }
    QByteArray written;
    QBuffer buffer(&written);
    buffer.open(QIODevice::WriteOnly);
    const auto writer = createTrace(&buffer, TraceFormat::Blf, {});
    require(writer->write(frames.data(), static_cast<int>(frames.size())) && writer->finish());
    if (!writer->losses().empty())
        return 0;
    const auto again = readAll(written);
    require(again.size() == frames.size());
    for (std::size_t index = 0; index < frames.size(); ++index)
        require(sameFrame(frames[index], again[index]) && frames[index].time == again[index].time);
    return 0;
}
