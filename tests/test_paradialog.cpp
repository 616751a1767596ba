#include "device/applyparameters.h"
#include "device/channelparameters.h"
#include "device/devicelayer.h"
#include "device/filterdialog.h"
#include "device/language.h"
#include "device/paradialog.h"
#include "device/settingsstore.h"
#include "device/valuedialog.h"
#include "fakedriver.h"
#include "modalhelper.h"
#include "testfolder.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

Q_DECLARE_METATYPE(ChannelParameters)

class TestParaDialog : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestFolder> folder_;
    FakeDriver *fake_ = nullptr;
    std::unique_ptr<ModalAnswer> answers_;

    static QString defaults(int channel)
    {
        return QString("ch%1paramABIT1,0;ch%1paramABIT2,0;ch%1paramCustomBaudrate,;ch%1paramFilterID,;"
                       "ch%1paramcanFDStandard,0;ch%1paramfilterMode,0;ch%1paramisCustomBaudrate,0;"
                       "ch%1paramworkStatus,0")
            .arg(channel);
    }
    static QComboBox *combo(const QWidget &dialog, const char *name)
    {
        return dialog.findChild<QComboBox *>(QLatin1String(name));
    }

private slots:
    void init()
    {
        folder_ = std::make_unique<TestFolder>();
        fake_ = FakeDriver::install();
        answers_ = std::make_unique<ModalAnswer>();
    }
    void cleanup()
    {
        QCOMPARE(answers_->unexpected(), QStringList());
        QCOMPARE(answers_->stepsLeft(), 0);
        closeDevice();
        folder_.reset();
    }

    void confirmingAFreshStoreWritesTheChannelsKeys_data()
    {
        QTest::addColumn<bool>("choice");
        QTest::addColumn<int>("selector");
        QTest::addColumn<QString>("file");
        QTest::newRow("first") << false << 0 << defaults(1);
        QTest::newRow("second") << false << 1 << defaults(2);
        QTest::newRow("both at once") << false << 3 << defaults(1) + ";" + defaults(2);
        QTest::newRow("either") << true << 3 << defaults(1);
    }
    void confirmingAFreshStoreWritesTheChannelsKeys()
    {
        QFETCH(bool, choice);
        QFETCH(int, selector);
        QFETCH(QString, file);
        ParaDialog dialog(true, choice, selector);
        pressButton(&dialog, "btnConfirm");
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(QString::fromUtf8(folder_->read("config/setdb.txt")), file);
    }

    void valuesTravelBetweenStoreAndForm()
    {
        storeChannelParameters(0, {1, 1, 14, 8, true, "500K", true, "0-1-2"});
        storeChannelParameters(1, {0, 1, 99, 3, false, "", false, ""});
        settings::setValue("ch2paramworkStatus", "often", false); // no number
        {
            ParaDialog dialog(true, false, ParaDialog::BothChannels);
            QCOMPARE(combo(dialog, "ABIT1Combo")->currentText(), QString("666.66kbps(80%)"));
            QVERIFY(dialog.findChild<QCheckBox *>("CustomBaudrateCheckBox")->isHidden());
            QVERIFY(combo(dialog, "chCombo")->isHidden());
            combo(dialog, "ABIT2Combo")->setCurrentIndex(2);
            pressButton(&dialog, "btnCancel");
            QCOMPARE(settings::value("ch1paramABIT2", ""), QString("8"));
            ParaDialog again(true, false, ParaDialog::BothChannels);
            combo(again, "ABIT2Combo")->setCurrentIndex(2);
            pressButton(&again, "btnConfirm");
        }
        for (unsigned channel : {0u, 1u}) {
            const ChannelParameters stored = loadChannelParameters(channel);
            QCOMPARE(stored.workStatus, 1u);
            QCOMPARE(stored.canFdStandard, 1u);
            QCOMPARE(stored.arbitration, 14u);
            QCOMPARE(stored.data, 2u);
            QVERIFY(stored.customBaudRate && stored.filterOn);
            QCOMPARE(stored.customBaudRateText, QString("500K"));
            QCOMPARE(stored.filterRows, QString("0-1-2"));
        }

        storeChannelParameters(1, {0, 0, 99, 3, false, "", false, ""});
        ParaDialog either(true, true, ParaDialog::BothChannels);
        combo(either, "chCombo")->setCurrentIndex(1);
        QCOMPARE(combo(either, "ABIT1Combo")->currentIndex(), 0); // an index the list does not have
        QCOMPARE(combo(either, "ABIT2Combo")->currentText(), QString("1Mbps(80%)"));
        pressButton(&either, "btnSave");
        QCOMPARE(settings::value("ch2paramABIT1", ""), QString("0"));
        QCOMPARE(settings::value("ch1paramABIT1", ""), QString("14"));
    }

    void onlyTheFilterIsOpenInAView()
    {
        ParaDialog view(false, true, ParaDialog::BothChannels);
        QVERIFY(combo(view, "chCombo")->isEnabled());
        for (const char *name : {"workStatusCombo", "canFDStandardCombo", "ABIT1Combo", "ABIT2Combo",
                                 "CustomBaudrateCheckBox", "CustomBaudrateEdit"})
            QVERIFY2(!view.findChild<QWidget *>(QLatin1String(name))->isEnabled(), name);
        QVERIFY(view.findChild<QWidget *>("filterModeCheck")->isEnabled());
        QVERIFY(!combo(ParaDialog(true, true, 1), "chCombo")->isEnabled());
    }

    void tickingTheFilterOpensItsEditor()
    {
        storeChannelParameters(1, {0, 0, 0, 0, false, "", false, "0-5-6"});
        const QByteArray before = folder_->read("config/setdb.txt");
        ParaDialog dialog(true, false, 1);
        auto *box = dialog.findChild<QCheckBox *>("filterModeCheck");
        answers_->on<FilterDialog>([](FilterDialog *filter) {
            QCOMPARE(filter->windowTitle(), QString("通道2滤波设置"));
            pressButton(filter, "btnAdd");
            pressButton(filter, "btnConfirm");
        });
        box->click();
        box->click(); // off: no editor
        answers_->on<FilterDialog>([](FilterDialog *filter) {
            QCOMPARE(filter->rowText(), QString("0-5-6|0-0-0"));
            pressButton(filter, "btnAdd");
            pressButton(filter, "btnCancel");
        });
        box->click();
        QCOMPARE(folder_->read("config/setdb.txt"), before);
        pressButton(&dialog, "btnSave");
        QCOMPARE(settings::value("ch2paramFilterID", ""), QString("0-5-6|0-0-0"));
        QCOMPARE(settings::value("ch2paramfilterMode", ""), QString("1"));
    }

    void applyingNeedsAnOpenChannel()
    {
        QStringList log;
        for (unsigned code = 0; code < LanguageCount; ++code) {
            setLanguageCode(code);
            applyParameters(nullptr, [&](const QString &line) { log << line; });
        }
        QCOMPARE(answers_->messages(),
                 QStringList({"提示|设备未打开！", "提示|設備未打開！", "warning|The device is not opened!"}));
        QVERIFY(log.isEmpty());
        QVERIFY(fake_->calls().isEmpty());
    }

    void applying_data()
    {
        QTest::addColumn<QList<int>>("open");
        QTest::addColumn<ChannelParameters>("second"); // parameters of channel 1; the first gets the defaults
        QTest::addColumn<QString>("failing");
        QTest::addColumn<QStringList>("texts"); // message in the three languages, or none
        QTest::addColumn<int>("lines");
        QTest::addColumn<QStringList>("calls");
        const QStringList first{"SetCanFdStandard(7,0,0)", "SetArbitrationBaud(7,0,0)", "SetDataBaud(7,0,0)"};
        const QStringList second{"SetCanFdStandard(7,1,1)", "SetArbitrationBaud(7,1,2)", "SetDataBaud(7,1,3)"};
        const ChannelParameters plain{0, 1, 2, 3, false, "", false, "0-1-2"};
        const ChannelParameters custom{0, 1, 2, 3, true, "K", false, ""};
        const ChannelParameters filtered{0, 1, 2, 3, false, "", true, "1-1-F"};
        const ChannelParameters noRows{0, 1, 2, 3, false, "", true, ""};
        const QStringList none;
        QTest::newRow("both") << QList<int>{0, 1} << plain << "" << none << 2 << first + second;
        QTest::newRow("second only") << QList<int>{1} << plain << "" << none << 0 << none;
        QTest::newRow("first only") << QList<int>{0} << plain << "" << none << 1 << first;
        QTest::newRow("filter") << QList<int>{0, 1} << filtered << "" << none << 2
                                << first + second +
                                       QStringList{"SetValue(1/filter_clear,0)", "SetValue(1/filter_mode,1)",
                                                   "SetValue(1/filter_start,0x1)", "SetValue(1/filter_end,0xF)",
                                                   "SetValue(1/filter_ack,0)"};
        QTest::newRow("no rows") << QList<int>{0, 1} << noRows << "" << none << 2
                                 << first + second +
                                        QStringList{"SetValue(1/filter_clear,0)", "SetValue(1/filter_ack,0)"};
        QTest::newRow("standard refused") << QList<int>{0, 1} << plain << "SetCanFdStandard"
                                          << QStringList{"警告|设置CANFD标准失败！", "警告|設置CANFD標準失敗！",
                                                         "warning|Failed to set CANFD standard!"}
                                          << 0 << QStringList{first.first()};
        QTest::newRow("rate refused") << QList<int>{0, 1} << plain << "SetDataBaud"
                                      << QStringList{"警告|设置波特率失败！", "警告|設置波特率失敗！",
                                                     "warning|Setting baud rate failed!"}
                                      << 0 << first;
        QTest::newRow("custom rate refused")
            << QList<int>{0, 1} << custom << "1/baud_rate_custom"
            << QStringList{"警告|设置自定义波特率失败！", "警告|設置自定義波特率失敗！",
                           "warning|Setting custom baud rate failed!"}
            << 1 << first + QStringList{second.first(), "SetValue(1/baud_rate_custom,K)"};
        QTest::newRow("filter refused") << QList<int>{0, 1} << filtered << "1/filter_clear"
                                        << QStringList{"警告|设置滤波失败！", "警告|設置濾波失敗！",
                                                       "warning|Setting filtering failed!"}
                                        << 1 << first + second + QStringList{"SetValue(1/filter_clear,0)"};
    }
    void applying()
    {
        QFETCH(QList<int>, open);
        QFETCH(ChannelParameters, second);
        QFETCH(QString, failing);
        QFETCH(QStringList, texts);
        QFETCH(int, lines);
        QFETCH(QStringList, calls);
        QVERIFY(openDevice(kDeviceType, 0, 0));
        for (int channel : open)
            QVERIFY(initChannel(unsigned(channel), 0));
        storeChannelParameters(1, second);
        fake_->failing = QStringList{failing};
        for (unsigned code = 0; code < LanguageCount; ++code) {
            setLanguageCode(code);
            fake_->takeCalls();
            answers_->on<ParaDialog>([](ParaDialog *dialog) { pressButton(dialog, "btnConfirm"); });
            QStringList log;
            applyParameters(nullptr, [&log](const QString &line) { log << line; });
            QCOMPARE(fake_->takeCalls(), calls);
            QCOMPARE(answers_->takeMessages(), texts.mid(int(code), 1));
            QCOMPARE(log.count("设备参数设置成功！"), lines);
            QCOMPARE(log.size(), lines);
        }
        answers_->on<ParaDialog>([](ParaDialog *dialog) { pressButton(dialog, "btnCancel"); });
        applyParameters(nullptr, [](const QString &) { QFAIL("nothing is to be applied"); });
        QVERIFY(fake_->takeCalls().isEmpty());
    }

    void aValueIsOneNumberWithinItsLimits_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("taken");
        QTest::newRow("lowest") << "1" << true;
        QTest::newRow("highest") << "500" << true;
        for (const char *bad : {"", "0", "501", "-5", "x", "1,0", "1.5", "0x10", "99999999999"})
            QTest::newRow(qPrintable("refused: " + QString(bad))) << bad << false;
    }
    void aValueIsOneNumberWithinItsLimits()
    {
        QFETCH(QString, typed);
        QFETCH(bool, taken);
        valueDialog dialog;
        QSignalSpy values(&dialog, &valueDialog::getValue);
        dialog.setEntry(2, "Frames", 1, 500, 20);
        dialog.show();
        auto *edit = dialog.findChild<QLineEdit *>("valueEdit");
        QCOMPARE(edit->text(), QString("20"));
        QCOMPARE(dialog.windowTitle(), QString("Frames"));
        edit->setText(typed);
        dialog.findChild<QPushButton *>("btnValueOK")->click();
        QCOMPARE(dialog.isVisible(), !taken);
        QCOMPARE(values.size(), taken ? 1 : 0);
        if (taken)
            QCOMPARE(values.first(), QVariantList({typed, 2}));
        pressButton(&dialog, "btnValueCancel");
        QVERIFY(!dialog.isVisible());
        QCOMPARE(values.size(), taken ? 1 : 0);
    }
};

QTEST_MAIN(TestParaDialog)
#include "test_paradialog.moc"
