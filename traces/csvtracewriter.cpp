#include "device/driver/identifiers.h"
#include "device/driver/timeunits.h"
#include "traces/columntitles.h"
#include "traces/csvtrace.h"
#include "traces/frametexts.h"
#include "traces/textput.h"
#include "traces/texttrace.h"

#include "device/language.h"

#include <QDateTime>

#include <string>

namespace
{

constexpr std::size_t kLongestRow = 512;

std::int64_t floorDivided(std::int64_t number, std::int64_t divisor)
{
    return number / divisor - (number % divisor < 0 ? 1 : 0);
}

// Milliseconds since midnight of moments that lie close together.
class LocalClock
{
public:
    explicit LocalClock(bool local) : local_(local) {}

    std::int64_t timeOfDayMs(std::int64_t ms)
    {
        const std::int64_t quarter = floorDivided(ms, kQuarterMs); // zones change at quarters of an hour
        if (local_ && quarter != quarter_) {
            quarter_ = quarter;
            offsetMs_ = QDateTime::fromMSecsSinceEpoch(ms).offsetFromUtc() * 1000;
        }
        ms += offsetMs_;
        return ms - floorDivided(ms, kMillisecondsPerDay) * kMillisecondsPerDay;
    }

private:
    static constexpr std::int64_t kQuarterMs = 15 * 60 * 1000;

    bool local_;
    std::int64_t quarter_ = INT64_MIN;
    std::int64_t offsetMs_ = 0;
};

class CsvWriter final : public TextTraceWriter
{
public:
    CsvWriter(QIODevice *device, const TraceWriterOptions &options);

protected:
    void writeHead() override;
    void writeLines(const RawFrame *frames, int count) override;

private:
    char *writeRow(char *out, const RawFrame &frame);
    char *writeTimes(char *out, const RawFrame &frame);
    char *writeData(char *out, const RawFrame &frame);

    struct Words {
        explicit Words(const FrameWords &words)
            : standardFrame(words.standardFrame.toStdString()),
              extendedFrame(words.extendedFrame.toStdString()),
              dataFrame(words.dataFrame.toStdString()),
              remoteFrame(words.remoteFrame.toStdString()),
              fdWithSwitch(words.fdWithSwitch.toStdString())
        {
        }
        std::string standardFrame;
        std::string extendedFrame;
        std::string dataFrame;
        std::string remoteFrame;
        std::string fdWithSwitch;
    };
    const Words words_;
    LocalClock clock_;
    std::uint64_t rows_ = 0;
};

CsvWriter::CsvWriter(QIODevice *device, const TraceWriterOptions &options)
    : TextTraceWriter(device, options),
      words_(frameWords(languageCode())),
      clock_(options.startUtc && !options.relativeTimes)
{
}

void CsvWriter::writeHead()
{
    const QByteArray head = "\xEF\xBB\xBF" + columnTitles().join(QLatin1Char(',')).toUtf8() + '\n';
    sink_.filledTo(put::text(sink_.room(static_cast<std::size_t>(head.size())), head.toStdString()));
}

void CsvWriter::writeLines(const RawFrame *frames, int count)
{
    for (int i = 0; i < count; ++i) {
        if (frames[i].error)
            losses_.add(Loss::ErrorFrame);
        else
            sink_.filledTo(writeRow(sink_.room(kLongestRow), frames[i]));
    }
}

char *CsvWriter::writeRow(char *out, const RawFrame &frame)
{
    const unsigned length = std::min<unsigned>(frame.length, frame.fd ? kRawDataBytes : kClassicBytes);
    out = put::decimal(out, ++rows_);
    out = writeTimes(out, frame);
    out = put::decimal(out, frame.channel);
    out = put::text(out, frame.direction == Direction::Sent ? ",Tx,0x" : ",Rx,0x");
    out = frame.extended ? put::hex(out, frame.id & kLargestExtendedId, 8)
                         : put::hex(out, frame.id & kLargestStandardId, 3);
    *out++ = ',';
    out = put::text(out, frame.extended ? words_.extendedFrame : words_.standardFrame);
    *out++ = ',';
    out = put::text(out, frame.remote ? words_.remoteFrame : words_.dataFrame);
    *out++ = ',';
    out = put::decimal(out, length);
    *out++ = ',';
    out = put::text(out, !frame.fd ? "CAN" : frame.bitRateSwitch ? std::string_view(words_.fdWithSwitch) : "CANFD");
    *out++ = ',';
    out = writeData(out, frame);
    *out++ = '\n';
    if (frame.errorStateIndicator)
        losses_.add(Loss::ErrorStateIndicator);
    if (frame.rawDlc > 0)
        losses_.add(Loss::RawDlc);
    return out;
}

// The system time of day and the adapter's time stamp, which sent frames do not have.
char *CsvWriter::writeTimes(char *out, const RawFrame &frame)
{
    const std::int64_t time = timeOnFile(frame.time);
    auto ms = static_cast<std::uint64_t>(clock_.timeOfDayMs(time / kNanosecondsPerMillisecond));
    out = put::text(out, ",=\"");
    out = put::decimal(out, ms / 3600000, 2);
    *out++ = ':';
    out = put::decimal(out, ms / 60000 % 60, 2);
    *out++ = ':';
    out = put::decimal(out, ms / 1000 % 60, 2);
    *out++ = '.';
    out = put::decimal(out, ms % 1000, 3);
    out = put::text(out, "\",");
    if (frame.direction == Direction::Sent || frame.time < 0) {
        out = put::text(out, "无");
    } else {
        const auto stamp = static_cast<std::uint64_t>(frame.time / kNanosecondsPerMicrosecond);
        out = put::text(out, "0x");
        out = put::hex(out, stamp, put::hexDigits(stamp));
    }
    *out++ = ',';
    return out;
}

char *CsvWriter::writeData(char *out, const RawFrame &frame)
{
    if (frame.fd && frame.remote && frame.direction == Direction::Received)
        return out; // as the program's own rows have it
    out = put::text(out, "x| ");
    const unsigned length = lengthOnFile(frame);
    for (unsigned i = 0; i < length; ++i) {
        out = put::hexByte(out, frame.data[i]);
        *out++ = ' ';
    }
    return out;
}

} // namespace

std::unique_ptr<TraceWriter> writeCsv(QIODevice *device, const TraceWriterOptions &options)
{
    return std::make_unique<CsvWriter>(device, options);
}
