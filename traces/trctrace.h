// TRC, as the list of formats names it.
#pragma once

#include "traces/bytesource.h"
#include "traces/tracewriter.h"

#include <string_view>

bool looksLikeTrc(std::string_view head);
std::unique_ptr<TraceReader> readTrc(ByteSource source);
std::unique_ptr<TraceWriter> writeTrc(QIODevice *device, const TraceWriterOptions &options);
