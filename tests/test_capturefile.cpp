#include "app/capturefile.h"
#include "device/language.h"
#include "sampleframes.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#ifdef Q_OS_LINUX
#include <csignal>
#include <sys/resource.h>
#endif

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

    static QStringList linesOf(const QSignalSpy &log)
    {
        QStringList lines;
        for (const QList<QVariant> &emission : log)
            lines << emission.at(0).toString();
        return lines;
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

        QVERIFY(capture.open(path, kTitles, CaptureMode::FilteredFrames)); // a second run goes behind the first
        QVERIFY(capture.wantsFilteredOnly());
        capture.close();
        QCOMPARE(read(path), expected + row(3) + "a,b*\n");
        const QString begun = "实时保存开始：" + QDir::toNativeSeparators(path);
        const QString ended = "实时保存结束：" + QDir::toNativeSeparators(path) + "，共写入 %1 行";
        QCOMPARE(linesOf(log), QStringList({begun, ended.arg(3), begun, ended.arg(0)}));
    }

    void aFileThatCannotBeOpenedIsTold_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("missing folder") << dir_.filePath("missing/a.csv");
        QTest::newRow("folder") << dir_.path();
#ifdef Q_OS_LINUX
        QTest::newRow("read-only folder, also for root") << "/proc/a.csv";
#endif
    }
    void aFileThatCannotBeOpenedIsTold()
    {
        QFETCH(QString, path);
        CaptureFile capture;
        QSignalSpy log(&capture, &CaptureFile::logLine);
        QVERIFY(!capture.open(path, kTitles, CaptureMode::AllFrames));
        QVERIFY(!capture.isOpen());
        capture.close();
        QCOMPARE(log.count(), 1);
        const QString told = log.at(0).at(0).toString();
        QVERIFY2(told.startsWith("实时保存的文件无法打开：" + QDir::toNativeSeparators(path) + "（"), qPrintable(told));
        QVERIFY2(!told.contains("（）") && !told.contains("Unknown"), qPrintable(told)); // the system's reason
    }

#ifdef Q_OS_LINUX
    void aFullDiskLeavesWholeRows_data()
    {
        QTest::addColumn<unsigned>("language");
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("last");
        QTest::newRow("simplified") << 0u << "实时保存写入文件失败："
                                    << "实时保存结束，2 行未能写入文件";
        QTest::newRow("traditional") << 1u << "實時保存寫入檔案失敗："
                                     << "實時保存結束，2 行未能寫入檔案";
        QTest::newRow("english") << 2u << "The capture file cannot be written: "
                                 << "Capture ended, 2 rows could not be written";
    }
    // A limit of the file's size stands for the disk: it takes a part of what is written.
    void aFullDiskLeavesWholeRows()
    {
        QFETCH(unsigned, language);
        QFETCH(QString, first);
        QFETCH(QString, last);
        const ModelItem items[] = {numbered(9), numbered(1), numbered(2)};
        setLanguageCode(language);
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit usual;
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &usual), 0);
        const auto limitTo = [&usual](rlim_t bytes) {
            const rlimit limited{bytes, usual.rlim_max};
            QCOMPARE(setrlimit(RLIMIT_FSIZE, &limited), 0);
        };
        CaptureFile capture;
        QSignalSpy log(&capture, &CaptureFile::logLine);
        for (const char *name : {"full", "full again"}) { // counts and errors start anew with every file
            const QString path = dir_.filePath(QTest::currentDataTag() + QString(name));
            log.clear();
            QVERIFY(capture.open(path, kTitles, CaptureMode::AllFrames));
            QByteArray whole = kMark + "a,b*\n";
            for (int round = 1; round <= 2; ++round) {
                capture.add(items[round]);
                capture.writeRound();
                whole += row(round);
                limitTo(rlim_t(whole.size() + row(9).size() / 2));
                capture.add(items[0]);
                capture.writeRound();
                limitTo(usual.rlim_cur);
                QCOMPARE(read(path), whole);
            }
            capture.close();
            const QStringList lines = linesOf(log);
            QCOMPARE(lines.size(), 4); // begin, one error, end, what is missing
            QCOMPARE(lines.at(1), first + qt_error_string(EFBIG));
            QVERIFY2(lines.at(2).contains(" 2 ") || lines.at(2).endsWith(": 2"), qPrintable(lines.at(2)));
            QCOMPARE(lines.at(3), last);
        }
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
        QCOMPARE(log.count(), 2); // begin and end
    }
#endif
};

QTEST_GUILESS_MAIN(TestCaptureFile)
#include "test_capturefile.moc"
