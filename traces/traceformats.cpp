#include "traces/traceformats.h"

#include "traces/asctrace.h"
#include "traces/blftrace.h"
#include "traces/candumptrace.h"
#include "traces/csvtrace.h"
#include "traces/pcapngtrace.h"
#include "traces/trctrace.h"

#include <QIODevice>

#include <algorithm>
#include <utility>

namespace
{

const TraceFormatEntry *find(TraceFormat format)
{
    const auto &all = traceFormats();
    const auto found =
        std::find_if(all.begin(), all.end(), [format](const auto &entry) { return entry.format == format; });
    return found == all.end() ? nullptr : &*found;
}

std::unique_ptr<TraceReader> fail(QString *error, const QString &reason)
{
    *error = reason;
    return nullptr;
}

std::unique_ptr<TraceReader> cannotRead(QString *error)
{
    return fail(error,
                text3("该格式的记录无法读取", "該格式的記錄無法讀取", "recordings of this format cannot be read"));
}

} // namespace

const std::vector<TraceFormatEntry> &traceFormats()
{
    static const std::vector<TraceFormatEntry> all = {
        {TraceFormat::Candump, "candump", "log", looksLikeCandump, readCandump, writeCandump},
        {TraceFormat::Asc, "asc", "asc", looksLikeAsc, readAsc, writeAsc},
        {TraceFormat::Csv, "csv", "csv", looksLikeCsv, readCsv, writeCsv},
        {TraceFormat::Blf, "blf", "blf", looksLikeBlf, readBlf, writeBlf},
        {TraceFormat::Trc, "trc", "trc", looksLikeTrc, readTrc, writeTrc},
        {TraceFormat::Pcapng, "pcapng", "pcapng", nullptr, nullptr, writePcapng},
    };
    return all;
}

std::unique_ptr<TraceReader> openTrace(QIODevice *device, const QString &name, QString *error)
{
    ByteSource source(device);
    source.fill(kTraceHeadBytes);
    if (source.size() == 0)
        return fail(error, source.failed() ? text3("记录无法读取", "記錄無法讀取", "the recording cannot be read")
                           : source.ended()
                               ? text3("记录是空的", "記錄是空的", "the recording is empty")
                               : text3("还没有可读的内容", "還沒有可讀的內容", "there is nothing to read yet"));
    const std::string_view head(source.data(), std::min(source.size(), kTraceHeadBytes));
    for (const TraceFormatEntry &entry : traceFormats())
        if (entry.recognises && entry.recognises(head))
            return entry.read(std::move(source));
    const std::optional<TraceFormat> named = traceFormatOfName(name);
    const TraceFormatEntry *entry = named ? find(*named) : nullptr;
    if (!entry || !entry->read)
        return fail(error, text3("不是已知格式的记录", "不是已知格式的記錄", "no recording of a known format"));
    return entry->read(std::move(source));
}

std::unique_ptr<TraceReader> openTrace(QIODevice *device, TraceFormat format, QString *error)
{
    const TraceFormatEntry *entry = find(format);
    if (!entry || !entry->read)
        return cannotRead(error);
    return entry->read(ByteSource(device));
}

std::unique_ptr<TraceReader> openTraceAt(QIODevice *device, TraceFormat format, const TraceCheckpoint &checkpoint,
                                         QString *error)
{
    const TraceFormatEntry *entry = find(format);
    if (!entry || !entry->read)
        return cannotRead(error);
    if (!device->seek(static_cast<qint64>(checkpoint.offset)))
        return fail(error, text3("记录无法从该处继续读取", "記錄無法從該處繼續讀取",
                                 "the recording cannot be read from there on"));
    std::unique_ptr<TraceReader> reader = entry->read(ByteSource(device, checkpoint.offset));
    if (checkpoint.offset > 0 || checkpoint.passOver > 0)
        reader->resume(checkpoint);
    return reader;
}

std::unique_ptr<TraceWriter> createTrace(QIODevice *device, TraceFormat format, const TraceWriterOptions &options)
{
    const TraceFormatEntry *entry = find(format);
    return entry && entry->write ? entry->write(device, options) : nullptr;
}

std::optional<TraceFormat> traceFormatOfName(const QString &fileName)
{
    for (const TraceFormatEntry &entry : traceFormats())
        if (fileName.endsWith(QLatin1Char('.') + QLatin1String(entry.ending), Qt::CaseInsensitive))
            return entry.format;
    return std::nullopt;
}

std::optional<TraceFormat> traceFormatFromText(const QString &text)
{
    for (const TraceFormatEntry &entry : traceFormats())
        if (text.compare(QLatin1String(entry.name), Qt::CaseInsensitive) == 0)
            return entry.format;
    return std::nullopt;
}

QString traceFormatText(TraceFormat format)
{
    const TraceFormatEntry *entry = find(format);
    return entry ? QLatin1String(entry->name) : QString();
}

QString traceFormatEnding(TraceFormat format)
{
    const TraceFormatEntry *entry = find(format);
    return entry ? QLatin1String(entry->ending) : QString();
}
