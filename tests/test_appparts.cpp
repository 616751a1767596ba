#include "app/about.h"
#include "app/buildinfo.h"
#include "app/devicewatch.h"
#include "app/drivernotices.h"
#include "app/helpdocuments.h"
#include "app/mainmenu.h"
#include "app/operationlog.h"
#include "device/devicelayer.h"
#include "device/language.h"
#include "fakedriver.h"
#include "testfolder.h"

#include <QAction>
#include <QMenuBar>
#include <QtTest>

#include <cstring>

class TestAppParts : public QObject
{
    Q_OBJECT

private:
    const TestFolder folder_;

    static bool matches(const QString &text, const char *pattern)
    {
        return QRegularExpression(QRegularExpression::anchoredPattern(QString(pattern))).match(text).hasMatch();
    }

private slots:
    void init() { setLanguageCode(SimplifiedChinese); }

    void companyName()
    {
        const char *const three = "甲;乙;C & Co\r\nsecond line;x;y\n";
        const QString missing = "公司名称缺失";
        const struct {
            const char *content;
            unsigned language;
            QString name;
        } files[] = {{three, 0, "甲"}, {three, 1, "乙"}, {three, 2, "C & Co"}, {"甲;乙", 2, missing}, {"", 0, missing}};
        for (const auto &[content, language, name] : files) {
            folder_.write("config/company.txt", content);
            setLanguageCode(language);
            QCOMPARE(::companyName(), name);
        }
        QFile::remove(folder_.path("config/company.txt"));
        QCOMPARE(::companyName(), missing);
    }

    void aboutTextHasAShortAndALongForm()
    {
        QFile::remove(folder_.path("language/config.ini"));
        QCOMPARE(aboutText().section('\n', 0, 0), QString("Ostrel-V1.17"));
        QVERIFY(aboutText().contains("2023"));
        folder_.write("language/config.ini", "[LAST2]\nSel=1\n");
        folder_.write("config/company.txt", "一;二;Three");
        setLanguageCode(English);
        QVERIFY2(matches(aboutText(), "Ostrel-V1\\.17\\(\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\)\n.*2023.*,Three"),
                 qPrintable(aboutText()));
        QCOMPARE(buildinfo::isoDate("Nov  3 2026"), QString("2026-11-03"));
        QCOMPARE(buildinfo::isoDate("Jan 21 2027"), QString("2027-01-21"));
    }

    void helpMenuListsManualsOfTheLanguage()
    {
        QDir(folder_.path("help/Chinese")).mkpath("sub");
        for (const char *file : {"a.PDF", "b.pdf", "sub/c.pdf", "d.txt", "e.tar.pdf", "A&B.pdf"})
            folder_.write(QString("help/Chinese/") + file, "x");
#ifdef Q_OS_UNIX
        QVERIFY(QFile::link(folder_.path("help/Chinese/b.pdf"), folder_.path("help/Chinese/link.pdf")));
#endif
        QMenuBar bar;
        MainMenu menu(&bar);
        menu.setTexts();
        const auto entries = [&] {
            menu.fillHelpMenu();
            QStringList texts;
            for (const QAction *action : bar.findChild<QMenu *>("menuHelp")->actions())
                texts << (action->isSeparator() ? QString("-") : action->text());
            return texts;
        };
        const QStringList fixedPart{"关于(&A)", "-", "帮助文档目录(&P)", "-"};
        const QStringList chinese = fixedPart + QStringList({"A&&B.pdf", "b.pdf", "e.tar.pdf", "c.pdf"});
        QCOMPARE(entries(), chinese);
        setLanguageCode(English); // an empty folder, and then none at all
        QCOMPARE(entries(), fixedPart);
        QDir(folder_.path("help/English")).removeRecursively();
        QCOMPARE(entries(), fixedPart);
        setLanguageCode(TraditionalChinese);
        QCOMPARE(entries(), chinese);
    }

    void menuTexts()
    {
        const char *const texts[][1 + LanguageCount] = {
            {"menuDevice", "设备管理(&O)", "設備管理(&O)", "Device Manage(&O)"},
            {"actionDeviceOperations", "设备操作(&S)", "設備操作(&S)", "Device Operations(&S)"},
            {"menuSend", "多条发送(&T)", "多條發送(&T)", "Multiple Transmiter(&T)"},
            {"actionFileSend", "文件发送(&F)", "文件發送(&F)", "Fie Transmiter(&F)"},
            {"menuParameter", "参数设定(&S)", "參數設定(&S)", "Parameter Setting(&S)"},
            {"actionCanSetting", "CAN参数设置(&C)", "CAN參數設置(&C)", "CAN Setting(&C)"},
            {"menuInformation", "信息(&I)", "信息(&I)", "Information(&I)"},
            {"actionDeviceInfo", "设备信息(&I)", "設備信息(&I)", "Device Info(&I)"},
            {"menuView", "显示(&V)", "顯示(&V)", "View(&V)"},
            {"actionClearLog", "清空日志(&D)", "清空日志(&D)", "Clear Log(&D)"},
            {"menuLanguage", "语言(&L)", "語言(&L)", "Language(&L)"},
            {"menuHelp", "帮助(&H)", "幫助(&H)", "Help(&H)"},
            {"actionAbout", "关于(&A)", "關於(&A)", "About(&A)"},
            {"actionFirmwareUpgrade", "固件升级(&U)", "固件升級(&U)", "Firmware Upgrade(&U)"},
            {"actionHelpFolder", "帮助文档目录(&P)", "幫助文檔目錄(&P)", "Help Folder(&P)"},
            {"actionListSend", "列表发送(&L)", "列表發送(&L)", "List Send(&L)"},
            {"actionHexTimeStamp", "时间标识(Hex)(&H)", "時間標識(Hex)(&H)", "time stamp(Hex)(&H)"},
            {"actionCheckRecvId", "接收ID累加判断(&A)", "接收ID纍加判斷(&A)", "check recv ID(&A)"},
            {"actionMergeSameId", "合并相同ID数据(&M)", "合并相同ID數據(&M)", "Merge list data(&M)"},
        };
        QMenuBar bar;
        MainMenu menu(&bar);
        for (unsigned code = 0; code < LanguageCount; ++code) {
            setLanguageCode(code);
            menu.setTexts();
            for (const auto &row : texts) {
                const auto *title = bar.findChild<QMenu *>(row[0]);
                const auto *entry = bar.findChild<QAction *>(row[0]);
                QCOMPARE(title ? title->title() : entry->text(), QString(row[1 + code]));
            }
        }
    }

    void logLinesHaveTwoForms()
    {
        QCOMPARE(QTime(1, 2).toString("h"), QString("۱")); // a locale with digits of its own, which no text follows
        OperationLog log;
        log.addWorkerLine("<b>通道1");
        log.addWindowLine("完成");
        const QStringList lines = log.text().split('\n');
        QVERIFY2(matches(lines.at(0), "\\d\\d:\\d\\d:\\d\\d\\.\\d{3}<b>通道1"), qPrintable(lines.at(0)));
        QVERIFY2(matches(lines.at(1), "\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d：完成"), qPrintable(lines.at(1)));
        log.clear();
        QVERIFY(log.text().isEmpty());
    }

    void lossesAreToldOncePerBurst()
    {
        LossReport report;
        const auto lose = [&report](unsigned channel, quint64 count) {
            report.add({DriverNotice::Kind::FramesLost, "", channel, count});
        };
        const auto toldAfterLosing = [&](unsigned channel, quint64 count) {
            lose(channel, count);
            return report.secondPassed().join(' ');
        };
        QCOMPARE(report.secondPassed(), QStringList());
        lose(1, 5);
        QCOMPARE(toldAfterLosing(1, 6), QString());
        QCOMPARE(toldAfterLosing(1, 1), QString());
        QCOMPARE(report.secondPassed(), QStringList{"通道2接收丢失12帧！"});
        QCOMPARE(report.secondPassed(), QStringList());

        QString told; // a burst without end is told all the same
        for (int second = 0; second < 20; ++second)
            told += toldAfterLosing(0, 100);
        QCOMPARE(told, QString("通道1接收丢失1000帧！").repeated(2));
        lose(0, 3);
        lose(7, 3); // no such channel
        setLanguageCode(English);
        QCOMPARE(report.finish(), QStringList{"Channel 1 lost 3 received frames!"});
        QCOMPARE(report.finish(), QStringList());
    }

    void watchTellsAnotherDeviceInThePlaceOfTheFirst()
    {
        FakeDriver *fake = FakeDriver::install();
        DeviceWatch watch;
        QVERIFY(openDevice(kDeviceType, 0, 0));
        for (const char *serial : {"S1", "S2"}) {
            std::memcpy(fake->info.serialNumber, serial, 3);
            refreshDeviceInfo();
            QCOMPARE(watch.look(), DeviceWatch::Change::Shown);
            QVERIFY(watch.titleText().startsWith(QString("SN:") + serial));
            QCOMPARE(watch.look(), DeviceWatch::Change::None);
        }
        closeDevice();
        QCOMPARE(watch.look(), DeviceWatch::Change::Gone);

        fake->hasProperties = false; // refused, its handle closed
        QVERIFY(!openDevice(kDeviceType, 0, 0));
        fake->takeCalls();
        QCOMPARE(watch.look(), DeviceWatch::Change::None);
        QCOMPARE(fake->takeCalls(), QStringList());
        closeDevice();
    }
};

QTEST_MAIN(TestAppParts)
#include "test_appparts.moc"
