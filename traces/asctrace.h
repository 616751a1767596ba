// Recordings as ASC text.
#pragma once

#include "traces/bytesource.h"
#include "traces/tracewriter.h"

#include <optional>
#include <string>
#include <string_view>

bool looksLikeAsc(std::string_view head);
// The date is local time, as recorders write it. Events other than CAN frames and error frames are passed over; frames
// with a name instead of an identifier count as skipped.
std::unique_ptr<TraceReader> readAsc(ByteSource source);
// Base hex, absolute times; without a start there is no date.
std::unique_ptr<TraceWriter> writeAsc(QIODevice *device, const TraceWriterOptions &options);

// A date as it stands behind "date", such as "Sat Sep 30 03:06:13.191 pm 2017"; names in English or German, hours up to
// 12 or 24, with or without milliseconds. Nanoseconds since 1970 UTC.
std::optional<std::int64_t> parseAscDate(std::string_view text);
// The date as text, to the millisecond below; 24 hours, English.
std::string ascDateText(std::int64_t utc);
