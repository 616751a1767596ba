#include "app/capturefile.h"
#include "device/language.h"
#include "sampleframes.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

namespace
{
const QStringList kTitles{"a", "b*"};
const QByteArray kMark("\xEF\xBB\xBF");

ModelItem numbered(int number)
{
    ModelItem item = receivedFrame(0x123, 0xAB);
    item.indexText = QString::number(number);
    item.systemTime = "01:02:03.004";
    return item;
}

QByteArray row(int number)
{
    return QByteArray::number(number) + ",=\"01:02:03.004\",0x0,1,Rx,0x123,标准帧,数据帧,1,CAN,x| AB \n";
}
} // namespace

class TestCaptureFile : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir dir_;

    static QByteArray read(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly | QIODevice::Text) ? file.readAll() : QByteArray("unreadable");
    }

private slots:
    void init() { setLanguageCode(SimplifiedChinese); }

    void whatTheFileHeldStays_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("between");
        QTest::newRow("new") << QByteArray() << kMark;
        QTest::newRow("complete last line") << QByteArray("old\n") << QByteArray();
        QTest::newRow("torn last line") << QByteArray("old\n1,=") << QByteArray("\n");
        QTest::newRow("no line end") << QByteArray("x") << QByteArray("\n");
    }
    void whatTheFileHeldStays()
    {
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, between);
        const QString path = dir_.filePath(QTest::currentDataTag());
        if (!before.isEmpty()) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(before);
        }
        CaptureFile capture;
        QSignalSpy log(&capture, &CaptureFile::logLine);
        QVERIFY(capture.open(path, kTitles, CaptureMode::AllFrames));
        QVERIFY(!capture.wantsFilteredOnly());
        QByteArray expected = before + between + "a,b*\n";
        QCOMPARE(read(path), expected); // on disk already
        capture.add(numbered(1));
        capture.add(numbered(2));
        QCOMPARE(read(path), expected);
        capture.writeRound();
        expected += row(1) + row(2);
        QCOMPARE(read(path), expected);
        capture.add(numbered(3));
        capture.close();
        QVERIFY(!capture.isOpen());
        QCOMPARE(read(path), expected + row(3));
        QCOMPARE(log.count(), 0);

        QVERIFY(capture.open(path, kTitles, CaptureMode::FilteredFrames)); // a second run goes behind the first
        QVERIFY(capture.wantsFilteredOnly());
        capture.close();
        QCOMPARE(read(path), expected + row(3) + "a,b*\n");
    }

    void aFileThatCannotBeOpenedIsNotReported_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("missing folder") << dir_.filePath("missing/a.csv");
        QTest::newRow("folder") << dir_.path();
#ifdef Q_OS_LINUX
        QTest::newRow("read-only folder, also for root") << "/proc/a.csv";
#endif
    }
    void aFileThatCannotBeOpenedIsNotReported()
    {
        QFETCH(QString, path);
        CaptureFile capture;
        QSignalSpy log(&capture, &CaptureFile::logLine);
        QVERIFY(!capture.open(path, kTitles, CaptureMode::AllFrames));
        QVERIFY(!capture.isOpen());
        capture.close();
        QCOMPARE(log.count(), 0);
    }

#ifdef Q_OS_LINUX
    void aWriteErrorIsToldOnce_data()
    {
        QTest::addColumn<unsigned>("language");
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("last");
        QTest::newRow("simplified") << 0u << "实时保存写入文件失败："
                                    << "实时保存结束，3 行未能写入文件";
        QTest::newRow("traditional") << 1u << "實時保存寫入文件失敗："
                                     << "實時保存結束，3 行未能寫入文件";
        QTest::newRow("english") << 2u << "The capture file cannot be written: "
                                 << "Capture ended, 3 rows could not be written";
    }
    void aWriteErrorIsToldOnce()
    {
        QFETCH(unsigned, language);
        QFETCH(QString, first);
        QFETCH(QString, last);
        setLanguageCode(language);
        CaptureFile capture;
        QSignalSpy log(&capture, &CaptureFile::logLine);
        QVERIFY(capture.open("/dev/full", kTitles, CaptureMode::AllFrames));
        capture.add(numbered(1));
        capture.writeRound();
        capture.add(numbered(2));
        capture.add(numbered(3));
        capture.writeRound();
        QCOMPARE(log.count(), 1);
        QVERIFY(log.at(0).at(0).toString().startsWith(first));
        capture.close();
        QCOMPARE(log.count(), 2);
        QCOMPARE(log.at(1).at(0).toString(), last);
    }

    void aDeletedFileHarmsNothing()
    {
        const QString path = dir_.filePath("deleted.csv");
        CaptureFile capture;
        QSignalSpy log(&capture, &CaptureFile::logLine);
        QVERIFY(capture.open(path, kTitles, CaptureMode::AllFrames));
        QVERIFY(QFile::remove(path));
        capture.add(numbered(1));
        capture.close();
        QVERIFY(!QFile::exists(path));
        QCOMPARE(log.count(), 0);
    }
#endif
};

QTEST_GUILESS_MAIN(TestCaptureFile)
#include "test_capturefile.moc"
