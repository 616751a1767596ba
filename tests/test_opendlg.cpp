#include "device/channelparameters.h"
#include "device/devicelayer.h"
#include "device/language.h"
#include "device/opendlg.h"
#include "device/paradialog.h"
#include "device/settingsstore.h"
#include "fakedriver.h"
#include "modalhelper.h"
#include "testfolder.h"
#include "upgrade/updatedlg.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

#include <cstring>

class TestOpenDlg : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestFolder> folder_;
    FakeDriver *fake_ = nullptr;
    std::unique_ptr<ModalAnswer> answers_;

    void openTheDevice(OpenDlg &dialog)
    {
        pressButton(&dialog, "pushButton");
        QVERIFY(isDeviceOpen());
        fake_->takeCalls();
    }
    void confirmParameters()
    {
        answers_->on<ParaDialog>([](ParaDialog *dialog) { pressButton(dialog, "btnConfirm"); });
    }
    // The names of the enabled ones among the dialog's buttons and its device list, in order.
    static QStringList enabled(const OpenDlg &dialog)
    {
        QStringList names;
        for (const char *name : {"comboBox", "pushButton", "pushButton_2", "pushButton_3", "pushButton_4",
                                 "pushButton_5", "pushButton_6", "pushButton_8", "pushButton_9"})
            if (dialog.findChild<QWidget *>(QLatin1String(name))->isEnabled())
                names << QString(name).remove("pushButton");
        return names;
    }

private slots:
    void init()
    {
        folder_ = std::make_unique<TestFolder>();
        fake_ = FakeDriver::install();
        fake_->names = {"A", "B", "C"};
        fake_->info.firmwareVersion = 0x300;
        answers_ = std::make_unique<ModalAnswer>();
    }
    void cleanup()
    {
        QCOMPARE(answers_->unexpected(), QStringList());
        QCOMPARE(answers_->stepsLeft(), 0);
        closeDevice();
        folder_.reset();
    }

    void buttonsFollowTheDevice()
    {
        OpenDlg dialog(2);
        const QString plain = dialog.windowTitle();
        QSignalSpy closed(&dialog, &OpenDlg::deviceClosed);
        QCOMPARE(dialog.findChild<QComboBox *>("comboBox")->currentText(), QString("C"));
        QCOMPARE(enabled(dialog), QStringList({"comboBox", ""}));
        std::memcpy(fake_->info.serialNumber, "\x07HD 2\n", 7);
        pressButton(&dialog, "pushButton");
        QCOMPARE(fake_->takeCalls().first(), QString("OpenDevice(41,2,0)"));
        QCOMPARE(enabled(dialog), QStringList({"_2", "_3", "_4", "_5"}));
        QVERIFY2(dialog.windowTitle().contains("SN: HD2 , DriverLib:V0.00, Firmware:V3.00"),
                 qPrintable(dialog.windowTitle()));

        confirmParameters();
        pressButton(&dialog, "pushButton_3");
        QCOMPARE(enabled(dialog), QStringList({"_2", "_4", "_5", "_6", "_8"}));
        confirmParameters();
        pressButton(&dialog, "pushButton_2"); // only the other one
        QVERIFY(dialog.channelOpened(0) && dialog.channelOpened(1));
        QCOMPARE(fake_->calls().filter("InitChannel"), QStringList({"InitChannel(7,0)", "InitChannel(7,1)"}));
        QCOMPARE(enabled(dialog), QStringList({"_5", "_6", "_8", "_9"}));

        fake_->failing = QStringList{"ResetChannel"};
        pressButton(&dialog, "pushButton_8");
        QVERIFY(dialog.channelOpened(0));
        fake_->failing.clear();
        pressButton(&dialog, "pushButton_9");
        QVERIFY(!dialog.channelOpened(1));
        fake_->takeCalls();
        pressButton(&dialog, "pushButton_6");
        QCOMPARE(fake_->takeCalls(), QStringList{"ResetChannel(101)"});
        QCOMPARE(enabled(dialog), QStringList({"_2", "_3", "_4", "_5"}));

        pressButton(&dialog, "pushButton_5");
        QCOMPARE(fake_->takeCalls(), QStringList{"CloseDevice(7)"});
        QCOMPARE(closed.size(), 1);
        QCOMPARE(dialog.windowTitle(), plain);
        QCOMPARE(enabled(dialog), QStringList({"comboBox", ""}));
        QVERIFY(answers_->messages().isEmpty());
    }

    void aDeviceThatGoesByItselfIsNoticed()
    {
        OpenDlg dialog(0);
        openTheDevice(dialog);
        closeDevice();
        QTRY_VERIFY(dialog.findChild<QPushButton *>("pushButton")->isEnabled());
    }

    void openingFails()
    {
        fake_->deviceHandle = 0;
        OpenDlg dialog(1);
        const QStringList expected{"警告|设备打开失败！", "警告|設備打開失敗！", "warning|Device opening failed!"};
        for (unsigned code = 0; code < LanguageCount; ++code) {
            setLanguageCode(code);
            pressButton(&dialog, "pushButton");
        }
        QCOMPARE(answers_->takeMessages(), expected);

        fake_->deviceHandle = 7;
        dialog.findChild<QComboBox *>("comboBox")->setCurrentIndex(2);
        fake_->hasProperties = false;
        pressButton(&dialog, "pushButton");
        QCOMPARE(dialog.deviceIndex(), 1);
        QCOMPARE(answers_->takeMessages().size(), 1);
        pressButton(&dialog, "pushButton_5"); // the handle has stayed; closing clears it
        fake_->hasProperties = true;
        openTheDevice(dialog);
        QCOMPARE(dialog.deviceIndex(), 2);
    }

    void everyStepOfAChannelCanFail_data()
    {
        QTest::addColumn<QString>("failing");
        QTest::addColumn<QStringList>("texts");
        QTest::addColumn<int>("callCount");
        QTest::newRow("standard") << "SetCanFdStandard"
                                  << QStringList{"设置CANFD标准失败！", "設置CANFD標準失敗！",
                                                 "Failed to set CANFD standard!"}
                                  << 1;
        const QStringList rates{"设置波特率失败！", "設置波特率失敗！", "Setting baud rate failed!"};
        QTest::newRow("arbitration") << "SetArbitrationBaud" << rates << 2;
        QTest::newRow("data") << "SetDataBaud" << rates << 3;
        QTest::newRow("custom") << "1/baud_rate_custom"
                                << QStringList{"设置自定义波特率失败！", "設置自定義波特率失敗！",
                                               "Setting custom baud rate failed!"}
                                << 2;
        QTest::newRow("initialisation") << "InitChannel"
                                        << QStringList{"CAN初始化失败！", "CAN初始化失敗！",
                                                       "CAN Initialization failed!"}
                                        << 4;
        const QStringList filters{"设置滤波失败！", "設置濾波失敗！", "Setting filtering failed!"};
        QTest::newRow("filter clear") << "1/filter_clear" << filters << 5;
        QTest::newRow("filter kind") << "1/filter_mode" << filters << 6;
        QTest::newRow("filter ack") << "1/filter_ack" << filters << 9;
        QTest::newRow("start") << "StartChannel" << QStringList{"CAN启动失败！", "CAN啓動失敗！", "CAN start failed!"}
                               << 10;
    }
    void everyStepOfAChannelCanFail()
    {
        QFETCH(QString, failing);
        QFETCH(QStringList, texts);
        QFETCH(int, callCount);
        const bool custom = failing.endsWith("custom");
        storeChannelParameters(1, {1, 1, 13, 3, custom, "500K", true, "1-100-18FF00FF"});
        const QStringList wholeOpening{"SetCanFdStandard(7,1,1)",
                                       "SetArbitrationBaud(7,1,13)",
                                       "SetDataBaud(7,1,3)",
                                       "InitChannel(7,1)",
                                       "SetValue(1/filter_clear,0)",
                                       "SetValue(1/filter_mode,1)",
                                       "SetValue(1/filter_start,0x100)",
                                       "SetValue(1/filter_end,0x18FF00FF)",
                                       "SetValue(1/filter_ack,0)",
                                       "StartChannel(102)"};
        QStringList expected = wholeOpening.mid(0, callCount);
        if (custom)
            expected.last() = "SetValue(1/baud_rate_custom,500K)";
        OpenDlg dialog(0);
        openTheDevice(dialog);
        fake_->failing = QStringList{failing};
        for (unsigned code = 0; code < LanguageCount; ++code) {
            setLanguageCode(code);
            confirmParameters();
            dialog.openCh(1);
            QCOMPARE(fake_->takeCalls(), expected);
            QCOMPARE(answers_->takeMessages(), QStringList{warningTitle() + "|" + texts.at(int(code))});
            QVERIFY(!dialog.channelOpened(1));
            resetChannel(1);
            fake_->takeCalls();
        }
        fake_->failing.clear();
        settings::setValue("ch1paramFilterID", "0-1-2", false);
        confirmParameters();
        pressButton(&dialog, "pushButton_4");
        QVERIFY(dialog.channelOpened(1));
    }

    void filtersAreSkippedWithoutRowsOrWhenOff_data()
    {
        QTest::addColumn<bool>("on");
        QTest::addColumn<QString>("rows");
        QTest::addColumn<bool>("opens");
        QTest::addColumn<int>("writes");
        QTest::newRow("off") << false << "0-1-2" << true << 0;
        QTest::newRow("no rows") << true << "" << true << 0;
        QTest::newRow("trailing bar") << true << "0-1-2|" << false << 4;
        QTest::newRow("words") << true << "rubbish" << false << 1;
        QTest::newRow("four fields") << true << "0-1-2-3" << false << 1;
    }
    void filtersAreSkippedWithoutRowsOrWhenOff()
    {
        QFETCH(bool, on);
        QFETCH(QString, rows);
        QFETCH(bool, opens);
        QFETCH(int, writes);
        storeChannelParameters(0, {0, 0, 0, 0, false, "", on, rows});
        OpenDlg dialog(0);
        openTheDevice(dialog);
        confirmParameters();
        pressButton(&dialog, "pushButton_3");
        QCOMPARE(dialog.channelOpened(0), opens);
        QCOMPARE(fake_->takeCalls().filter("filter").size(), writes);
        QCOMPARE(answers_->messages().size(), opens ? 0 : 1);
    }

    void bothChannels_data()
    {
        QTest::addColumn<int>("selector");
        QTest::addColumn<QString>("failing");
        QTest::newRow("2") << 2 << "";
        QTest::newRow("3") << 3 << "";
        QTest::newRow("a failure of the first lets the second be tried") << 3 << "0/filter_clear";
    }
    void bothChannels()
    {
        QFETCH(int, selector);
        QFETCH(QString, failing);
        storeChannelParameters(0, {0, 0, 5, 0, false, "", true, "0-1-2"});
        fake_->failing = QStringList{failing};
        OpenDlg dialog(0);
        openTheDevice(dialog);
        confirmParameters();
        dialog.openCh(selector);
        QCOMPARE(dialog.channelOpened(0), failing.isEmpty());
        QVERIFY(dialog.channelOpened(1));
        QCOMPARE(fake_->calls().filter("Arbitration"),
                 QStringList({"SetArbitrationBaud(7,0,5)", "SetArbitrationBaud(7,1,5)"}));
        QCOMPARE(answers_->messages().size(), failing.isEmpty() ? 0 : 1);
    }

    void nothingOpensWhenCancelledOrWhenTheDeviceIsGone()
    {
        OpenDlg dialog(0);
        openTheDevice(dialog);
        answers_->on<ParaDialog>([](ParaDialog *parameters) { pressButton(parameters, "btnCancel"); });
        pressButton(&dialog, "pushButton_2");
        QVERIFY(fake_->takeCalls().isEmpty());
        QVERIFY(answers_->messages().isEmpty());

        answers_->on<ParaDialog>([](ParaDialog *parameters) {
            closeDevice();
            pressButton(parameters, "btnConfirm");
        });
        pressButton(&dialog, "pushButton_2");
        QCOMPARE(fake_->takeCalls(), QStringList{"CloseDevice(7)"});
        QCOMPARE(answers_->takeMessages(), QStringList{"警告|设备未打开！"});
        QVERIFY(!isChannelOpen(0));
    }

    void anOldFirmwareIsOfferedTheUpgrade_data()
    {
        QTest::addColumn<int>("firmware");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("image");
        QTest::addColumn<bool>("offered");
        QTest::newRow("below the floor") << 0x210 << 2 << "firmware.bin" << true;
        QTest::newRow("at the floor") << 0x211 << 2 << "firmware.bin" << false;
        QTest::newRow("newer image") << 0x211 << 2 << "x-V2.20-y.bin" << true;
        QTest::newRow("word of nought") << 0 << 2 << "firmware.bin" << true;
        QTest::newRow("no answer") << 0 << 0 << "firmware.bin" << false;
    }
    void anOldFirmwareIsOfferedTheUpgrade()
    {
        QFETCH(int, firmware);
        QFETCH(int, status);
        QFETCH(QString, image);
        QFETCH(bool, offered);
        folder_->write("firmware/" + image, "image");
        fake_->info.firmwareVersion = std::uint16_t(firmware);
        fake_->status = std::uint32_t(status);
        QString question;
        if (offered)
            answers_->on<UpdateDlg>([&question](UpdateDlg *upgrade) {
                question = upgrade->findChild<QLabel *>("label")->text();
                pressButton(upgrade, "pushButton_2");
            });
        OpenDlg dialog(0);
        openTheDevice(dialog);
        QCOMPARE(question, offered ? QString("固件版本(%1)过低，是否升级固件？").arg(versionText(unsigned(firmware)))
                                   : QString());
        QVERIFY(!fake_->calls().contains("UpdateDevice(7)"));
    }
};

QTEST_MAIN(TestOpenDlg)
#include "test_opendlg.moc"
