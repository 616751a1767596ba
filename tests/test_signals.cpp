// Decoder, encoder, lookup and the set of databases.
#include "signals/databaseset.h"
#include "signals/databasewatcher.h"
#include "signals/encoder.h"
#include "signals/valuetext.h"

#include <QFile>
#include <QSaveFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <random>

Q_DECLARE_METATYPE(SignalDefinition)

namespace
{

SignalDefinition layout(unsigned startBit, unsigned bits, ByteOrder order, SignalType type)
{
    SignalDefinition signal;
    signal.name = QStringLiteral("s");
    signal.startBit = std::uint16_t(startBit);
    signal.bits = std::uint8_t(bits);
    signal.byteOrder = order;
    signal.type = type;
    return signal;
}

MessageDefinition messageOf(const QVector<SignalDefinition> &list, unsigned length)
{
    MessageDefinition message;
    message.length = std::uint16_t(length);
    message.signalList = list;
    return message;
}

SignalValue decodeOne(const SignalDefinition &signal, const QByteArray &payload)
{
    SignalValue value;
    MessageDecoder(messageOf({signal}, unsigned(payload.size())))
        .decode(reinterpret_cast<const std::uint8_t *>(payload.constData()), unsigned(payload.size()), &value);
    return value;
}

// A multiplexer of three levels, its parts in an order in which nothing precedes what it needs.
MessageDefinition nested()
{
    const DbcResult result = readDbc("BU_: A\nBO_ 1 M: 8 A\n"
                                     " SG_ deep m7 : 16|8@1+ (1,0) [0|0] \"\" A\n"
                                     " SG_ inner m2M : 8|8@1- (1,0) [0|0] \"\" A\n"
                                     " SG_ other m1 : 8|8@1+ (1,0) [0|0] \"\" A\n"
                                     " SG_ outer M : 0|4@1+ (1,0) [0|0] \"\" A\n"
                                     " SG_ always : 24|8@1+ (0.5,0) [0|10] \"\" A\n"
                                     "SG_MUL_VAL_ 1 deep inner 7-9, -1--1, 0-0;\n"
                                     "SG_MUL_VAL_ 1 inner outer 2-3;\n");
    return result.database.messages.value(0);
}
enum Nested { Deep, Inner, Other, Outer, Always };

QString states(const MessageDefinition &message, const QByteArray &payload)
{
    std::vector<SignalValue> values(std::size_t(message.signalList.size()));
    MessageDecoder(message).decode(reinterpret_cast<const std::uint8_t *>(payload.constData()),
                                   unsigned(payload.size()), values.data());
    QString text;
    for (const SignalValue &value : values)
        text += QLatin1Char("vn-"[int(value.state)]);
    return text;
}

QByteArray file(const char *name, const char *id, const QByteArray &attributes = {})
{
    return QByteArray("BU_: A\nBO_ ") + id + " " + name + ": 8 A\n SG_ s : 0|8@1+ (1,0) [0|0] \"\" A\n" + attributes;
}

void write(const QString &path, const QByteArray &content)
{
    QSaveFile out(path);
    QVERIFY(out.open(QIODevice::WriteOnly));
    out.write(content);
    QVERIFY(out.commit());
}

QString nameOf(const KnownMessage *message)
{
    return message ? message->definition->name : QString();
}

} // namespace

class TestSignals : public QObject
{
    Q_OBJECT

private slots:
    void decodes_data()
    {
        QTest::addColumn<SignalDefinition>("signal");
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<qint64>("raw");
        QTest::addColumn<double>("physical");
        const auto row = [](const char *name, const SignalDefinition &signal, const QByteArray &payload, qint64 raw,
                            double physical) {
            QTest::newRow(name) << signal << QByteArray::fromHex(payload) << raw << physical;
        };
        const auto intel = ByteOrder::Intel;
        const auto motorola = ByteOrder::Motorola;
        row("Intel across bytes", layout(4, 12, intel, SignalType::Unsigned), "f0de", 0xDEF, 0xDEF);
        row("Motorola across bytes", layout(3, 12, motorola, SignalType::Unsigned), "fabc", 0xABC, 0xABC);
        row("Intel, nine bytes", layout(4, 64, intel, SignalType::Unsigned), "f0debc9a785634120f",
            qint64(0xF123456789ABCDEFu), double(0xF123456789ABCDEFu));
        row("Motorola, nine bytes", layout(3, 64, motorola, SignalType::Signed), "0123456789abcdef10",
            0x123456789ABCDEF1, double(0x123456789ABCDEF1));
        row("above 2^53", layout(0, 64, intel, SignalType::Unsigned), "ffffffffffffffff", -1, 18446744073709551615.0);
        row("lowest", layout(7, 64, motorola, SignalType::Signed), "8000000000000000",
            std::numeric_limits<qint64>::min(), -9223372036854775808.0);
        row("exact where doubles are not", layout(0, 63, intel, SignalType::Signed), "0100000000000020",
            0x2000000000000001, 2305843009213693952.0);
        row("float", layout(7, 32, motorola, SignalType::Float), "c0490fdb", 0xC0490FDB, double(-3.14159274101257324f));
        row("double", layout(0, 64, intel, SignalType::Double), "000000000000f0bf", qint64(0xBFF0000000000000u), -1.0);
        row("last bit of an FD frame", layout(511, 1, intel, SignalType::Signed), QByteArray(126, '0').append("80"), -1,
            -1);
        SignalDefinition scaled = layout(496, 16, intel, SignalType::Unsigned);
        scaled.factor = 0.25;
        scaled.offset = -100;
        row("last bytes of an FD frame", scaled, QByteArray(124, '0').append("9001"), 400, 0);
    }
    void decodes()
    {
        QFETCH(SignalDefinition, signal);
        QFETCH(QByteArray, payload);
        QFETCH(qint64, raw);
        QFETCH(double, physical);
        const SignalValue value = decodeOne(signal, payload);
        QVERIFY(value.state == SignalState::Valid);
        QCOMPARE(qint64(value.raw), raw);
        QCOMPARE(value.physical, physical);
        QCOMPARE(physicalValue(signal, raw), physical);
        payload.chop(1);
        QVERIFY(decodeOne(signal, payload).state == SignalState::BeyondFrame);
    }

    // Every place and length in both orders: what is written comes back, and nothing else has changed.
    void wholeValuesAreShownExactly_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<double>("factor");
        QTest::addColumn<double>("offset");
        QTest::addColumn<qint64>("raw");
        QTest::addColumn<QString>("text");
        constexpr int isSigned = int(SignalType::Signed);
        QTest::newRow("32 bits") << 0 << 1.0 << 0.0 << qint64(4294967295) << "4294967295";
        QTest::newRow("unsigned") << 0 << 1.0 << 0.0 << qint64(-1) << "18446744073709551615";
        QTest::newRow("signed") << isSigned << 1.0 << 0.0 << std::numeric_limits<qint64>::min()
                                << "-9223372036854775808";
        QTest::newRow("between doubles") << 0 << 3.0 << -2.0 << qint64(3002399751580331) << "9007199254740991";
        QTest::newRow("beyond 64 bits") << isSigned << 4.0 << 0.0 << std::numeric_limits<qint64>::max()
                                        << "3.68934881e+19";
        QTest::newRow("fraction") << 0 << 0.5 << 0.0 << qint64(4294967295) << "2147483647.5";
        QTest::newRow("whole by chance") << 0 << 0.5 << 0.0 << qint64(8589934590) << "4294967295";
        QTest::newRow("rounded") << 0 << 0.01 << -40.0 << qint64(4001) << "0.01";
    }
    void wholeValuesAreShownExactly()
    {
        QFETCH(int, type);
        QFETCH(double, factor);
        QFETCH(double, offset);
        QFETCH(qint64, raw);
        SignalDefinition signal = layout(0, 64, ByteOrder::Intel, SignalType(type));
        signal.factor = factor;
        signal.offset = offset;
        QTEST(valueText(signal, {physicalValue(signal, raw), raw, SignalState::Valid}), "text");
    }

    void encodesAndDecodesEveryLayout()
    {
        std::mt19937_64 random(20);
        for (const unsigned length : {1u, 8u, 12u, 64u})
            for (unsigned start = 0; start < length * 8; ++start)
                for (unsigned bits = 1; bits <= 64; ++bits)
                    for (const ByteOrder order : {ByteOrder::Intel, ByteOrder::Motorola}) {
                        const auto type = random() % 2 ? SignalType::Signed : SignalType::Unsigned;
                        const SignalDefinition signal = layout(start, bits, order, type);
                        if (signal.neededBytes() > length)
                            continue;
                        QByteArray payload(int(length), '\0');
                        for (char &byte : payload)
                            byte = char(random());
                        const QByteArray before = payload;
                        auto *bytes = reinterpret_cast<std::uint8_t *>(payload.data());
                        const MessageDefinition message = messageOf({signal}, length);
                        const MessageEncoder encoder(message);
                        const std::int64_t present = decodeOne(signal, payload).raw;
                        const std::int64_t other = ~present & (std::int64_t(~std::uint64_t(0) >> (64 - bits)));
                        const std::int64_t flipped = type == SignalType::Signed ? ~present : other;
                        QVERIFY(encoder.set({0, 0, flipped}, bytes, length).outcome == EncodeOutcome::Exact);
                        QCOMPARE(decodeOne(signal, payload).raw, flipped);
                        int changed = 0;
                        for (int i = 0; i < payload.size(); ++i)
                            changed += qPopulationCount(quint8(payload[i] ^ before[i]));
                        QCOMPARE(changed, int(bits));
                        QVERIFY(encoder.set({0, 0, present}, bytes, length).outcome == EncodeOutcome::Exact);
                        QCOMPARE(payload, before);
                    }
    }

    void tellsWhatAValueBecomes_data()
    {
        QTest::addColumn<SignalDefinition>("signal");
        QTest::addColumn<double>("wanted");
        QTest::addColumn<int>("outcome");
        QTest::addColumn<double>("carried");
        SignalDefinition speed = layout(0, 8, ByteOrder::Intel, SignalType::Unsigned);
        speed.factor = 0.5;
        speed.offset = -10;
        speed.minimum = 0;
        speed.maximum = 100;
        const auto row = [](const char *name, const SignalDefinition &signal, double wanted, EncodeOutcome outcome,
                            double carried) { QTest::newRow(name) << signal << wanted << int(outcome) << carried; };
        row("exact", speed, 20.5, EncodeOutcome::Exact, 20.5);
        row("rounded", speed, 20.7, EncodeOutcome::Rounded, 20.5);
        row("rounded up", speed, 20.8, EncodeOutcome::Rounded, 21);
        row("above the limit", speed, 101, EncodeOutcome::Clamped, 100);
        row("below the limit", speed, -1, EncodeOutcome::Clamped, 0);
        speed.maximum = 0; // no limits
        row("above the bits", speed, 1000, EncodeOutcome::Clamped, 117.5);
        row("below the bits", speed, -1000, EncodeOutcome::Clamped, -10);
        row("not a number", speed, std::nan(""), EncodeOutcome::Refused, 0);
        row("infinite", speed, HUGE_VAL, EncodeOutcome::Refused, 0);
        const SignalDefinition word = layout(0, 64, ByteOrder::Intel, SignalType::Unsigned);
        row("largest", word, 18446744073709551616.0, EncodeOutcome::Clamped, 18446744073709551615.0);
        const SignalDefinition low = layout(0, 64, ByteOrder::Motorola, SignalType::Signed);
        row("lowest beyond the payload", low, 0, EncodeOutcome::Refused, 0);
        row("lowest", layout(0, 64, ByteOrder::Intel, SignalType::Signed), -1e300, EncodeOutcome::Clamped, -0x1p63);
        row("one bit with a sign", layout(0, 1, ByteOrder::Intel, SignalType::Signed), 5, EncodeOutcome::Clamped, 0);
        row("float", layout(0, 32, ByteOrder::Intel, SignalType::Float), 0.1, EncodeOutcome::Rounded, double(0.1f));
        row("float beyond", layout(0, 32, ByteOrder::Intel, SignalType::Float), -1e39, EncodeOutcome::Clamped,
            -double(std::numeric_limits<float>::max()));
    }
    void tellsWhatAValueBecomes()
    {
        QFETCH(SignalDefinition, signal);
        QFETCH(double, wanted);
        QFETCH(int, outcome);
        QFETCH(double, carried);
        const MessageDefinition message = messageOf({signal}, 8);
        QByteArray payload(8, '\x55');
        const EncodeResult result = MessageEncoder(message).set(
            {0, wanted, {}}, reinterpret_cast<std::uint8_t *>(payload.data()), 8, EncodeLimits::Declared);
        QCOMPARE(int(result.outcome), outcome);
        QCOMPARE(result.physical, carried);
        if (result.outcome == EncodeOutcome::Refused) {
            QCOMPARE(payload, QByteArray(8, '\x55'));
            QVERIFY(!refusalText(result.refusal).isEmpty());
        } else {
            QCOMPARE(decodeOne(signal, payload).physical, carried);
        }
    }

    void multiplexingSelects_data()
    {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QString>("expected"); // deep inner other outer always: valid, not selected, beyond
        QTest::newRow("nothing") << QByteArray("00000000") << "nnnvv";
        QTest::newRow("other") << QByteArray("01000000") << "nnvvv";
        QTest::newRow("inner") << QByteArray("f2060000") << "nvnvv";
        QTest::newRow("deep") << QByteArray("03090000") << "vvnvv";
        QTest::newRow("deep, negative") << QByteArray("02ff0000") << "vvnvv";
        QTest::newRow("deep, but no outer") << QByteArray("00070000") << "nnnvv";
        QTest::newRow("short") << QByteArray("0207") << "-vnv-";
        QTest::newRow("shorter") << QByteArray("02") << "n-nv-";
        QTest::newRow("empty") << QByteArray() << "nnn--";
    }
    void multiplexingSelects()
    {
        QFETCH(QByteArray, payload);
        QFETCH(QString, expected);
        QCOMPARE(states(nested(), QByteArray::fromHex(payload)), expected);
    }

    void multiplexersFollowWhatIsEncoded()
    {
        using Inputs = std::vector<SignalInput>;
        const MessageDefinition message = nested();
        const MessageEncoder encoder(message);
        const auto encode = [&](const Inputs &inputs, const char *before, const char *after) {
            QByteArray payload = QByteArray::fromHex(before);
            QString text;
            for (const EncodeResult &result :
                 encoder.encode(inputs, reinterpret_cast<std::uint8_t *>(payload.data()), unsigned(payload.size())))
                text += QString::number(int(result.refusal));
            return payload.toHex() == after ? text : QString::fromLatin1(payload.toHex());
        };
        const QString conflict = QString::number(int(EncodeRefusal::ConflictingSelectors));
        QCOMPARE(encode({{Deep, 5, {}}}, "00550000", "02070500"), QStringLiteral("0"));
        QCOMPARE(encode({{Deep, 5, {}}}, "f3080000", "f3080500"), QStringLiteral("0")); // selected already
        QCOMPARE(encode({{Deep, 5, {}}, {Outer, 3, {}}}, "00550000", "03070500"), QStringLiteral("00"));
        QCOMPARE(encode({{Inner, 8, {}}, {Outer, 3, {}}, {Deep, 6, {}}}, "00000000", "03080600"),
                 QStringLiteral("000"));
        QCOMPARE(encode({{Other, 9, {}}, {Deep, 5, {}}}, "00000000", "01090000"), QStringLiteral("0") + conflict);
        QCOMPARE(encode({{Outer, 0, {}}, {Inner, 8, {}}, {Always, 2, {}}}, "01000000", "00000004"),
                 QStringLiteral("0") + conflict + QStringLiteral("0"));
        QCOMPARE(encode({{7, 1, {}}}, "00000000", "00000000"), QString::number(int(EncodeRefusal::UnknownSignal)));
        QCOMPARE(encode({{Deep, 1, {}}}, "00", "00"), QString::number(int(EncodeRefusal::BeyondPayload)));
    }

    void startValues()
    {
        MessageDefinition message = nested();
        message.signalList[Outer].startValue = 3;
        message.signalList[Inner].startValue = -1;
        message.signalList[Deep].startValue = 0x44;
        message.signalList[Other].startValue = 0x55;
        std::uint8_t payload[8];
        MessageEncoder(message).start(payload, sizeof payload);
        QCOMPARE(QByteArray(reinterpret_cast<char *>(payload), 4).toHex(), QByteArray("03ff4400"));
    }

    void remoteAndErrorFramesCarryNothing()
    {
        const MessageDefinition message = messageOf({layout(0, 8, ByteOrder::Intel, SignalType::Unsigned)}, 8);
        RawFrame frame;
        frame.length = 8;
        SignalValue value;
        const MessageDecoder decoder(message);
        decoder.decode(frame, &value);
        QVERIFY(value.state == SignalState::Valid);
        frame.remote = true;
        decoder.decode(frame, &value);
        QVERIFY(value.state == SignalState::BeyondFrame);
    }

    void findsTheMessageOfAFrame()
    {
        QCOMPARE(parameterGroup(0x18FEF1FE), 0xFEF1u);
        QCOMPARE(parameterGroup(0x0CEF2A10), 0xEF00u);
        QCOMPARE(parameterGroup(0x1DF00403), 0x1F004u);
        const QByteArray j1939 = "BA_DEF_ BO_ \"VFrameFormat\" INT 0 3;\nBA_DEF_DEF_ \"VFrameFormat\" 3;\n";
        const QTemporaryDir dir;
        const auto add = [&](DatabaseSet *set, const char *name, const QByteArray &content, DatabaseChannels channels) {
            const QString path = dir.filePath(QLatin1String(name));
            write(path, content);
            QVERIFY(set->add(path, channels).change == DatabaseSet::Change::Loaded);
        };
        DatabaseSet set;
        add(&set, "group.dbc", file("Group", "2566844926", j1939), DatabaseChannels::Both);          // 18FEF1FE
        add(&set, "addressed.dbc", file("Addressed", "2364485136", j1939), DatabaseChannels::First); // 0CEF2A10
        add(&set, "exact.dbc", file("Exact", "2566844689"), DatabaseChannels::Second);               // 18FEF111
        add(&set, "standard.dbc", file("Standard", "100"), DatabaseChannels::Both);
        add(&set, "later.dbc", file("Later", "100"), DatabaseChannels::Both);
        const auto lookup = set.lookup();
        const auto found = [&](unsigned channel, std::uint32_t id, bool extended) {
            return nameOf(lookup->find(channel, id, extended));
        };
        QCOMPARE(found(1, 0x18FEF1FE, true), QStringLiteral("Group"));
        QCOMPARE(found(1, 0x0CFEF111, true), QStringLiteral("Group")); // another priority and source
        QCOMPARE(found(2, 0x18FEF111, true), QStringLiteral("Exact"));
        QCOMPARE(found(1, 0x18FEF111, true), QStringLiteral("Group"));
        QCOMPARE(found(1, 0x18EF0105, true), QStringLiteral("Addressed")); // another destination
        QCOMPARE(found(2, 0x18EF0105, true), QString());
        QCOMPARE(found(1, 100, false), QStringLiteral("Standard"));
        QCOMPARE(found(1, 100, true), QString());
        QCOMPARE(found(3, 100, false), QStringLiteral("Standard"));
        QCOMPARE(found(3, 0x0CEF2A10, true), QString());
        QVERIFY(set.setChannels(dir.filePath(QStringLiteral("standard.dbc")), DatabaseChannels::Second));
        QCOMPARE(nameOf(set.lookup()->find(1, 100, false)), QStringLiteral("Later"));
        QVERIFY(set.remove(dir.filePath(QStringLiteral("later.dbc"))));
        QCOMPARE(nameOf(set.lookup()->find(1, 100, false)), QString());
        QCOMPARE(found(1, 100, false), QStringLiteral("Standard")); // the earlier snapshot stays
    }

    void reloadsWhatChangesAndKeepsWhatBreaks()
    {
        using Change = DatabaseSet::Change;
        const QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("a.dbc"));
        DatabaseSet set;
        QVERIFY(set.add(path, DatabaseChannels::Both).change == Change::Kept);
        QVERIFY(set.entries().empty());
        write(path, file("First", "1"));
        QVERIFY(set.add(path, DatabaseChannels::Both).change == Change::Loaded);
        DatabaseWatcher watcher;
        QSignalSpy changed(&watcher, &DatabaseWatcher::changed);
        watcher.watch(set.paths());
        QVERIFY(set.reloadChanged().isEmpty());

        const auto reload = [&](const QByteArray &content, bool inPlace = false) {
            QFile present(path);
            if (inPlace && present.open(QIODevice::WriteOnly))
                present.write(content);
            else
                content.isNull() ? void(QFile::remove(path)) : write(path, content);
            present.close();
            const int before = changed.count();
            const bool told = QTest::qWaitFor([&] { return changed.count() > before; }, 20000);
            const auto outcomes = told ? set.reloadChanged() : QVector<DatabaseSet::Outcome>();
            return outcomes.size() == 1 ? int(outcomes[0].change) : -1;
        };
        const auto name = [&] { return nameOf(set.lookup()->find(1, 1, false)); };
        QCOMPARE(reload(file("Second", "1")), int(Change::Loaded));
        QCOMPARE(name(), QStringLiteral("Second"));
        QCOMPARE(reload("BU_: A\nBO_ 1"), int(Change::Kept));
        QVERIFY(set.reloadChanged().isEmpty()); // told once
        QCOMPARE(reload(QByteArray()), int(Change::Kept));
        QVERIFY(set.reloadChanged().isEmpty());
        QCOMPARE(name(), QStringLiteral("Second"));
        QCOMPARE(reload(file("Third", "1")), int(Change::Loaded));
        QCOMPARE(name(), QStringLiteral("Third"));
        QCOMPARE(reload(file("Fourth", "1"), true), int(Change::Loaded));
        QCOMPARE(name(), QStringLiteral("Fourth"));
    }
};

QTEST_GUILESS_MAIN(TestSignals)
#include "test_signals.moc"
