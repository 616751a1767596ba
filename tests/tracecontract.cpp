#include "tracecontract.h"

#include "traces/traceformats.h"

#include <QBuffer>

#include <algorithm>
#include <array>
#include <cstring>

const std::vector<TraceLimits> &traceLimits()
{
    constexpr std::int64_t microsecond = 1000;
    constexpr std::int64_t millisecond = 1000 * microsecond;
    static const std::vector<TraceLimits> all = {
        {TraceFormat::Candump, microsecond, true, true, {Loss::ErrorFd, Loss::RemoteFd, Loss::FdLength}},
        {TraceFormat::Asc, microsecond, true, true, {Loss::ErrorDetails, Loss::ErrorDirection}},
        {TraceFormat::Csv, millisecond, false, true, {Loss::ErrorFrame, Loss::ErrorStateIndicator, Loss::RawDlc}},
        {TraceFormat::Trc,
         microsecond,
         true,
         true,
         {Loss::ErrorDetails, Loss::ErrorFd, Loss::RemoteFd, Loss::FdLength}},
        {TraceFormat::Blf, 1, true, false, {Loss::ErrorDirection}},
        {TraceFormat::Pcapng, 1, true, false, {Loss::ErrorFd, Loss::RemoteFd, Loss::RawDlc}},
    };
    return all;
}

const TraceLimits &limitsOf(TraceFormat format)
{
    const auto &all = traceLimits();
    const auto found = std::find_if(all.begin(), all.end(), [format](const auto &row) { return row.format == format; });
    if (found == all.end())
        qFatal("no row for %s", qPrintable(traceFormatText(format)));
    return *found;
}

std::vector<RawFrame> everyKindOfFrame()
{
    constexpr std::uint8_t fdLengths[] = {0, 1, 8, 9, 12, 16, 20, 24, 32, 48, 64}; // no bus has 9
    std::vector<RawFrame> frames;
    RawFrame frame;
    const auto add = [&] {
        const auto number = static_cast<unsigned>(frames.size());
        frame.time += 1234567000; // whole microseconds, which every decimal format has
        frame.channel = static_cast<std::uint8_t>(1 + number % 3);
        frame.direction = number % 2 ? Direction::Sent : Direction::Received;
        for (unsigned i = 0; i < frame.length; ++i)
            frame.data[i] = frame.remote ? 0 : static_cast<std::uint8_t>(number * 37 + i * 11);
        frames.push_back(frame);
    };
    const auto identify = [&](bool extended, std::uint32_t id) {
        frame = RawFrame{frame.time, id};
        frame.extended = extended;
    };
    for (const bool extended : {false, true}) {
        for (const std::uint32_t id : {0u, 0x7Fu, extended ? 0x1FFFFFFFu : 0x7FFu}) {
            identify(extended, id);
            for (frame.length = 0; frame.length <= 8; ++frame.length)
                add();
            identify(extended, id);
            frame.remote = true;
            for (frame.length = 0; frame.length <= 8; ++frame.length)
                add();
            identify(extended, id);
            frame.fd = frame.remote = true; // no bus has them, but recordings do
            frame.length = 8;
            add();
            identify(extended, id);
            frame.fd = true;
            for (const std::uint8_t length : fdLengths) {
                frame.length = length;
                for (const int flags : {0, 1, 2, 3}) {
                    frame.bitRateSwitch = flags & 1;
                    frame.errorStateIndicator = flags & 2;
                    add();
                }
            }
        }
        identify(extended, 0x123);
        frame.length = 8;
        for (frame.rawDlc = 9; frame.rawDlc <= 15; ++frame.rawDlc)
            add();
    }
    for (const std::uint32_t classes : {0x0u, 0x88u, 0x1FFu}) {
        identify(false, classes);
        frame.error = true;
        frame.length = classes ? 8 : 0;
        add();
        add();
        frame.fd = frame.bitRateSwitch = frame.errorStateIndicator = true;
        frame.length = classes ? 64 : 0;
        add();
        frame.bitRateSwitch = frame.errorStateIndicator = false;
        add();
    }
    identify(false, 0x321);
    frame.time -= 20ll * 1000 * 1000 * 1000; // merged recordings go back
    add();
    return frames;
}

// What a loss does to a frame that it befalls; *whole when nothing is left of it. false when it does not befall it.
static bool lose(TraceFormat format, Loss loss, RawFrame *frame, bool *whole)
{
    const RawFrame before = *frame;
    switch (loss) {
    case Loss::ErrorFrame:
        return *whole = frame->error;
    case Loss::Fd:
        return *whole = frame->fd;
    case Loss::ErrorDetails:
        if (frame->error)
            frame->id = frame->length = frame->bitRateSwitch = frame->errorStateIndicator = 0;
        break;
    case Loss::ErrorDirection:
        if (frame->error && (!frame->fd || format == TraceFormat::Blf))
            frame->direction = Direction::Received;
        break;
    case Loss::ErrorFd:
        if (frame->error && frame->fd) {
            frame->fd = frame->bitRateSwitch = frame->errorStateIndicator = false;
            frame->length = std::min<std::uint8_t>(frame->length, 8);
        }
        break;
    case Loss::Direction:
        frame->direction = Direction::Received;
        break;
    case Loss::Channel:
        frame->channel = 1;
        break;
    case Loss::BitRateSwitch:
        frame->bitRateSwitch = false;
        break;
    case Loss::ErrorStateIndicator:
        frame->errorStateIndicator = false;
        break;
    case Loss::RemoteFd:
        frame->fd = frame->fd && !frame->remote;
        break;
    case Loss::RemoteLength:
        if (frame->remote)
            frame->length = 0;
        break;
    case Loss::RawDlc:
        frame->rawDlc = 0;
        break;
    case Loss::FdLength:
        if (frame->fd && !frame->error) {
            std::fill(frame->data + frame->length, std::end(frame->data), std::uint8_t(0));
            frame->length = lengthOfDlc(dlcOfLength(frame->length), true);
        }
        break;
    case Loss::TimeBeforeStart:
    case Loss::Count:
        break;
    }
    return !sameFrame(before, *frame);
}

std::vector<RawFrame> heldBy(const TraceLimits &limits, const std::vector<RawFrame> &frames,
                             std::vector<TraceLoss> *losses)
{
    LossCounts counts;
    std::vector<RawFrame> held;
    for (RawFrame frame : frames) {
        bool whole = false;
        for (const Loss loss : limits.lost)
            if (!whole && lose(limits.format, loss, &frame, &whole))
                counts.add(loss);
        if (!whole)
            held.push_back(frame);
    }
    if (losses)
        *losses = counts.list();
    return held;
}

WrittenTrace writeTrace(TraceFormat format, const std::vector<RawFrame> &frames, const TraceWriterOptions &options,
                        bool flushEach)
{
    WrittenTrace written;
    QBuffer buffer(&written.bytes);
    buffer.open(QIODevice::WriteOnly);
    const auto writer = createTrace(&buffer, format, options);
    bool good = writer != nullptr && (!flushEach || writer->flush());
    if (flushEach)
        written.sizes.push_back(written.bytes.size());
    const std::size_t piece = flushEach ? 1 : 7; // no number of frames at once is special
    for (std::size_t i = 0; good && i < frames.size(); i += piece) {
        good = writer->write(&frames[i], static_cast<int>(std::min(piece, frames.size() - i)));
        if (good && flushEach) {
            good = writer->flush();
            written.sizes.push_back(written.bytes.size());
        }
    }
    if (!good || !writer->finish())
        qFatal("a buffer refused");
    written.losses = writer->losses();
    return written;
}

ReadTrace readTrace(const QByteArray &bytes, std::optional<TraceFormat> format)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    return readTrace(&buffer, format);
}

ReadTrace readTrace(QIODevice *device, std::optional<TraceFormat> format, const QString &name)
{
    constexpr int idleReads = 1000; // of a pipe that has nothing now
    ReadTrace read;
    const auto reader = format ? openTrace(device, *format, &read.openError) : openTrace(device, name, &read.openError);
    read.opened = reader != nullptr;
    if (!reader)
        return read;
    std::array<RawFrame, 5> frames;
    int idle = 0;
    while (!reader->atEnd() && idle < idleReads) {
        const int count = reader->read(frames.data(), static_cast<int>(frames.size()));
        idle = count > 0 ? 0 : idle + 1;
        read.frames.insert(read.frames.end(), frames.begin(), frames.begin() + count);
    }
    if (!reader->atEnd())
        read.error = TraceError{{"", "", "nowhere"}, {"", "", "reading does not end"}};
    else
        read.error = reader->error();
    read.start = reader->startUtc();
    read.skipped = reader->skipped();
    read.format = reader->format();
    return read;
}

QString difference(const std::vector<RawFrame> &actual, const std::vector<RawFrame> &expected, std::int64_t tolerance)
{
    if (actual.size() != expected.size())
        return QStringLiteral("%1 frames, not %2").arg(actual.size()).arg(expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        if (!sameFrame(actual[i], expected[i]))
            return QStringLiteral("frame %1 is %2, not %3").arg(i).arg(frameText(actual[i]), frameText(expected[i]));
        const std::int64_t time = actual[i].time - actual[0].time;
        const std::int64_t expectedTime = expected[i].time - expected[0].time;
        if (std::abs(time - expectedTime) > tolerance)
            return QStringLiteral("frame %1 at %2 ns, not %3 ns").arg(i).arg(time).arg(expectedTime);
    }
    return {};
}

QString frameText(const RawFrame &frame)
{
    QString text = QString::number(frame.channel) + (frame.direction == Direction::Sent ? " tx " : " rx ");
    text += QString::number(frame.id, 16).toUpper() + (frame.extended ? "x " : " ");
    text += frame.error ? "error " : frame.remote ? "r " : "";
    text += QString::number(frame.length) + ' ';
    if (!frame.remote)
        text += QByteArray(reinterpret_cast<const char *>(frame.data), frame.length).toHex();
    if (frame.fd)
        text += " fd";
    if (frame.bitRateSwitch)
        text += " brs";
    if (frame.errorStateIndicator)
        text += " esi";
    if (frame.rawDlc)
        text += QStringLiteral(" dlc %1").arg(frame.rawDlc);
    return text.trimmed();
}

QString lossTexts(const std::vector<TraceLoss> &losses)
{
    QStringList texts;
    for (const TraceLoss &loss : losses)
        texts << loss.what + QStringLiteral(" %1").arg(loss.count);
    return texts.join(QStringLiteral(", "));
}

QString textsOf(const ReadTrace &read)
{
    QStringList texts;
    for (const RawFrame &frame : read.frames)
        texts << frameText(frame);
    if (read.error)
        texts << read.error->place.toString();
    return texts.join(QLatin1Char('\n'));
}
