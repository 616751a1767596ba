// BLF, as the list of formats names it.
#pragma once

#include "traces/bytesource.h"
#include "traces/tracewriter.h"

#include <string_view>

bool looksLikeBlf(std::string_view head);
std::unique_ptr<TraceReader> readBlf(ByteSource source);
std::unique_ptr<TraceWriter> writeBlf(QIODevice *device, const TraceWriterOptions &options);
