// The log format of candump: "(seconds.fraction) interface identifier#data" a line.
#pragma once

#include "traces/bytesource.h"
#include "traces/tracewriter.h"

#include <string_view>

bool looksLikeCandump(std::string_view head);
// Times from 1980 on are dates; the first frame's is the recording's start then. Lines that begin with "#" or ";" are
// comments.
std::unique_ptr<TraceReader> readCandump(ByteSource source);
// Channel n is the interface can(n - 1). " T" ends the lines of sent frames, as candump -x has it.
std::unique_ptr<TraceWriter> writeCandump(QIODevice *device, const TraceWriterOptions &options);
