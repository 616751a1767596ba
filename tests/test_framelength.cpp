// The length of frames on the wire: counted by hand, and bit by bit.
#include "device/driver/framelength.h"

#include <QtTest>

#include <cstring>
#include <random>

Q_DECLARE_METATYPE(BusFrame)

namespace
{

using Bits = std::vector<int>;

BusFrame busFrame(std::uint32_t id, std::uint8_t length, int fill = 0, bool fd = false, bool bitRateSwitch = false)
{
    BusFrame frame;
    frame.id = id;
    frame.length = length;
    frame.fd = fd;
    frame.bitRateSwitch = bitRateSwitch;
    std::memset(frame.data, fill, frame.remote() ? 0 : length);
    return frame;
}

void append(Bits *bits, std::uint32_t value, int width)
{
    while (width-- > 0)
        bits->push_back(int(value >> width & 1));
}

// Stuff bits at each rate, walked bit by bit; `fast`: the index of the first bit at the data rate.
FrameBits stuffBits(const Bits &bits, std::size_t fast, bool afterTheLastToo)
{
    FrameBits stuff;
    int last = -1;
    int run = 0;
    for (std::size_t i = 0; i < bits.size(); ++i) {
        run = bits[i] == last ? run + 1 : 1;
        last = bits[i];
        if (run == 5 && (i + 1 < bits.size() || afterTheLastToo)) {
            ++(i < fast ? stuff.arbitration : stuff.data);
            last = 1 - last;
            run = 1;
        }
    }
    return stuff;
}

FrameBits slowReference(const BusFrame &frame)
{
    static const int kDlcLengths[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64};
    const int dlc = int(std::find(std::begin(kDlcLengths), std::end(kDlcLengths), frame.length) - kDlcLengths);
    Bits bits{0};
    append(&bits, frame.extended() ? frame.identifier() >> 18 : frame.identifier(), 11);
    if (frame.extended()) {
        append(&bits, 3, 2);
        append(&bits, frame.identifier(), 18);
    }
    append(&bits, frame.remote(), 1);
    if (!frame.extended())
        append(&bits, 0, 1);
    if (frame.fd)
        append(&bits, 2 << 1 | frame.bitRateSwitch, 3);
    else
        append(&bits, 0, frame.extended() ? 2 : 1);
    const std::size_t fast = frame.bitRateSwitch ? bits.size() : SIZE_MAX;
    if (frame.fd)
        append(&bits, frame.errorStateIndicator, 1);
    append(&bits, std::uint32_t(dlc), 4);
    for (int i = 0; i < (frame.remote() ? 0 : frame.length); ++i)
        append(&bits, frame.data[i], 8);
    if (!frame.fd) {
        std::uint32_t crc = 0;
        for (const int bit : bits)
            crc = ((crc << 1) ^ (((crc >> 14) & 1) != std::uint32_t(bit) ? 0x4599 : 0)) & 0x7FFF;
        append(&bits, crc, 15);
    }
    FrameBits length = stuffBits(bits, fast, !frame.fd);
    const std::size_t slowBits = std::min(fast, bits.size());
    length.arbitration += unsigned(slowBits) + 12;
    length.data += unsigned(bits.size() - slowBits);
    const unsigned crc = !frame.fd ? 1 : frame.length <= 16 ? 4 + 17 + 6 + 1 : 4 + 21 + 7 + 1;
    (frame.bitRateSwitch ? length.data : length.arbitration) += crc;
    return length;
}

} // namespace

class TestFrameLength : public QObject
{
    Q_OBJECT

private slots:
    void countedByHand_data()
    {
        QTest::addColumn<BusFrame>("frame");
        QTest::addColumn<unsigned>("arbitration");
        QTest::addColumn<unsigned>("data");
        // 34 zeros, a stuff bit after every fifth.
        QTest::newRow("all zeros, CRC too") << busFrame(0, 0) << 47u + 6 << 0u;
        // With the computed CRC; as can-utils' canbusload counts them.
        const std::uint8_t rising[] = {0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88};
        for (const auto &[id, bits] : {std::pair(0x123u, 112u), std::pair(0x12345678 | kIdExtendedFlag, 134u)}) {
            BusFrame frame = busFrame(id, 8);
            std::memcpy(frame.data, rising, sizeof rising);
            QTest::addRow("rising %x", id) << frame << bits << 0u;
        }
        QTest::newRow("zeros") << busFrame(0, 8) << 127u << 0u;
        QTest::newRow("ones") << busFrame(0x7FF, 8, 0xFF) << 126u << 0u;
        QTest::newRow("alternating") << busFrame(0x555, 8, 0xAA) << 112u << 0u;
        // 14 zeros (2), 1, 3 + 3 zeros and the DLC's 1 between them, 64 zeros more (13).
        QTest::newRow("FD, all zeros") << busFrame(0, 8, 0, true) << 62u + 64 + 2 + 13 << 0u;
        // 11 ones (2), 64 ones (12).
        QTest::newRow("FD, all ones") << busFrame(0x7FF, 8, 0xFF, true) << 62u + 64 + 2 + 12 << 0u;
        QTest::newRow("FD, alternating") << busFrame(0x555, 8, 0xAA, true) << 62u + 64 << 0u;
        // 7 ones (1), 4 + 2 zeros (1); the zeros of ESI and DLC are five at the very end (none).
        QTest::newRow("FD, rates apart") << busFrame(0x7F0, 0, 0, true, true) << 29u + 2 << 33u;
        // Six zeros before the DLC's 1 (1); five ones at the end of the data (none).
        QTest::newRow("FD, five at the end") << busFrame(0x555, 1, 0x1F, true) << 62u + 8 + 1 << 0u;
        // Behind a DLC of ones 512 zeros (102).
        QTest::newRow("FD, longest") << busFrame(0x555, 64, 0, true, true) << 29u << 550u + 102;
    }
    void countedByHand()
    {
        QFETCH(BusFrame, frame);
        QFETCH(unsigned, arbitration);
        QFETCH(unsigned, data);
        QCOMPARE(frameBits(frame).arbitration, arbitration);
        QCOMPARE(frameBits(frame).data, data);
    }

    void bitByBit()
    {
        std::mt19937 random(20240601);
        unsigned shortest = 1000;
        unsigned longest = 0;
        for (int i = 0; i < 200000; ++i) {
            BusFrame frame;
            const std::uint32_t word = random();
            frame.fd = (word & 1) != 0;
            frame.bitRateSwitch = frame.fd && (word & 2) != 0;
            frame.errorStateIndicator = frame.fd && (word & 4) != 0;
            frame.id = word & 8 ? kIdExtendedFlag | (random() & kIdMask) : random() % kStandardIdLimit;
            frame.id |= !frame.fd && (word & 0xF0) == 0 ? kIdRemoteFlag : 0;
            frame.length = frame.fd ? fdWireLength(word >> 8 & 63) : word >> 8 & 8 ? 8 : word >> 12 & 7;
            // Long runs, as real payloads have them: every second frame's bytes are mostly 0 or FF.
            for (int byte = 0; byte < (frame.remote() ? 0 : frame.length); ++byte)
                frame.data[byte] = std::uint8_t(word & 0x10000 ? random()
                                                : random() % 4 ? -int(random() % 2)
                                                               : random());
            const FrameBits fast = frameBits(frame);
            const FrameBits slow = slowReference(frame);
            QCOMPARE(fast.arbitration, slow.arbitration);
            QCOMPARE(fast.data, slow.data);
            if (!frame.fd && !frame.extended() && !frame.remote() && frame.length == 8) {
                shortest = std::min(shortest, fast.total());
                longest = std::max(longest, fast.total());
            }
        }
        QVERIFY2(shortest >= 111 && shortest < 114 && longest > 125 && longest <= 135,
                 qPrintable(QString("%1 %2").arg(shortest).arg(longest)));
    }

    // What recordings hold and no bus carries.
    void oddLengths()
    {
        for (const auto &[odd, onTheWire] : {std::pair(9, 12), std::pair(200, 64)}) {
            BusFrame frame = busFrame(0x555, 64, 0xAA, true);
            frame.length = std::uint8_t(odd);
            const unsigned bits = frameBits(frame).total();
            frame.length = std::uint8_t(onTheWire);
            std::fill(frame.data + std::min(odd, 64), std::end(frame.data), std::uint8_t(0)); // padding
            QCOMPARE(bits, frameBits(frame).total());
        }
        FrameOnWire raw;
        const std::uint8_t data[8] = {};
        raw.data = data;
        raw.length = 8;
        raw.rawDlc = 15;
        QVERIFY(frameBits(raw).total() != frameBits(busFrame(0, 8)).total()); // ones in the DLC
    }

    void bitsTakeTime()
    {
        QCOMPARE(wireTime({29, 33}, 1000000, 5000000), std::uint64_t(29000 + 6600));
        QCOMPARE(wireTime({111, 0}, 33330, 0), std::uint64_t(3330333));
    }
};
QTEST_APPLESS_MAIN(TestFrameLength)
#include "test_framelength.moc"
