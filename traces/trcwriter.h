// Writes TRC 2.1: microseconds, a row per frame, lines with CRLF.
#pragma once

#include "traces/texttrace.h"

class TrcWriter : public TextTraceWriter
{
public:
    TrcWriter(QIODevice *device, const TraceWriterOptions &options);

protected:
    void writeHead() override;
    void writeLines(const RawFrame *frames, int count) override;

private:
    char *writeRow(const RawFrame &frame, char *at);

    std::uint64_t number_ = 0;
};
