#include "transmit/bytechange.h"

#include "device/language.h"

#include <QRegularExpression>

#include <algorithm>
#include <utility>

namespace
{

constexpr unsigned kBitsPerByte = 8;
constexpr unsigned kWidestField = 64;

constexpr std::pair<const char *, Checksum> kChecksumNames[] = {{"sum", Checksum::Sum},
                                                                {"xor", Checksum::Xor},
                                                                {"crc8-sae-j1850", Checksum::Crc8SaeJ1850},
                                                                {"autosar-crc8", Checksum::Crc8SaeJ1850},
                                                                {"autosar-crc8h2f", Checksum::Crc8AutosarH2F}};

std::uint64_t fieldMask(unsigned bitCount)
{
    return bitCount >= kWidestField ? ~std::uint64_t(0) : (std::uint64_t(1) << bitCount) - 1;
}

// Where the bits of a field lie, the least significant one first; false when one lies beyond the length.
template <typename Visit> bool forBits(const ByteChange &change, unsigned length, const Visit &visit)
{
    // Big-endian fields go from the most significant bit down through a byte and on to the next byte's bit 7.
    for (unsigned i = 0; i < change.bitCount; ++i) {
        unsigned byte = 0;
        unsigned bit = 0;
        if (change.bigEndian) {
            const unsigned fromTop = change.startBit / kBitsPerByte * kBitsPerByte +
                                     (kBitsPerByte - 1 - change.startBit % kBitsPerByte) + change.bitCount - 1 - i;
            byte = fromTop / kBitsPerByte;
            bit = kBitsPerByte - 1 - fromTop % kBitsPerByte;
        } else {
            byte = (change.startBit + i) / kBitsPerByte;
            bit = (change.startBit + i) % kBitsPerByte;
        }
        if (byte >= length)
            return false;
        visit(i, byte, bit);
    }
    return true;
}

bool fits(const ByteChange &change, unsigned length)
{
    if (change.kind == ByteChange::Kind::Check)
        return change.byte < length && change.first < length;
    return forBits(change, length, [](unsigned, unsigned, unsigned) {});
}

std::uint64_t readField(const ByteChange &change, const RawFrame &frame)
{
    std::uint64_t value = 0;
    forBits(change, frame.length, [&](unsigned i, unsigned byte, unsigned bit) {
        value |= std::uint64_t(frame.data[byte] >> bit & 1U) << i;
    });
    return value;
}

void writeField(const ByteChange &change, std::uint64_t value, RawFrame &frame)
{
    forBits(change, frame.length, [&](unsigned i, unsigned byte, unsigned bit) {
        const auto mask = static_cast<std::uint8_t>(1U << bit);
        frame.data[byte] =
            static_cast<std::uint8_t>((value >> i & 1U) != 0 ? frame.data[byte] | mask : frame.data[byte] & ~mask);
    });
}

void applyField(const ByteChange &change, std::uint64_t number, RawFrame &frame)
{
    const std::uint64_t base = readField(change, frame);
    switch (change.kind) {
    case ByteChange::Kind::Counter:
        writeField(change, base + number * change.step, frame); // what overflows the field falls away
        break;
    case ByteChange::Kind::Toggle:
        writeField(change, number % 2 == 0 ? base : ~base, frame);
        break;
    case ByteChange::Kind::Ramp: {
        const std::uint64_t last = (change.to - change.from) / change.step; // the number of its last value
        const std::uint64_t place = last == ~std::uint64_t(0) ? number : number % (last + 1);
        writeField(change, change.from + place * change.step, frame);
        break;
    }
    case ByteChange::Kind::Check:
        break;
    }
}

void applyChecksum(const ByteChange &change, RawFrame &frame)
{
    const unsigned end = std::min<unsigned>(change.last + 1, frame.length);
    ChecksumRun run(change.checksum);
    for (unsigned byte = change.first; byte < end; ++byte)
        if (byte != change.byte)
            run.add(frame.data + byte, 1);
    frame.data[change.byte] = run.value();
}

bool readChecksum(const QString &part, ByteChange *change)
{
    static const QRegularExpression pattern(
        QStringLiteral("^([a-z0-9-]+) (\\d{1,2})(?: (\\d{1,2})\\.\\.(\\d{1,2}))?$"));
    const QRegularExpressionMatch match = pattern.match(part);
    const auto *const named =
        std::find_if(std::begin(kChecksumNames), std::end(kChecksumNames),
                     [&](const auto &entry) { return match.captured(1) == QLatin1String(entry.first); });
    if (!match.hasMatch() || named == std::end(kChecksumNames))
        return false;
    change->kind = ByteChange::Kind::Check;
    change->checksum = named->second;
    change->byte = match.captured(2).toUInt();
    if (!match.captured(3).isEmpty()) {
        change->first = match.captured(3).toUInt();
        change->last = match.captured(4).toUInt();
    }
    return change->byte < kRawDataBytes && change->first <= change->last && change->last < kRawDataBytes;
}

// A number, decimal or hexadecimal after "0x".
bool readNumber(const QString &text, std::uint64_t *number)
{
    bool isNumber = false;
    *number =
        text.startsWith(QLatin1String("0x")) ? text.mid(2).toULongLong(&isNumber, 16) : text.toULongLong(&isNumber);
    return isNumber;
}

bool readFieldChange(const QString &part, ByteChange *change)
{
    static const QRegularExpression pattern(
        QStringLiteral("^(counter|toggle|ramp) (\\d{1,3}):(\\d{1,2})( be)?"
                       "(?: (0x[0-9a-f]+|\\d+)\\.\\.(0x[0-9a-f]+|\\d+))?(?: step (0x[0-9a-f]+|\\d+))?$"));
    enum Capture { Word = 1, Start, Count, BigEndian, From, To, Step };
    const QRegularExpressionMatch match = pattern.match(part);
    if (!match.hasMatch())
        return false;
    const QString word = match.captured(Word);
    change->kind = word == QLatin1String("counter")  ? ByteChange::Kind::Counter
                   : word == QLatin1String("toggle") ? ByteChange::Kind::Toggle
                                                     : ByteChange::Kind::Ramp;
    const bool ramp = change->kind == ByteChange::Kind::Ramp;
    change->startBit = match.captured(Start).toUInt();
    change->bitCount = match.captured(Count).toUInt();
    change->bigEndian = !match.captured(BigEndian).isEmpty();
    const bool hasStep = !match.captured(Step).isEmpty();
    if (change->bitCount < 1 || change->bitCount > kWidestField || !fits(*change, kRawDataBytes) ||
        ramp == match.captured(From).isEmpty() || (hasStep && change->kind == ByteChange::Kind::Toggle))
        return false;
    if (hasStep && (!readNumber(match.captured(Step), &change->step) || change->step == 0))
        return false;
    return !ramp || (readNumber(match.captured(From), &change->from) && readNumber(match.captured(To), &change->to) &&
                     change->from <= change->to && change->to <= fieldMask(change->bitCount));
}

} // namespace

ByteChanges parseByteChanges(const QString &text)
{
    ByteChanges result;
    for (const QString &piece : text.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        const QString part = piece.simplified().toLower();
        ByteChange change;
        if (part.isEmpty())
            continue;
        if (!readFieldChange(part, &change)) {
            change = ByteChange();
            if (!readChecksum(part, &change)) {
                result.list.clear();
                result.error =
                    text3("“%1”不是变化", "「%1」不是變化", "\"%1\" is no change over time").arg(piece.simplified());
                return result;
            }
        }
        result.list.push_back(change);
    }
    return result;
}

bool changesFit(const std::vector<ByteChange> &changes, unsigned length)
{
    return std::all_of(changes.begin(), changes.end(),
                       [length](const ByteChange &change) { return fits(change, length); });
}

void applyChanges(const std::vector<ByteChange> &changes, std::uint64_t number, RawFrame &frame)
{
    for (const ByteChange &change : changes)
        if (change.kind != ByteChange::Kind::Check && fits(change, frame.length))
            applyField(change, number, frame);
    for (const ByteChange &change : changes)
        if (change.kind == ByteChange::Kind::Check && fits(change, frame.length))
            applyChecksum(change, frame);
}
