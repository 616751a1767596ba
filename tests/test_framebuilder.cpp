#include "device/language.h"
#include "device/settingsstore.h"
#include "frames/framebuilder.h"
#include "frames/pendingframes.h"
#include "testfolder.h"

#include <QtTest>

#include <cstring>
#include <limits>

namespace
{

template <typename Record> Record record(quint32 id, quint8 length)
{
    Record made{};
    made.id = id;
    made.length = length;
    std::memset(made.data, 0xAB, sizeof made.data);
    made.data[0] = 0x01;
    return made;
}

template <typename Record> ModelItem build(const Record &raw, unsigned channel = 0)
{
    QList<ModelItem> batch;
    appendItem(batch, raw, channel);
    return batch.first();
}

} // namespace

class TestFrameBuilder : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { setLanguageCode(SimplifiedChinese); }

    void identifiers_data()
    {
        QTest::addColumn<quint32>("word");
        QTest::addColumn<QString>("text");
        QTest::newRow("standard") << 0x12u << "0x012";
        QTest::newRow("standard, last") << 0x7FFu << "0x7FF";
        QTest::newRow("standard, never cut") << 0x1ABCDu << "0x1ABCD";
        QTest::newRow("extended") << 0x80000005u << "0x00000005";
        QTest::newRow("extended, every flag") << 0xFFFFFFFFu << "0x1FFFFFFF";
    }
    void identifiers()
    {
        QFETCH(quint32, word);
        QFETCH(QString, text);
        QCOMPARE(build(record<CanReceiveRecord>(word, 1)).idText, text);
        QCOMPARE(build(record<CanFdTransmitRecord>(word, 1)).idText, text);
    }

    void words_data()
    {
        QTest::addColumn<unsigned>("language");
        QTest::addColumn<QStringList>("texts"); // standard, extended, data, remote, FD with switch
        QTest::newRow("CN") << 0u << QStringList{"标准帧", "扩展帧", "数据帧", "远程帧", "CANFD-加速"};
        QTest::newRow("TW") << 1u << QStringList{"標準幀", "擴展幀", "數據幀", "遠程幀", "CANFD-加速"};
        QTest::newRow("EN") << 2u
                            << QStringList{"Standard Frame", "Extended Frame", "data frame", "Remote Frame",
                                           "CANFD-acceleration"};
        QTest::newRow("other") << 3u << QStringList{"", "", "", "", "CANFD"};
    }
    void words()
    {
        QFETCH(unsigned, language);
        QFETCH(QStringList, texts);
        setLanguageCode(language);
        auto fd = record<CanFdReceiveRecord>(0x100, 2);
        fd.flags = 1;
        const ModelItem plain = build(fd, 1);
        QCOMPARE(QStringList({plain.formatText, plain.typeText, plain.protocolText}),
                 QStringList({texts[0], texts[2], texts[4]}));
        fd.flags = 3; // the value 1, not the bit
        QCOMPARE(build(fd).protocolText, QString("CANFD"));
        const ModelItem flagged = build(record<CanTransmitRecord>(0xC0000100, 2), 1);
        QCOMPARE(QStringList({flagged.formatText, flagged.typeText, flagged.protocolText, flagged.timeStamp}),
                 QStringList({texts[1], texts[3], "CAN", "无"}));
        QCOMPARE(flagged.channel, 1u);
        QCOMPARE(flagged.channelText, QString("2"));
        QCOMPARE(flagged.dirText + plain.dirText, QString("TxRx"));
        QCOMPARE(flagged.direction * 10 + plain.direction, 1u);
        QVERIFY(flagged.indexText.isEmpty() && flagged.systemTime.isEmpty());
    }

    void dataTexts()
    {
        QCOMPARE(build(record<CanReceiveRecord>(1, 3)).dataText, QString("x| 01 AB AB "));
        QCOMPARE(build(record<CanReceiveRecord>(1, 0)).dataText, QString("x| "));
        QCOMPARE(build(record<CanReceiveRecord>(kIdRemoteFlag, 3)).dataText, QString("x| "));
        QCOMPARE(build(record<CanReceiveRecord>(kIdRemoteFlag, 3)).dlcText, QString("3"));
        QCOMPARE(build(record<CanTransmitRecord>(kIdRemoteFlag, 3)).dataText, QString("x| "));
        QCOMPARE(build(record<CanFdTransmitRecord>(kIdRemoteFlag, 3)).dataText, QString("x| "));
        QVERIFY(build(record<CanFdReceiveRecord>(kIdRemoteFlag, 3)).dataText.isEmpty());
        // Byte counts that no frame has are cut before a byte is read.
        QCOMPARE(build(record<CanReceiveRecord>(1, 255)).dataText.size(), 3 + 8 * 3);
        QCOMPARE(build(record<CanTransmitRecord>(1, 9)).dlcText, QString("8"));
        for (const int length : {64, 65, 255}) {
            const ModelItem item = build(record<CanFdReceiveRecord>(1, static_cast<quint8>(length)));
            QCOMPARE(item.dataText.size(), 195);
            QCOMPARE(item.dlcText, QString("64"));
        }
    }

    void timeStampFollowsItsSettingAtOnce()
    {
        const TestFolder folder;
        auto raw = record<CanReceiveRecord>(1, 0);
        QCOMPARE(build(raw).timeStamp, QString("0x0"));
        raw.timeStamp = 12345678;
        QCOMPARE(build(raw).timeStamp, QString("0xBC614E"));
        settings::setValue("timeHex", "0", false);
        QCOMPARE(build(raw).timeStamp, QString("12.3457"));
        raw.timeStamp = 0;
        QCOMPARE(build(raw).timeStamp, QString("0.0000"));
        settings::setValue("timeHex", "2", false);
        raw.timeStamp = std::numeric_limits<quint64>::max();
        QCOMPARE(build(raw).timeStamp, QString("0xFFFFFFFFFFFFFFFF"));
    }

    // The quick way must round as the product of the floating-point numbers does, halves above all.
    void secondsEqualTheFloatingPointText()
    {
        quint64 seed = 1;
        for (int i = 0; i < 300000; ++i) {
            seed = seed * 6364136223846793005u + 1442695040888963407u;
            quint64 value = seed >> (seed % 64);
            if (i % 3 == 0)
                value = value / 100 * 100 + 50;
            else if (i % 3 == 1)
                value = value / 100 * 100 + 49 + i % 2 * 2;
            QCOMPARE(secondsText(value), QString::number(static_cast<double>(value) * 0.000001, 'f', 4));
        }
    }

    void handOverKeepsTheOrder()
    {
        QVERIFY(takePendingFrames().isEmpty());
        appendPendingFrames({});
        QVERIFY(takePendingFrames().isEmpty());
        QList<ModelItem> batch;
        appendItem(batch, record<CanReceiveRecord>(1, 0), 0);
        appendItem(batch, record<CanReceiveRecord>(2, 0), 0);
        appendPendingFrames(batch);
        appendPendingFrames({build(record<CanTransmitRecord>(3, 0))});
        const QList<ModelItem> taken = takePendingFrames();
        QCOMPARE(taken.size(), 3);
        QCOMPARE(taken[0].idText + taken[1].idText + taken[2].idText, QString("0x0010x0020x003"));
        QVERIFY(takePendingFrames().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestFrameBuilder)
#include "test_framebuilder.moc"
