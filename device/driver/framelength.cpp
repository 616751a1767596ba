#include "device/driver/framelength.h"

#include "device/driver/timeunits.h"

#include <algorithm>
#include <array>
#include <utility>

namespace
{

constexpr unsigned kBitsPerByte = 8;
constexpr unsigned kBaseIdBits = 11;
constexpr unsigned kIdExtensionBits = 18;
constexpr unsigned kDlcBits = 4;
// Acknowledge slot and delimiter, end of frame, interframe space.
constexpr unsigned kTailBits = 1 + 1 + 7 + 3;

constexpr unsigned kCrc15Bits = 15;
constexpr unsigned kCrc15Mask = (1u << kCrc15Bits) - 1;
constexpr unsigned kCrc15Polynomial = 0x4599;

constexpr unsigned kShortCrcBytes = 16; // FD: up to so many data bytes the CRC has 17 bits
constexpr unsigned kStuffCountBits = 4;
constexpr unsigned kCrcDelimiterBits = 1;

// --- dynamic stuffing: after five equal bits one of the other kind --------------------------------------------------

constexpr unsigned kLongestRun = 5;

// Where a stream of bits stands: its last bit, stuff bits counted in, and how many of the kind came in a row. After the
// fifth the stuff bit has begun a new run, so there are four lengths.
constexpr unsigned kStates = 2 * (kLongestRun - 1);
constexpr unsigned kStateBits = 3;

constexpr unsigned stateOf(unsigned bit, unsigned run)
{
    return bit * (kLongestRun - 1) + run - 1;
}

constexpr unsigned lastBitOf(unsigned state)
{
    return state / (kLongestRun - 1);
}

// A step in a table: the state after it, and above that the stuff bits it has added.
constexpr std::uint8_t bitStep(unsigned state, unsigned bit)
{
    const unsigned run = lastBitOf(state) == bit ? state % (kLongestRun - 1) + 2 : 1;
    const bool stuffed = run == kLongestRun;
    return static_cast<std::uint8_t>(stuffed ? stateOf(1 - bit, 1) | 1u << kStateBits : stateOf(bit, run));
}

using ByteSteps = std::array<std::array<std::uint8_t, 256>, kStates>;

constexpr ByteSteps makeByteSteps()
{
    ByteSteps steps{};
    for (unsigned first = 0; first < kStates; ++first)
        for (unsigned byte = 0; byte < 256; ++byte) {
            unsigned state = first;
            unsigned stuffed = 0;
            for (unsigned bit = kBitsPerByte; bit-- > 0;) {
                const unsigned step = bitStep(state, byte >> bit & 1);
                state = step % kStates;
                stuffed += step >> kStateBits;
            }
            steps[first][byte] = static_cast<std::uint8_t>(state | stuffed << kStateBits);
        }
    return steps;
}

constexpr ByteSteps kByteSteps = makeByteSteps();

// Counts the stuff bits of a stream that begins with the dominant start of frame, which is not fed.
class StuffCounter
{
public:
    void byte(std::uint8_t byte) { take(kByteSteps[state_][byte]); }
    // The lowest `width` bits, highest first.
    void bits(std::uint64_t value, unsigned width)
    {
        while (width % kBitsPerByte != 0)
            take(bitStep(state_, value >> --width & 1));
        while (width > 0) {
            width -= kBitsPerByte;
            byte(static_cast<std::uint8_t>(value >> width));
        }
    }
    // The stuff bits since the last call.
    unsigned takeCount() { return std::exchange(count_, 0); }
    // Whether the last bit fed has made a stuff bit, which then is the last of the stream.
    bool endsStuffed(unsigned lastBitFed) const { return lastBitOf(state_) != lastBitFed; }

private:
    void take(unsigned step)
    {
        state_ = step % kStates;
        count_ += step >> kStateBits;
    }

    unsigned state_ = stateOf(0, 1);
    unsigned count_ = 0;
};

// --- CRC of classic frames ------------------------------------------------------------------------------------------

using CrcSteps = std::array<std::uint16_t, 256>;

constexpr CrcSteps makeCrcSteps()
{
    CrcSteps steps{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        unsigned crc = byte << (kCrc15Bits - kBitsPerByte);
        for (unsigned bit = 0; bit < kBitsPerByte; ++bit)
            crc = (crc << 1 ^ (crc >> (kCrc15Bits - 1) & 1 ? kCrc15Polynomial : 0)) & kCrc15Mask;
        steps[byte] = static_cast<std::uint16_t>(crc);
    }
    return steps;
}

constexpr CrcSteps kCrcSteps = makeCrcSteps();

unsigned crcStep(unsigned crc, std::uint8_t byte)
{
    return (crc << kBitsPerByte ^ kCrcSteps[(crc >> (kCrc15Bits - kBitsPerByte) ^ byte) & 0xFF]) & kCrc15Mask;
}

// --- fields ---------------------------------------------------------------------------------------------------------

// Bits one after the other, the first in the highest place.
struct Bits {
    std::uint64_t value = 0;
    unsigned width = 0;

    void add(std::uint32_t more, unsigned moreWidth)
    {
        value = value << moreWidth | more;
        width += moreWidth;
    }
};

// From behind the start of frame to the identifier extension bit; of an extended frame to the end of the identifier.
// rtr: the bit behind a standard identifier.
Bits identifierBits(std::uint32_t idWord, unsigned rtr)
{
    const std::uint32_t id = idWord & kIdMask;
    Bits bits;
    if ((idWord & kIdExtendedFlag) == 0) {
        bits.add(id & kLargestStandardId, kBaseIdBits);
        bits.add(rtr << 1, 2); // and a dominant identifier extension
    } else {
        bits.add(id >> kIdExtensionBits, kBaseIdBits);
        bits.add(0b11, 2); // substitute remote request, identifier extension
        bits.add(id & ((1u << kIdExtensionBits) - 1), kIdExtensionBits);
    }
    return bits;
}

unsigned fdDlc(unsigned wireLength)
{
    constexpr std::uint8_t kLengths[] = {8, 12, 16, 20, 24, 32, 48, 64};
    unsigned step = 0;
    while (kLengths[step] < wireLength)
        ++step;
    return step == 0 ? wireLength : kClassicDataBytes + step;
}

FrameBits classicBits(const FrameOnWire &frame)
{
    const bool remote = (frame.id & kIdRemoteFlag) != 0;
    const unsigned length = std::min<unsigned>(frame.length, kClassicDataBytes);
    Bits head = identifierBits(frame.id, remote ? 1 : 0);
    if ((frame.id & kIdExtendedFlag) != 0)
        head.add(remote ? 0b100 : 0, 3); // remote request, two reserved bits
    else
        head.add(0, 1); // a reserved bit
    head.add(length == kClassicDataBytes && frame.rawDlc > length ? frame.rawDlc & 0xF : length, kDlcBits);

    StuffCounter stuffing;
    stuffing.bits(head.value, head.width);
    unsigned crc = 0;
    for (unsigned place = (head.width / kBitsPerByte + 1) * kBitsPerByte; place > 0; place -= kBitsPerByte)
        crc = crcStep(crc,
                      static_cast<std::uint8_t>(head.value >> (place - kBitsPerByte))); // zeros before change nothing
    const unsigned dataBytes = remote ? 0 : length;
    for (unsigned i = 0; i < dataBytes; ++i) {
        stuffing.byte(frame.data[i]);
        crc = crcStep(crc, frame.data[i]);
    }
    stuffing.bits(crc, kCrc15Bits);
    const unsigned plain = 1 + head.width + kBitsPerByte * dataBytes + kCrc15Bits + kCrcDelimiterBits + kTailBits;
    return {plain + stuffing.takeCount(), 0};
}

FrameBits fdBits(const FrameOnWire &frame)
{
    const unsigned given = std::min<unsigned>(frame.length, kFdDataBytes);
    const unsigned length = fdWireLength(given);
    Bits head = identifierBits(frame.id, 0);
    if ((frame.id & kIdExtendedFlag) != 0)
        head.add(0, 1); // remote request substitution
    head.add(0b10, 2);  // FD format, a reserved bit
    StuffCounter stuffing;
    stuffing.bits(head.value, head.width);
    const unsigned headStuff = stuffing.takeCount();

    Bits control;
    control.add(frame.bitRateSwitch ? 1 : 0, 1);
    control.add(frame.errorStateIndicator ? 1 : 0, 1);
    control.add(fdDlc(length), kDlcBits);
    stuffing.bits(control.value, control.width);
    unsigned lastBit = control.value & 1;
    for (unsigned i = 0; i < length; ++i) {
        const std::uint8_t byte = i < given ? frame.data[i] : 0;
        stuffing.byte(byte);
        lastBit = byte & 1;
    }
    // Where one would follow the last data bit, the first fixed stuff bit stands in its place.
    const unsigned dataStuff = stuffing.takeCount() - (stuffing.endsStuffed(lastBit) ? 1 : 0);

    const bool shortCrc = length <= kShortCrcBytes;
    const unsigned crcAndFixedStuff = shortCrc ? 17 + 6 : 21 + 7;
    const unsigned slow = 1 + head.width + headStuff + 1 + kTailBits; // start of frame; the bit-rate switch bit
    const unsigned fast =
        control.width - 1 + kBitsPerByte * length + dataStuff + kStuffCountBits + crcAndFixedStuff + kCrcDelimiterBits;
    return frame.bitRateSwitch ? FrameBits{slow, fast} : FrameBits{slow + fast, 0};
}

} // namespace

FrameBits frameBits(const FrameOnWire &frame)
{
    return frame.fd ? fdBits(frame) : classicBits(frame);
}

FrameBits frameBits(const BusFrame &frame)
{
    FrameOnWire onWire;
    onWire.id = frame.id;
    onWire.fd = frame.fd;
    onWire.bitRateSwitch = frame.bitRateSwitch;
    onWire.errorStateIndicator = frame.errorStateIndicator;
    onWire.length = frame.length;
    onWire.data = frame.data;
    return frameBits(onWire);
}

std::uint64_t wireTime(const FrameBits &bits, std::uint32_t arbitrationRate, std::uint32_t dataRate)
{
    const std::uint64_t slow = bits.arbitration * kNanosecondsPerSecond / arbitrationRate;
    return bits.data == 0 ? slow : slow + bits.data * kNanosecondsPerSecond / dataRate;
}
