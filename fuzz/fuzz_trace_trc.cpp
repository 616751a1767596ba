#include "fuzz/tracefuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    return fuzzTrace(TraceFormat::Trc, data, size);
}
