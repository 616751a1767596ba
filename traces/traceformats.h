// The one place where the formats of recordings are registered.
#pragma once

#include "traces/bytesource.h"
#include "traces/tracewriter.h"

#include <string_view>
#include <vector>

struct TraceFormatEntry {
    TraceFormat format;
    const char *name;   // as on a command line
    const char *ending; // of file names, without the dot
    // Whether a file that begins so (at most kTraceHeadBytes, all of them when it has as many) is of this format; null
    // when the format is only written.
    bool (*recognises)(std::string_view head);
    std::unique_ptr<TraceReader> (*read)(ByteSource source);
    std::unique_ptr<TraceWriter> (*write)(QIODevice *device, const TraceWriterOptions &options);
};

constexpr std::size_t kTraceHeadBytes = 4096;

// In the order in which a file's beginning is shown to them.
const std::vector<TraceFormatEntry> &traceFormats();
