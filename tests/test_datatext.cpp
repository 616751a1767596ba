#include "transmit/datatext.h"

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
};

QTEST_GUILESS_MAIN(TestDataText)
#include "test_datatext.moc"
