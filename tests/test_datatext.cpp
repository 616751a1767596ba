#include "dialogs/datatext.h"

#include <QRandomGenerator>
#include <QtTest>

class TestDataText : public QObject
{
    Q_OBJECT

private slots:
    void normalizing()
    {
        const char *const texts[][2] = {{"123 4567 8", "01 23 45 67 08"},
                                        {"aB Cd f", "aB Cd 0f"},
                                        {"  1   22  ", "01 22"},
                                        {"", ""},
                                        {"    ", ""},
                                        {"xyz 7", "0x yz 07"}};
        for (const auto &[text, normalized] : texts)
            QCOMPARE(normalizedDataText(text), QString(normalized));
        QCOMPARE(dataBytes("1ff 0 80"), QByteArray("\xff\0\x80", 3));
        QCOMPARE(dataBytes("0x yz 07"), QByteArray("\0\0\7", 3));
        QCOMPARE(firstDataBytes("00 11 22", 2), QString("00 11 "));
        QCOMPARE(dataText(QByteArray("\x00\xab\xff", 3)), QString("00 AB FF"));
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
