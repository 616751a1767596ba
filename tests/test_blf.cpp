// BLF beyond what every format must do: how files of other makers are built, damage in containers, the header's counts.
#include "tracecontract.h"

#include "traces/blflayout.h"
#include "traces/inflate.h"

#include <QBuffer>
#include <QtEndian>
#include <QtTest>

namespace
{

template <typename T> QByteArray little(T value)
{
    QByteArray bytes(sizeof(T), 0);
    qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray fileHeader()
{
    QByteArray header = "LOGG" + little<quint32>(blf::kFileHeaderBytes);
    header.append(QByteArray(blf::kFileHeaderBytes - header.size(), 0));
    return header;
}

QByteArray object(quint32 type, const QByteArray &body, quint32 timeFlags = blf::kTimeIsNanoseconds)
{
    const auto size = static_cast<quint32>(blf::kObjectHeaderBytes) + static_cast<quint32>(body.size());
    return "LOBJ" + little<quint16>(blf::kObjectHeaderBytes) + little<quint16>(1) + little(size) + little(type) +
           little(timeFlags) + little<quint32>(0) + little<quint64>(123) + body + QByteArray(size % 4, 0);
}

QByteArray container(const QByteArray &data, quint16 method, quint32 unpacked)
{
    const auto size = static_cast<quint32>(blf::container::kData) + static_cast<quint32>(data.size());
    return "LOBJ" + little<quint16>(blf::kObjectBaseBytes) + little<quint16>(1) + little(size) +
           little<quint32>(blf::LogContainer) + little(method) + QByteArray(6, 0) + little(unpacked) +
           QByteArray(4, 0) + data + QByteArray(size % 4, 0);
}

QByteArray stored(const QByteArray &data)
{
    return container(data, blf::kStored, static_cast<quint32>(data.size()));
}

QByteArray packed(const QByteArray &data)
{
    return container(qCompress(data).mid(4), blf::kZlib, static_cast<quint32>(data.size()));
}

QByteArray canBody(quint32 id, quint8 dlc, quint8 flags = 0)
{
    return little<quint16>(2) + little(flags) + little(dlc) + little(id) + QByteArray::fromHex("0102030405060708");
}

// Type 101 with so many data bytes, of which it says so many are valid.
QByteArray fdBody(quint8 valid, int held)
{
    return little<quint8>(3) + little<quint8>(9) + little(valid) + little<quint8>(0) + little<quint32>(0x55) +
           QByteArray(4, 0) + little<quint32>(0x5000) + QByteArray(18, 0) + little<quint8>(1) + QByteArray(5, 0) +
           QByteArray(held, 'x');
}

QString textOf(const ReadTrace &read)
{
    QStringList texts;
    for (const RawFrame &frame : read.frames)
        texts << frameText(frame);
    if (read.error)
        texts << read.error->place.toString() + QStringLiteral(": ") + read.error->reason.toString();
    return texts.join(QStringLiteral("; "));
}

const char kThree[] = "2 rx 123 8 0102030405060708; 2 tx 1ABCDEFx r 3; 3 tx 55 12 787878787878787878787878 fd esi";

QByteArray three()
{
    return object(blf::CanMessage, canBody(0x123, 8)) + object(blf::AppText, "a comment") +
           object(blf::CanMessage2, canBody(0x81ABCDEF, 3, 0x81) + QByteArray(8, 0)) +
           object(blf::CanFdMessage64, fdBody(12, 12));
}

} // namespace

class TestBlf : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { setLanguageCode(English); }

    void builds_data()
    {
        QTest::addColumn<QByteArray>("objects");
        const QByteArray all = three();
        QTest::newRow("no containers") << all;
        QTest::newRow("stored") << stored(all);
        QTest::newRow("packed") << packed(all);
        QTest::newRow("mixed") << packed(all.left(48)) + all.mid(48);
        QTest::newRow("across stored") << stored(all.left(5)) + stored(all.mid(5, 90)) + stored(all.mid(95));
        QTest::newRow("across packed") << packed(all.left(33)) + stored(all.mid(33, 1)) + packed(all.mid(34));
    }
    void builds()
    {
        QFETCH(QByteArray, objects);
        const ReadTrace read = readTrace(fileHeader() + objects);
        QCOMPARE(textOf(read), QString::fromLatin1(kThree));
        QCOMPARE(read.skipped, 0u);
        QVERIFY(!read.start);
    }

    void objects_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const QByteArray &bytes, const char *expected) {
            QTest::newRow(name) << bytes << QString::fromLatin1(expected);
        };
        row("DLC above 8", object(blf::CanMessage, canBody(1, 0x0F)), "2 rx 1 8 0102030405060708 dlc 15");
        row("no DLC", object(blf::CanMessage, canBody(1, 0x33)), "2 rx 1 8 0102030405060708");
        row("more valid than held", object(blf::CanFdMessage64, fdBody(200, 3)), "3 tx 55 3 787878 fd esi");
        row("flags of FD without FD",
            object(blf::CanFdMessage, canBody(1, 2).left(8) + QByteArray(5, 0) + "\x06" + QByteArray(6, 0) + "xyz"),
            "2 rx 1 2 7879");
        row("no channel", object(blf::CanError, QByteArray(4, 0)), "1 rx 0 error 0");
        row("too short", object(blf::CanMessage, canBody(1, 8).left(15)),
            "offset 0x90: object 1 of type 1 cannot have 47 bytes");
        row("size 0", QByteArray("LOBJ\x20\0\1\0\0\0\0\0\1\0\0\0", 16), "offset 0x90: an object says it has 0 bytes");
        row("size 0 in a container", stored(QByteArray("LOBJ\x20\0\1\0\0\0\0\0\1\0\0\0", 16)),
            "offset 0x90: object 1 of type 1 says it has 0 bytes, 32 of them header");
        row("huge", container(QByteArray(64, 'x'), blf::kZlib, 0xFFFFFFFF),
            "offset 0x90: a container says that its 64 bytes unpack to 4294967295");
        row("more than it says", container(qCompress(QByteArray(1 << 20, 0)).mid(4), blf::kZlib, 1000),
            "offset 0x90: a container that cannot be unpacked");
        row("unknown method", container(QByteArray(), 7, 0),
            "offset 0x90: a container packed with method 7, which is not known");
    }
    void objects()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, expected);
        QCOMPARE(textOf(readTrace(fileHeader() + bytes)), expected);
    }

    void otherBuses()
    {
        const ReadTrace read =
            readTrace(fileHeader() + stored(object(11, QByteArray(50, 1)) + object(blf::CanOverload, QByteArray(8, 0)) +
                                            object(blf::CanMessage, canBody(1, 0), 1)));
        QVERIFY(!read.error);
        QCOMPARE(read.skipped, 2u);
        QCOMPARE(read.frames.at(0).time, 123 * 10'000);
    }

    void cutContainer()
    {
        const std::vector<RawFrame> frames = heldBy(limitsOf(TraceFormat::Blf), everyKindOfFrame());
        const QByteArray whole = writeTrace(TraceFormat::Blf, frames).bytes;
        const ReadTrace read = readTrace(whole.left(whole.size() / 2));
        QVERIFY(read.error);
        QVERIFY(read.frames.size() > frames.size() / 4 && read.frames.size() < frames.size());
        for (std::size_t index = 0; index < read.frames.size(); ++index)
            QVERIFY(sameFrame(read.frames[index], frames[index]));
        QByteArray damaged = whole; // what the checksum does not fit is not used
        damaged[damaged.size() / 2] = static_cast<char>(damaged[damaged.size() / 2] ^ 1);
        QVERIFY(readTrace(damaged).error && readTrace(damaged).frames.empty());
    }

    void headerCounts()
    {
        const std::vector<RawFrame> frames = everyKindOfFrame();
        TraceWriterOptions options;
        options.startUtc = 1700000000123456789; // 2023-11-14 22:13:20.123
        const QByteArray bytes = writeTrace(TraceFormat::Blf, frames, options).bytes;
        const auto at = [&bytes](std::size_t offset) { return qFromLittleEndian<quint16>(bytes.constData() + offset); };
        QCOMPARE(qFromLittleEndian<quint64>(bytes.constData() + blf::fileheader::kFileBytes), quint64(bytes.size()));
        QCOMPARE(qFromLittleEndian<quint32>(bytes.constData() + blf::fileheader::kObjectCount), quint32(frames.size()));
        QVERIFY(qFromLittleEndian<quint64>(bytes.constData() + blf::fileheader::kUnpackedBytes) >
                quint64(bytes.size()));
        const quint16 start[] = {2023, 11, 2, 14, 22, 13, 20, 123};
        for (std::size_t field = 0; field < std::size(start); ++field)
            QCOMPARE(at(blf::fileheader::kStart + 2 * field), start[field]);
    }

    void inflating()
    {
        QByteArray data(70'000, 0);
        for (int level = 0; level <= 9; ++level) {
            for (int index = 0; index < data.size(); ++index) {
                const int noise = (index * 7919 + level) ^ (index >> 3);
                data[index] = static_cast<char>(level % 3 == 0 ? noise : index % 40 < 30 ? index % 40 : noise % 11);
            }
            const QByteArray zlib = qCompress(data, level).mid(4);
            const auto *bytes = reinterpret_cast<const std::uint8_t *>(zlib.constData());
            QByteArray out(data.size(), 'x');
            auto *to = reinterpret_cast<std::uint8_t *>(out.data());
            std::size_t count = 0;
            QCOMPARE(inflate(bytes, std::size_t(zlib.size()), to, std::size_t(out.size()), &count), Inflated::Whole);
            QCOMPARE(out, data);
            QCOMPARE(inflate(bytes, std::size_t(zlib.size()), to, 69'999, &count), Inflated::TooMuch);
            QCOMPARE(inflate(bytes, std::size_t(zlib.size()) / 2, to, std::size_t(out.size()), &count), Inflated::Cut);
            QCOMPARE(out.left(int(count)), data.left(int(count)));
        }
    }
};

QTEST_APPLESS_MAIN(TestBlf)
#include "test_blf.moc"
