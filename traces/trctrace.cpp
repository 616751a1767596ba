#include "traces/trctrace.h"

#include "traces/trclayout.h"
#include "traces/trcreader.h"
#include "traces/trcwriter.h"

#include <algorithm>
#include <utility>

namespace
{

// "     1)     17535  …": how the rows of versions 1.x begin.
bool isNumberedRow(std::string_view line)
{
    const std::size_t first = line.find_first_not_of(' ');
    const std::size_t end = line.find_first_not_of("0123456789", first);
    return first != std::string_view::npos && end != std::string_view::npos && end > first && line[end] == ')';
}

} // namespace

bool looksLikeTrc(std::string_view head)
{
    while (!head.empty()) {
        const std::size_t end = std::min(head.find('\n'), head.size());
        const std::string_view line = head.substr(0, end);
        if (line.substr(0, trc::kVersionKey.size()) == trc::kVersionKey)
            return true;
        const bool comment = line.empty() || line == "\r" || line.front() == ';';
        if (!comment)
            return isNumberedRow(line);
        head.remove_prefix(std::min(end + 1, head.size()));
    }
    return false;
}

std::unique_ptr<TraceReader> readTrc(ByteSource source)
{
    return std::make_unique<TrcReader>(std::move(source));
}

std::unique_ptr<TraceWriter> writeTrc(QIODevice *device, const TraceWriterOptions &options)
{
    return std::make_unique<TrcWriter>(device, options);
}
