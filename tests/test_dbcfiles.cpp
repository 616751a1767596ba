// Database files against what they must decode to: those of a public project, which lie beside the tree, if at all, or
// those of the folder that OSTREL_DBC_FILES names.
#include "signals/bytetext.h"
#include "signals/databaseset.h"
#include "signals/encoder.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

#include <cmath>
#include <random>

namespace
{

QDir folder()
{
    return QDir(qEnvironmentVariable("OSTREL_DBC_FILES", QStringLiteral(OSTREL_DBC_FILES)));
}

// The expectations were read as code page 1252, which garbles files that are UTF-8.
bool sameText(const QString &text, const QString &expected)
{
    const QByteArray utf8 = text.toUtf8();
    return text == expected || fromCodePage1252({utf8.constData(), std::size_t(utf8.size())}) == expected;
}

QVector<std::int64_t> selectors(const SignalDefinition &signal)
{
    QVector<std::int64_t> values;
    for (const SelectorRange &range : signal.selectedBy)
        for (std::int64_t value = range.first; value <= range.last; ++value)
            values.append(value);
    return values;
}

QJsonObject expectations()
{
    QFile file(folder().filePath(QStringLiteral("expected.json")));
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}

} // namespace

class TestDbcFiles : public QObject
{
    Q_OBJECT

    static void addFiles()
    {
        QTest::addColumn<QString>("name");
        const QStringList names = folder().entryList({QStringLiteral("*.dbc")}, QDir::Files);
        for (const QString &name : names)
            QTest::newRow(qPrintable(name)) << name;
    }

    static void compareSignal(const SignalDefinition &signal, const QJsonArray &expected)
    {
        QVERIFY2(sameText(signal.unit, expected[1].toString()), qPrintable(signal.unit));
        QCOMPARE(signal.multiplexer, expected[2].toBool());
        QVector<std::int64_t> ids;
        for (const QJsonValue &id : expected[3].toArray())
            ids.append(id.toInt());
        QCOMPARE(selectors(signal), ids);
        const QJsonObject texts = expected[4].toObject();
        QCOMPARE(signal.valueTexts.size(), texts.size());
        for (const ValueText &text : signal.valueTexts)
            QVERIFY(sameText(text.text, texts[QString::number(text.value)].toString()));
    }

    static void compareValues(const MessageDefinition &message, const QJsonArray &payloadAndValues)
    {
        const QByteArray payload = QByteArray::fromHex(payloadAndValues[0].toString().toLatin1());
        std::vector<SignalValue> values(std::size_t(message.signalList.size()));
        MessageDecoder(message).decode(reinterpret_cast<const std::uint8_t *>(payload.constData()),
                                       unsigned(payload.size()), values.data());
        if (payloadAndValues[1].isNull()) {
            // Refused there: a multiplexer whose value selects nothing, or signals that cannot be taken apart.
            const QString reason = payloadAndValues[2].toString();
            const bool multiplexing = reason.contains(QLatin1String("multiplexer"));
            const std::int64_t got = reason.section(QLatin1String("got "), 1).toLongLong();
            bool explained = !multiplexing;
            for (int i = 0; multiplexing && i < message.signalList.size(); ++i) {
                if (!message.signalList[i].multiplexer || values[i].raw != got || values[i].state != SignalState::Valid)
                    continue;
                explained = true;
                for (int j = 0; j < message.signalList.size(); ++j)
                    explained = explained && (message.signalList[j].multiplexedBy != i ||
                                              values[j].state == SignalState::NotSelected);
                if (explained)
                    break;
            }
            QVERIFY2(explained, qPrintable(reason));
            return;
        }
        const QJsonObject expected = payloadAndValues[1].toObject();
        int valid = 0;
        for (int i = 0; i < message.signalList.size(); ++i) {
            const SignalDefinition &signal = message.signalList[i];
            if (values[i].state != SignalState::Valid) {
                QVERIFY2(!expected.contains(signal.name), qPrintable(signal.name));
                continue;
            }
            ++valid;
            const double wanted = expected[signal.name].toDouble();
            QVERIFY2(expected.contains(signal.name) && values[i].physical == wanted,
                     qPrintable(QStringLiteral("%1.%2: %3 instead of %4")
                                    .arg(message.name, signal.name)
                                    .arg(values[i].physical, 0, 'g', 17)
                                    .arg(wanted, 0, 'g', 17)));
        }
        QCOMPARE(valid, expected.size());
    }

private slots:
    void initTestCase()
    {
        if (!folder().exists(QStringLiteral("expected.json")))
            QSKIP("the files are not there");
    }

    void readsAsExpected_data() { addFiles(); }
    void readsAsExpected()
    {
        QFETCH(QString, name);
        const QJsonObject expected = expectations()[name].toObject();
        const DbcResult result = readDbcFile(folder().filePath(name));
        for (const DbcProblem &problem : result.problems)
            qInfo("%s", qPrintable(problemText(problem)));
        if (expected.contains(QLatin1String("error"))) { // one message is refused there; here the others are kept
            QCOMPARE(result.problems.first().fault, DbcFault::BadIdentifier);
            QCOMPARE(result.database.messages.size(), 10);
            return;
        }
        const QJsonArray messages = expected[QStringLiteral("messages")].toArray();
        QCOMPARE(result.database.messages.size(), messages.size());
        for (int i = 0; i < messages.size(); ++i) {
            const QJsonObject wanted = messages[i].toObject();
            const MessageDefinition &message = result.database.messages[i];
            QCOMPARE(message.name, wanted[QStringLiteral("name")].toString());
            QCOMPARE(message.id, std::uint32_t(wanted[QStringLiteral("id")].toDouble()));
            QCOMPARE(message.extended, wanted[QStringLiteral("ext")].toBool());
            QCOMPARE(int(message.length), wanted[QStringLiteral("len")].toInt());
            QCOMPARE(message.fd, wanted[QStringLiteral("fd")].toBool());
            QCOMPARE(int(message.cycleTimeMs), wanted[QStringLiteral("cycle")].toInt());
            const QJsonArray expectedSignals = wanted[QStringLiteral("signals")].toArray();
            QCOMPARE(message.signalList.size(), expectedSignals.size());
            for (const QJsonValue &each : expectedSignals) {
                const int index = message.indexOf(each.toArray()[0].toString());
                QVERIFY2(index >= 0, qPrintable(each.toArray()[0].toString()));
                compareSignal(message.signalList[index], each.toArray());
            }
            for (const QJsonValue &each : wanted[QStringLiteral("cases")].toArray())
                compareValues(message, each.toArray());
        }
    }

    // Over every signal of every file: what is decoded and encoded again is the same payload, bit for bit.
    void encodesWhatItDecodes_data() { addFiles(); }
    void encodesWhatItDecodes()
    {
        QFETCH(QString, name);
        constexpr int kPayloads = 50;
        std::mt19937 random(5);
        const SignalDatabase database = readDbcFile(folder().filePath(name)).database;
        for (const MessageDefinition &message : database.messages) {
            const MessageDecoder decoder(message);
            const MessageEncoder encoder(message);
            const unsigned length = encoder.payloadLength();
            const auto count = std::size_t(message.signalList.size());
            std::vector<SignalValue> values(count);
            std::vector<SignalValue> again(count);
            for (int n = 0; n < kPayloads; ++n) {
                std::uint8_t payload[kRawDataBytes];
                for (std::uint8_t &byte : payload)
                    byte = n % 2 ? std::uint8_t(random() & random() & random()) : std::uint8_t(random());
                decoder.decode(payload, length, values.data());
                std::vector<SignalInput> exact;
                for (int i = 0; i < int(count); ++i)
                    if (values[i].state == SignalState::Valid)
                        exact.push_back({i, 0, values[i].raw});
                std::uint8_t encoded[kRawDataBytes] = {};
                for (const EncodeResult &result : encoder.encode(exact, encoded, length))
                    QVERIFY(result.outcome == EncodeOutcome::Exact);
                decoder.decode(encoded, length, again.data());
                for (std::size_t i = 0; i < count; ++i)
                    QVERIFY(again[i].state == values[i].state && again[i].raw == values[i].raw);
                for (const SignalInput &input : exact) {
                    const double physical = values[input.signal].physical;
                    const EncodeResult result = encoder.set({input.signal, physical, {}}, encoded, length);
                    if (std::isfinite(physical))
                        QVERIFY2(result.outcome == EncodeOutcome::Exact && result.physical == physical,
                                 qPrintable(message.signalList[input.signal].name));
                }
                decoder.decode(encoded, length, again.data());
                for (const SignalInput &input : exact) {
                    const SignalDefinition &signal = message.signalList[input.signal];
                    if (signal.bits <= 52 && values[input.signal].physical != 0 &&
                        !std::isnan(values[input.signal].physical)) // -0
                        QCOMPARE(again[input.signal].raw, values[input.signal].raw);
                }
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestDbcFiles)
#include "test_dbcfiles.moc"
