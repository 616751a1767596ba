#include "device/language.h"
#include "device/settingsstore.h"
#include "frames/framebuilder.h"
#include "testfolder.h"

#include <QtTest>

#include <cstring>
#include <limits>

namespace
{

template <typename Record> ModelItem build(quint32 id, quint8 length, quint8 flags = 0, unsigned channel = 0)
{
    Record raw{};
    raw.id = id;
    raw.length = length;
    std::memset(raw.data, 0xAB, sizeof raw.data);
    raw.data[0] = 0x01;
    if constexpr (sizeof raw.data == kFdDataBytes)
        raw.flags = flags;
    QList<ModelItem> batch;
    appendItem(batch, raw, channel);
    return batch.first();
}

QString timeStamp(quint64 microseconds)
{
    CanReceiveRecord raw{};
    raw.timeStamp = microseconds;
    QList<ModelItem> batch;
    appendItem(batch, raw, 0);
    return batch.first().timeStamp;
}

} // namespace

class TestFrameBuilder : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { setLanguageCode(SimplifiedChinese); }

    void identifiers()
    {
        const std::pair<quint32, const char *> cases[] = {
            {0x12, "0x012"}, {0x7FF, "0x7FF"}, {0x1ABCD, "0x1ABCD"}, {0x80000005, "0x00000005"}, {~0u, "0x1FFFFFFF"}};
        for (const auto &[word, text] : cases) {
            QCOMPARE(build<CanReceiveRecord>(word, 1).idText, QString(text));
            QCOMPARE(build<CanFdTransmitRecord>(word, 1).idText, QString(text));
        }
    }

    void words()
    {
        // Standard, extended, data, remote, FD with switch; the last line is for a language that there is not.
        const QStringList languages[] = {
            {"标准帧", "扩展帧", "数据帧", "远程帧", "CANFD-加速"},
            {"標準幀", "擴展幀", "數據幀", "遠程幀", "CANFD-加速"},
            {"Standard Frame", "Extended Frame", "data frame", "Remote Frame", "CANFD-acceleration"},
            {"", "", "", "", "CANFD"},
        };
        for (unsigned language = 0; language <= LanguageCount; ++language) {
            setLanguageCode(language);
            const QStringList &texts = languages[language];
            const ModelItem plain = build<CanFdReceiveRecord>(0x100, 2, 1, 1);
            QCOMPARE(QStringList({plain.formatText, plain.typeText, plain.protocolText}),
                     QStringList({texts[0], texts[2], texts[4]}));
            QCOMPARE(build<CanFdReceiveRecord>(0x100, 2, 3).protocolText, QString("CANFD")); // the value 1, not the bit
            const ModelItem flagged = build<CanTransmitRecord>(0xC0000100, 2, 0, 1);
            QCOMPARE(QStringList({flagged.formatText, flagged.typeText, flagged.protocolText, flagged.timeStamp}),
                     QStringList({texts[1], texts[3], "CAN", "无"}));
            QCOMPARE(flagged.channelText + flagged.dirText + plain.dirText, QString("2TxRx"));
            QVERIFY(flagged.direction == Transmitted && plain.direction == Received && plain.channel == 1);
        }
    }

    void dataTexts()
    {
        QCOMPARE(build<CanReceiveRecord>(1, 3).dataText, QString("x| 01 AB AB "));
        QCOMPARE(build<CanReceiveRecord>(1, 0).dataText, QString("x| "));
        const ModelItem remote = build<CanReceiveRecord>(kIdRemoteFlag, 3);
        QCOMPARE(remote.dataText + remote.dlcText, QString("x| 3"));
        QCOMPARE(build<CanTransmitRecord>(kIdRemoteFlag, 3).dataText, QString("x| "));
        QCOMPARE(build<CanFdTransmitRecord>(kIdRemoteFlag, 3).dataText, QString("x| "));
        QVERIFY(build<CanFdReceiveRecord>(kIdRemoteFlag, 3).dataText.isEmpty());
        // Byte counts that no frame has are cut before a byte is read.
        QCOMPARE(build<CanReceiveRecord>(1, 255).dataText.size(), 3 + 8 * 3);
        QCOMPARE(build<CanTransmitRecord>(1, 9).dlcText, QString("8"));
        for (const quint8 length : {64, 65, 255}) {
            const ModelItem item = build<CanFdReceiveRecord>(1, length);
            QCOMPARE(item.dlcText, QString("64"));
            QCOMPARE(item.dataText.size(), 3 + 64 * 3);
        }
    }

    void timeStampFollowsItsSettingAtOnce()
    {
        const TestFolder folder;
        QCOMPARE(timeStamp(0), QString("0x0"));
        QCOMPARE(timeStamp(12345678), QString("0xBC614E"));
        settings::setValue("timeHex", "0", false);
        QCOMPARE(timeStamp(12345678), QString("12.3457"));
        QCOMPARE(timeStamp(0), QString("0.0000"));
        settings::setValue("timeHex", "2", false);
        QCOMPARE(timeStamp(std::numeric_limits<quint64>::max()), QString("0xFFFFFFFFFFFFFFFF"));
    }

    // The quick way must round as the product of the floating-point numbers does, halves above all.
    void secondsEqualTheFloatingPointText()
    {
        quint64 seed = 1;
        for (int i = 0; i < 300000; ++i) {
            seed = seed * 6364136223846793005u + 1442695040888963407u;
            quint64 value = seed >> (seed % 64);
            if (i % 3 != 0)
                value = value / 100 * 100 + 49 + i % 3;
            QCOMPARE(secondsText(value), QString::number(static_cast<double>(value) * 0.000001, 'f', 4));
        }
    }
};

QTEST_GUILESS_MAIN(TestFrameBuilder)
#include "test_framebuilder.moc"
