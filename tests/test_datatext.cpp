#include "dialogs/datatext.h"

#include <QRandomGenerator>
#include <QtTest>

class TestDataText : public QObject
{
    Q_OBJECT

private slots:
    void normalizing_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("normalized");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("runs of digits") << "123 4567 8"
                                        << "01 23 45 67 08" << QByteArray("\x01\x23\x45\x67\x08");
        QTest::newRow("case is kept") << "aB Cd f"
                                      << "aB Cd 0f" << QByteArray("\xab\xcd\x0f");
        QTest::newRow("blanks") << "  1   22  "
                                << "01 22" << QByteArray("\x01\x22");
        QTest::newRow("empty") << ""
                               << "" << QByteArray();
        QTest::newRow("only blanks") << "    "
                                     << "" << QByteArray();
        QTest::newRow("not hexadecimal") << "xyz 7"
                                         << "0x yz 07" << QByteArray("\0\0\7", 3);
    }
    void normalizing()
    {
        QFETCH(QString, text);
        QFETCH(QString, normalized);
        QFETCH(QByteArray, bytes);
        QCOMPARE(normalizedDataText(text), normalized);
        QCOMPARE(dataBytes(normalized), bytes);
    }

    void bytesOfUnsplitPieces() { QCOMPARE(dataBytes("1ff 0 80"), QByteArray("\xff\0\x80", 3)); }

    void cuttingAndJoining()
    {
        QCOMPARE(firstDataBytes("00 11 22", 2), QString("00 11 "));
        QCOMPARE(firstDataBytes("00 11 22", 3), QString("00 11 22"));
        QCOMPARE(firstDataBytes("00 11 22", 0), QString());
        QCOMPARE(dataText(QByteArray("\x00\xab\xff", 3)), QString("00 AB FF"));
        QCOMPARE(dataText({}), QString());
    }

    void anyTextSettlesAtOnce()
    {
        QRandomGenerator random(20);
        const QString alphabet = "0123456789abcdefABCDEF      xG,;\t中";
        for (int round = 0; round < 2000; ++round) {
            QString text;
            for (int length = random.bounded(120); length > 0; --length)
                text += alphabet.at(random.bounded(alphabet.size()));
            const QString once = normalizedDataText(text);
            QCOMPARE(normalizedDataText(once), once);
            const QByteArray bytes = dataBytes(once);
            QCOMPARE(once.size(), qMax(0, bytes.size() * 3 - 1));
            QCOMPARE(dataBytes(dataText(bytes)), bytes);
            const int cut = random.bounded(70);
            QCOMPARE(dataBytes(firstDataBytes(once, cut)), bytes.left(cut));
        }
    }
};

QTEST_GUILESS_MAIN(TestDataText)
#include "test_datatext.moc"
