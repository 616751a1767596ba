// Reads TRC, from version 1.0, which has no version line, to 2.1, whose columns the file names itself.
#pragma once

#include "traces/texttrace.h"

#include <string>

class TrcReader : public TextTraceReader
{
public:
    explicit TrcReader(ByteSource source);

    TraceFormat format() const override { return TraceFormat::Trc; }

protected:
    std::shared_ptr<const TraceState> state() override { return keepValues(columns_); }
    void restore(const TraceState &state) override { restoreValues(state, columns_); }
    LineKind readLine(std::string_view line, RawFrame *frame) override;
    bool completeWithoutEnd(std::string_view line) const override;

private:
    LineKind readComment(std::string_view line);
    LineKind parse(std::string_view line, RawFrame *frame) const;
    void setVersion(std::string_view version);

    std::string columns_; // a letter each, as the file's $COLUMNS
};
