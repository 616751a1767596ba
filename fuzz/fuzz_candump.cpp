// Recorded traffic: whatever the file holds, every frame read from it fits the bus.
#include "device/driver/simulated/candumplog.h"
#include "fuzz/require.h"

#include <sstream>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    std::istringstream stream(std::string(reinterpret_cast<const char *>(data), size));
    const CandumpLog log = readCandumpLog(stream);
    require(log.frames.size() + log.errorFrames + log.malformed <= size);
    for (const LoggedFrame &logged : log.frames)
        require(logged.frame.length <= (logged.frame.fd ? kFdDataBytes : kClassicDataBytes));
    return 0;
}
