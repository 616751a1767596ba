#include "app/about.h"
#include "app/buildinfo.h"
#include "app/devicewatch.h"
#include "app/drivernotices.h"
#include "app/helpdocuments.h"
#include "app/mainmenu.h"
#include "app/operationlog.h"
#include "device/devicelayer.h"
#include "fakedriver.h"
#include "testfolder.h"

#include <QAction>
#include <QDate>
#include <QMenuBar>
#include <QtTest>

#include <cstring>

class TestAppParts : public QObject
{
    Q_OBJECT

private:
    const TestFolder folder_;

private slots:
    void init() { setLanguageCode(SimplifiedChinese); }

    void companyName_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<unsigned>("language");
        QTest::addColumn<QString>("name");
        const QByteArray three = "甲;乙;C & Co\r\nsecond line;x;y\n";
        const QString missing = "公司名称缺失";
        QTest::newRow("simplified") << three << 0u << "甲";
        QTest::newRow("traditional") << three << 1u << "乙";
        QTest::newRow("english") << three << 2u << "C & Co";
        QTest::newRow("too few fields") << QByteArray("甲;乙") << 2u << missing;
        QTest::newRow("empty file") << QByteArray() << 0u << missing;
    }
    void companyName()
    {
        QFETCH(QByteArray, content);
        QFETCH(unsigned, language);
        QFETCH(QString, name);
        folder_.write("config/company.txt", content);
        setLanguageCode(language);
        QCOMPARE(::companyName(), name);
    }

    void companyFileMissing()
    {
        QFile::remove(folder_.path("config/company.txt"));
        QCOMPARE(::companyName(), QString("公司名称缺失"));
    }

    void aboutTextHasAShortAndALongForm()
    {
        QFile::remove(folder_.path("language/config.ini"));
        QCOMPARE(aboutText().section('\n', 0, 0), QString("Ostrel-V1.17"));
        QVERIFY(aboutText().contains("2023"));
        folder_.write("language/config.ini", "[LAST2]\nSel=1\n");
        folder_.write("config/company.txt", "一;二;Three");
        setLanguageCode(English);
        const QRegularExpression longForm(
            "^Ostrel-V1\\.17\\(\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\)\n.*2023.*,Three$");
        QVERIFY2(longForm.match(aboutText()).hasMatch(), qPrintable(aboutText()));
        QCOMPARE(buildinfo::isoDate("Nov  3 2026"), QString("2026-11-03"));
        QCOMPARE(buildinfo::isoDate("Jan 21 2027"), QString("2027-01-21"));
    }

    void helpMenuListsManualsOfTheLanguage()
    {
        for (const char *file : {"a.PDF", "b.pdf", "sub/c.pdf", "d.txt", "e.tar.pdf", "A&B.pdf"}) {
            QDir(folder_.path("help/Chinese")).mkpath("sub");
            folder_.write(QString("help/Chinese/") + file, "x");
        }
        QMenuBar bar;
        MainMenu menu(&bar);
        menu.setTexts();
        menu.fillHelpMenu();
        const auto entries = [&bar] {
            QStringList texts;
            const auto actions = bar.findChild<QMenu *>("menuHelp")->actions();
            for (const QAction *action : actions)
                texts << (action->isSeparator() ? QString("-") : action->text());
            return texts;
        };
        const QStringList fixedPart{"关于(&A)", "-", "帮助文档目录(&P)", "-"};
        QCOMPARE(entries(), fixedPart + QStringList({"A&&B.pdf", "b.pdf", "e.tar.pdf", "c.pdf"}));
        menu.fillHelpMenu();
        QCOMPARE(entries().size(), 8);
        setLanguageCode(English); // an empty folder, and then none at all
        menu.fillHelpMenu();
        QCOMPARE(entries().size(), 4);
        QDir(folder_.path("help/English")).removeRecursively();
        menu.fillHelpMenu();
        QCOMPARE(entries().size(), 4);
        setLanguageCode(TraditionalChinese);
        menu.fillHelpMenu();
        QCOMPARE(entries().size(), 8);
    }

    void logLinesHaveTwoForms()
    {
        OperationLog log;
        log.addWorkerLine("<b>通道1");
        log.addWindowLine("完成");
        const QStringList lines = log.text().split('\n');
        QVERIFY2(QRegularExpression("^\\d\\d:\\d\\d:\\d\\d\\.\\d{3}<b>通道1$").match(lines.at(0)).hasMatch(),
                 qPrintable(lines.at(0)));
        QVERIFY2(QRegularExpression("^\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d：完成$").match(lines.at(1)).hasMatch(),
                 qPrintable(lines.at(1)));
        log.clear();
        QVERIFY(log.text().isEmpty());
    }

    void lossesAreToldOncePerBurst()
    {
        const auto lost = [](unsigned channel, quint64 count) {
            return DriverNotice{DriverNotice::Kind::FramesLost, "", channel, count};
        };
        LossReport report;
        QVERIFY(report.secondPassed().isEmpty());
        report.add(lost(1, 5));
        report.add(lost(1, 6));
        QVERIFY(report.secondPassed().isEmpty());
        report.add(lost(1, 1));
        QVERIFY(report.secondPassed().isEmpty());
        QCOMPARE(report.secondPassed(), QStringList{"通道2接收丢失12帧！"});
        QVERIFY(report.secondPassed().isEmpty());

        int lines = 0; // a burst without end is told all the same
        for (int second = 0; second < 20; ++second) {
            report.add(lost(0, 100));
            lines += report.secondPassed().size();
        }
        QCOMPARE(lines, 2);
        report.add(lost(0, 3));
        setLanguageCode(English);
        QCOMPARE(report.finish(), QStringList{"Channel 1 lost 3 received frames!"});
        QVERIFY(report.finish().isEmpty());
        report.add(lost(7, 3)); // no such channel
        QVERIFY(report.finish().isEmpty());
    }

    void watchTellsComingAndGoing()
    {
        FakeDriver *fake = FakeDriver::install();
        fake->info.firmwareVersion = 0x212;
        std::memcpy(fake->info.serialNumber, "S1\0\0", 4);
        DeviceWatch watch;
        QCOMPARE(watch.look(), DeviceWatch::Change::None);
        QVERIFY(openDevice(kDeviceType, 0, 0));
        refreshDeviceInfo();
        QCOMPARE(watch.look(), DeviceWatch::Change::Shown);
        QCOMPARE(watch.titleText(), QString("SN:S1, DriverLib:V0.00, Firmware:V2.12"));
        QCOMPARE(watch.look(), DeviceWatch::Change::None);
        fake->info.serialNumber[1] = '2'; // another device in its place
        refreshDeviceInfo();
        QCOMPARE(watch.look(), DeviceWatch::Change::Shown);
        fake->status = 0;
        QCOMPARE(watch.look(), DeviceWatch::Change::Gone);
        QCOMPARE(watch.look(), DeviceWatch::Change::None);
        closeDevice();
    }
};

QTEST_MAIN(TestAppParts)
#include "test_appparts.moc"
