// A file to send: every row that counts as a frame makes records within their bounds, and reading it twice gives the
// same.
#include "frames/csvreader.h"
#include "frames/csvrow.h"
#include "fuzz/require.h"

#include <QTemporaryFile>

namespace
{
struct Pass {
    int lines = 0;
    int frames = 0;
};

Pass readPass(CsvReader &reader)
{
    Pass pass;
    CsvReader::Line line;
    for (bool readable = reader.rewind(); readable && reader.next(line); ++pass.lines) {
        CsvFrame frame;
        if (!parseCsvRow(line.text, line.size, frame))
            continue;
        ++pass.frames;
        require(frame.channel == CsvFrame::kNoChannel || frame.channel < 2);
        require(frame.timeMs < 24 * 60 * 60 * 1000);
        CanTransmitRecord classic;
        toRecord(frame, classic);
        require(classic.length <= sizeof classic.data);
        CanFdTransmitRecord fd;
        toRecord(frame, fd);
        require(fd.length <= sizeof fd.data);
        require((fd.id & kIdMask) <= ((fd.id & kIdExtendedFlag) != 0 ? kExtendedIdLimit : kStandardIdLimit) - 1);
    }
    return pass;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    CsvFrame frame;
    parseCsvRow(reinterpret_cast<const char *>(data), size, frame);

    static QTemporaryFile file;
    require(file.isOpen() || file.open());
    require(file.resize(0) && file.seek(0));
    require(file.write("titles\n") == 7);
    require(file.write(reinterpret_cast<const char *>(data), static_cast<qint64>(size)) == static_cast<qint64>(size));
    require(file.flush());
    CsvReader reader;
    require(reader.open(file.fileName()));
    const Pass first = readPass(reader);
    const Pass second = readPass(reader);
    require(!reader.failed() && first.lines == second.lines && first.frames == second.frames);
    return 0;
}
