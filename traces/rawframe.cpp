#include "traces/rawframe.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace
{

constexpr std::uint8_t kLengths[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64};

} // namespace

bool sameFrame(const RawFrame &a, const RawFrame &b)
{
    return a.id == b.id && a.channel == b.channel && a.direction == b.direction && a.extended == b.extended &&
           a.remote == b.remote && a.fd == b.fd && a.bitRateSwitch == b.bitRateSwitch &&
           a.errorStateIndicator == b.errorStateIndicator && a.error == b.error && a.length == b.length &&
           a.rawDlc == b.rawDlc &&
           (a.remote || std::memcmp(a.data, b.data, std::min<unsigned>(a.length, kRawDataBytes)) == 0);
}

std::uint8_t dlcOfLength(unsigned length)
{
    const auto *found = std::lower_bound(std::begin(kLengths), std::end(kLengths), length);
    return static_cast<std::uint8_t>(found == std::end(kLengths) ? std::size(kLengths) - 1 : found - kLengths);
}

std::uint8_t lengthOfDlc(unsigned dlc, bool fd)
{
    const unsigned code = std::min<unsigned>(dlc, fd ? std::size(kLengths) - 1 : 8);
    return kLengths[code];
}
