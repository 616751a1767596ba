#include "traces/inflate.h"

#include "traces/inflatebits.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

using namespace inflatebits;

namespace
{

constexpr unsigned kDistances = 32;
constexpr unsigned kEndOfBlock = 256;

constexpr std::uint16_t kLengthBase[] = {3,  4,  5,  6,  7,  8,  9,  10, 11,  13,  15,  17,  19,  23, 27,
                                         31, 35, 43, 51, 59, 67, 83, 99, 115, 131, 163, 195, 227, 258};
constexpr std::uint8_t kLengthBits[] = {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2,
                                        2, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5, 0};
constexpr std::uint16_t kDistanceBase[] = {1,    2,    3,    4,    5,    7,    9,    13,    17,    25,
                                           33,   49,   65,   97,   129,  193,  257,  385,   513,   769,
                                           1025, 1537, 2049, 3073, 4097, 6145, 8193, 12289, 16385, 24577};
constexpr std::uint8_t kDistanceBits[] = {0, 0, 0, 0, 1, 1, 2, 2,  3,  3,  4,  4,  5,  5,  6,
                                          6, 7, 7, 8, 8, 9, 9, 10, 10, 11, 11, 12, 12, 13, 13};

class Inflater
{
public:
    Inflater(const std::uint8_t *packed, std::size_t size, std::uint8_t *out, std::size_t capacity)
        : bits_(packed, size), out_(out), capacity_(capacity)
    {
    }

    Inflated run()
    {
        for (;;) {
            bits_.refill();
            const bool last = bits_.take(1) != 0;
            const std::uint32_t kind = bits_.take(2);
            if (bits_.overrun())
                return Inflated::Cut;
            const Inflated result = kind == 0 ? stored() : kind == 3 ? Inflated::Damaged : coded(kind == 2);
            if (result != Inflated::Whole)
                return result;
            if (last)
                return checksum();
        }
    }
    std::size_t bytes() const { return size_; }

private:
    Inflated stored()
    {
        constexpr std::size_t kHeader = 4;
        const std::uint8_t *at = bits_.toBytes();
        const auto left = static_cast<std::size_t>(bits_.end() - at);
        if (left < kHeader)
            return Inflated::Cut;
        const std::size_t length = qFromLittleEndian<std::uint16_t>(at);
        if ((length ^ 0xFFFF) != qFromLittleEndian<std::uint16_t>(at + 2))
            return Inflated::Damaged;
        const std::size_t held = std::min(length, left - kHeader);
        if (held > capacity_ - size_)
            return Inflated::TooMuch;
        std::memcpy(out_ + size_, at + kHeader, held);
        size_ += held;
        bits_.moveTo(at + kHeader + held);
        return held == length ? Inflated::Whole : Inflated::Cut;
    }

    Inflated coded(bool ownCodes)
    {
        const Inflated codes = ownCodes ? readCodes() : fixedCodes();
        return codes == Inflated::Whole ? symbols() : codes;
    }

    Inflated fixedCodes()
    {
        std::array<std::uint8_t, kLiterals> lengths;
        std::fill(lengths.begin(), lengths.begin() + 144, std::uint8_t{8});
        std::fill(lengths.begin() + 144, lengths.begin() + 256, std::uint8_t{9});
        std::fill(lengths.begin() + 256, lengths.begin() + 280, std::uint8_t{7});
        std::fill(lengths.begin() + 280, lengths.end(), std::uint8_t{8});
        std::array<std::uint8_t, kDistances> distances;
        distances.fill(5);
        literals_.build(lengths.data(), kLiterals);
        distances_.build(distances.data(), kDistances);
        return Inflated::Whole;
    }

    Inflated readCodes()
    {
        static constexpr std::uint8_t order[] = {16, 17, 18, 0, 8, 7, 9, 6, 10, 5, 11, 4, 12, 3, 13, 2, 14, 1, 15};
        bits_.refill();
        const unsigned literals = bits_.take(5) + 257;
        const unsigned distances = bits_.take(5) + 1;
        const unsigned count = bits_.take(4) + 4;
        std::array<std::uint8_t, std::size(order)> small{};
        for (unsigned index = 0; index < count; ++index) {
            bits_.refill();
            small[order[index]] = static_cast<std::uint8_t>(bits_.take(3));
        }
        if (bits_.overrun())
            return Inflated::Cut;
        if (literals > 286 || distances > 30 || !literals_.build(small.data(), small.size()))
            return Inflated::Damaged;
        std::array<std::uint8_t, kLiterals + kDistances> lengths{};
        for (unsigned index = 0; index < literals + distances;) {
            bits_.refill();
            const int symbol = literals_.next(&bits_);
            if (bits_.overrun())
                return Inflated::Cut;
            if (symbol < 0 || (symbol == 16 && index == 0))
                return Inflated::Damaged;
            if (symbol < 16) {
                lengths[index++] = static_cast<std::uint8_t>(symbol);
                continue;
            }
            const std::uint8_t value = symbol == 16 ? lengths[index - 1] : 0;
            const unsigned repeat = symbol == 16   ? 3 + bits_.take(2)
                                    : symbol == 17 ? 3 + bits_.take(3)
                                                   : 11 + bits_.take(7);
            if (repeat > literals + distances - index)
                return bits_.overrun() ? Inflated::Cut : Inflated::Damaged;
            std::fill_n(lengths.begin() + index, repeat, value);
            index += repeat;
        }
        const bool built = lengths[kEndOfBlock] != 0 && literals_.build(lengths.data(), literals) &&
                           distances_.build(lengths.data() + literals, distances);
        return built ? Inflated::Whole : Inflated::Damaged;
    }

    Inflated symbols()
    {
        for (;;) {
            // A literal takes 15 bits at most, a length with its distance 48.
            bits_.refill();
            int symbol = literals_.next(&bits_);
            for (int more = 0; more < 2 && symbol >= 0 && symbol < static_cast<int>(kEndOfBlock); ++more) {
                if (bits_.overrun())
                    return Inflated::Cut;
                if (size_ == capacity_)
                    return Inflated::TooMuch;
                out_[size_++] = static_cast<std::uint8_t>(symbol);
                if (more == 1)
                    bits_.refill();
                symbol = literals_.next(&bits_);
            }
            bits_.refill();
            if (bits_.overrun())
                return Inflated::Cut;
            if (symbol < 0)
                return Inflated::Damaged;
            if (symbol < static_cast<int>(kEndOfBlock)) {
                if (size_ == capacity_)
                    return Inflated::TooMuch;
                out_[size_++] = static_cast<std::uint8_t>(symbol);
                continue;
            }
            if (symbol == static_cast<int>(kEndOfBlock))
                return Inflated::Whole;
            const Inflated copied = copy(static_cast<unsigned>(symbol) - kEndOfBlock - 1);
            if (copied != Inflated::Whole)
                return copied;
        }
    }

    Inflated copy(unsigned lengthCode)
    {
        if (lengthCode >= std::size(kLengthBase))
            return Inflated::Damaged;
        const std::size_t length = kLengthBase[lengthCode] + bits_.take(kLengthBits[lengthCode]);
        const int distanceCode = distances_.next(&bits_);
        if (distanceCode < 0 || distanceCode >= static_cast<int>(std::size(kDistanceBase)))
            return bits_.overrun() ? Inflated::Cut : Inflated::Damaged;
        const std::size_t distance = kDistanceBase[distanceCode] + bits_.take(kDistanceBits[distanceCode]);
        if (bits_.overrun())
            return Inflated::Cut;
        if (distance > size_)
            return Inflated::Damaged;
        if (length > capacity_ - size_)
            return Inflated::TooMuch;
        constexpr std::size_t kStride = 8;
        std::uint8_t *to = out_ + size_;
        const std::uint8_t *from = to - distance;
        size_ += length;
        if (distance >= kStride && capacity_ - size_ >= kStride) {
            // May write up to a stride beyond the length, within the buffer; later bytes go over it.
            for (std::size_t done = 0; done < length; done += kStride)
                std::memcpy(to + done, from + done, kStride);
            return Inflated::Whole;
        }
        for (std::size_t done = 0; done < length; ++done)
            to[done] = from[done];
        return Inflated::Whole;
    }

    // Adler-32, as the data end with it.
    Inflated checksum()
    {
        constexpr std::uint32_t kPrime = 65521;
        constexpr std::size_t kRun = 5552; // bytes for which the sums cannot overflow
        const std::uint8_t *const at = bits_.toBytes();
        if (bits_.end() - at < 4)
            return Inflated::Cut;
        std::uint32_t low = 1;
        std::uint32_t high = 0;
        for (std::size_t from = 0; from < size_; from += kRun) {
            const std::size_t to = std::min(from + kRun, size_);
            for (std::size_t index = from; index < to; ++index) {
                low += out_[index];
                high += low;
            }
            low %= kPrime;
            high %= kPrime;
        }
        return qFromBigEndian<std::uint32_t>(at) == (high << 16 | low) ? Inflated::Whole : Inflated::Damaged;
    }

    Bits bits_;
    std::uint8_t *const out_;
    const std::size_t capacity_;
    std::size_t size_ = 0;
    Code literals_;
    Code distances_;
};

} // namespace

Inflated inflate(const std::uint8_t *packed, std::size_t size, std::uint8_t *out, std::size_t capacity,
                 std::size_t *bytes)
{
    constexpr std::size_t kHeader = 2;
    constexpr unsigned kMethodDeflate = 8;
    constexpr unsigned kDictionary = 0x20;
    *bytes = 0;
    if (size < kHeader)
        return Inflated::Cut;
    if ((packed[0] & 0xF) != kMethodDeflate || (packed[0] * 256 + packed[1]) % 31 != 0 ||
        (packed[1] & kDictionary) != 0)
        return Inflated::Damaged;
    Inflater inflater(packed + kHeader, size - kHeader, out, capacity);
    const Inflated result = inflater.run();
    *bytes = inflater.bytes();
    return result;
}
