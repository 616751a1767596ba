// The lines of a text recording on their way to a device.
#pragma once

#include "traces/gatheredoutput.h"

class TextSink : public GatheredOutput
{
public:
    using GatheredOutput::GatheredOutput;

    // Room for so many bytes behind what is gathered; valid until the next call.
    char *room(std::size_t bytes) { return roomFor(bytes); }
    // The room is filled up to here; every line ends with a line feed.
    void filledTo(const char *end) { setSize(static_cast<std::size_t>(end - gathered())); }

protected:
    std::size_t wholeWithin(std::size_t bytes) const override
    {
        while (bytes > 0 && gathered()[bytes - 1] != '\n')
            --bytes;
        return bytes;
    }
};
