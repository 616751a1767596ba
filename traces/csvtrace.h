// The program's own CSV files, as its capture writes them and its file send reads them.
#pragma once

#include "traces/bytesource.h"
#include "traces/tracewriter.h"

#include <string_view>

bool looksLikeCsv(std::string_view head);
// The files have times of day without a date: the recording's start is unknown, times count from the midnight before
// the first row, and a clock that goes back by more than half a day has passed midnight. Received frames follow the
// adapter's time stamps (microseconds) as long as these stay within a second of the system time. UTF-8 or GB18030.
std::unique_ptr<TraceReader> readCsv(ByteSource source);
// In the current language; with a start the times of day are local ones.
std::unique_ptr<TraceWriter> writeCsv(QIODevice *device, const TraceWriterOptions &options);
