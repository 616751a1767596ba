// Bits and prefix codes of packed data (RFC 1951).
#pragma once

#include <QtEndian>

#include <array>
#include <cstddef>
#include <cstdint>

namespace inflatebits
{

constexpr unsigned kLongestCode = 15;
constexpr unsigned kFastBits = 10; // codes up to here are looked up at once, longer ones bit by bit
constexpr unsigned kLiterals = 288;

// The bits of the packed data, the lowest first.
class Bits
{
public:
    Bits(const std::uint8_t *at, std::size_t size) : at_(at), end_(at + size) {}

    // At least 56 bits are at hand after this; behind the data they are 0.
    void refill()
    {
        if (end_ - at_ >= 8) {
            bits_ |= qFromLittleEndian<std::uint64_t>(at_) << count_;
            at_ += (63 - count_) >> 3;
            count_ |= 56;
            return;
        }
        while (count_ <= 56) {
            if (at_ != end_)
                bits_ |= std::uint64_t(*at_++) << count_;
            else
                ++missing_;
            count_ += 8;
        }
    }
    std::uint32_t peek(unsigned count) const { return std::uint32_t(bits_ & ((std::uint64_t(1) << count) - 1)); }
    void drop(unsigned count)
    {
        bits_ >>= count;
        count_ -= count;
    }
    std::uint32_t take(unsigned count)
    {
        const std::uint32_t value = peek(count);
        drop(count);
        return value;
    }
    // Bits were taken that the data do not have.
    bool overrun() const { return missing_ > count_ / 8; }
    // Goes on at the next whole byte; answers where that lies, with nothing at hand.
    const std::uint8_t *toBytes()
    {
        const std::size_t back = count_ / 8 - missing_;
        at_ -= back;
        bits_ = 0;
        count_ = 0;
        missing_ = 0;
        return at_;
    }
    const std::uint8_t *end() const { return end_; }
    void moveTo(const std::uint8_t *at) { at_ = at; }

private:
    const std::uint8_t *at_;
    const std::uint8_t *const end_;
    std::uint64_t bits_ = 0;
    unsigned count_ = 0;
    unsigned missing_ = 0; // bytes of the count that lie behind the data
};

// A prefix code, from the lengths of its words.
class Code
{
public:
    // False when the lengths make no code.
    bool build(const std::uint8_t *lengths, unsigned count)
    {
        counts_.fill(0);
        for (unsigned symbol = 0; symbol < count; ++symbol)
            ++counts_[lengths[symbol]];
        counts_[0] = 0;
        int left = 1;
        unsigned words = 0;
        std::array<std::uint16_t, kLongestCode + 2> place{};
        std::array<std::uint16_t, kLongestCode + 2> word{};
        for (unsigned length = 1; length <= kLongestCode; ++length) {
            left = 2 * left - counts_[length];
            if (left < 0)
                return false;
            words += counts_[length];
            place[length + 1] = static_cast<std::uint16_t>(place[length] + counts_[length]);
            word[length + 1] = static_cast<std::uint16_t>((word[length] + counts_[length]) << 1);
        }
        // A code of a single word, or of none, may be incomplete.
        if (left > 0 && words > 1)
            return false;
        fast_.fill(0);
        for (unsigned symbol = 0; symbol < count; ++symbol) {
            const unsigned length = lengths[symbol];
            if (length == 0)
                continue;
            symbols_[place[length]++] = static_cast<std::uint16_t>(symbol);
            const unsigned code = word[length]++;
            if (length > kFastBits)
                continue;
            unsigned reversed = 0;
            for (unsigned bit = 0; bit < length; ++bit)
                reversed |= (code >> bit & 1) << (length - 1 - bit);
            for (unsigned at = reversed; at < fast_.size(); at += 1U << length)
                fast_[at] = static_cast<std::uint16_t>(symbol << 4 | length);
        }
        return true;
    }

    // The next symbol; negative when the bits are none. Needs 15 bits at hand.
    int next(Bits *bits) const
    {
        const unsigned entry = fast_[bits->peek(kFastBits)];
        if (entry != 0) {
            bits->drop(entry & 0xF);
            return static_cast<int>(entry >> 4);
        }
        return nextLong(bits);
    }

private:
    int nextLong(Bits *bits) const
    {
        const std::uint32_t ahead = bits->peek(kLongestCode);
        int code = 0;
        int first = 0;
        int index = 0;
        for (unsigned length = 1; length <= kLongestCode; ++length) {
            code |= static_cast<int>(ahead >> (length - 1) & 1);
            const int count = counts_[length];
            if (code - count < first) {
                bits->drop(length);
                return symbols_[static_cast<std::size_t>(index + code - first)];
            }
            index += count;
            first = (first + count) << 1;
            code <<= 1;
        }
        return -1;
    }

    std::array<std::uint16_t, 1U << kFastBits> fast_; // symbol and length; 0: not here
    std::array<std::uint16_t, kLongestCode + 1> counts_;
    std::array<std::uint16_t, kLiterals> symbols_{};
};

} // namespace inflatebits
