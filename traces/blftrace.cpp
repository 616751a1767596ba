#include "traces/blftrace.h"

#include "traces/blfreader.h"
#include "traces/blfwriter.h"

#include <utility>

bool looksLikeBlf(std::string_view head)
{
    constexpr std::string_view signature = "LOGG";
    return head.substr(0, signature.size()) == signature;
}

std::unique_ptr<TraceReader> readBlf(ByteSource source)
{
    return std::make_unique<BlfReader>(std::move(source));
}

std::unique_ptr<TraceWriter> writeBlf(QIODevice *device, const TraceWriterOptions &options)
{
    return std::make_unique<BlfWriter>(device, options);
}
