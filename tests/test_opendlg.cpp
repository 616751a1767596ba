#include "device/channelparameters.h"
#include "device/devicelayer.h"
#include "device/dialogs/opendlg.h"
#include "device/dialogs/paradialog.h"
#include "device/language.h"
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
    // The user answers the next parameter dialog with this button.
    void answerWith(const char *button)
    {
        answers_->on<ParaDialog>([button](ParaDialog *dialog) { pressButton(dialog, button); });
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

    // The name of the button that has the focus.
    static QString focus(const OpenDlg &dialog) { return dialog.focusWidget()->objectName().remove("pushButton"); }

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
        storeChannelParameters(0, {0, 0, 0, 0, false, "", false, "0-1-2"}); // the filter is off
        storeChannelParameters(1, {0, 0, 0, 0, false, "", true, ""});       // it has no rows
        OpenDlg dialog(2);
        const QString plain = dialog.windowTitle();
        QSignalSpy closed(&dialog, &OpenDlg::deviceClosed);
        QCOMPARE(dialog.findChild<QComboBox *>("comboBox")->currentText(), QString("C"));
        QCOMPARE(enabled(dialog), QStringList({"comboBox", ""}));
        QCOMPARE(focus(dialog), QString());
        std::memcpy(fake_->info.serialNumber, "\x07HD 2\n", 7);
        pressButton(&dialog, "pushButton");
        QCOMPARE(fake_->takeCalls().first(), QString("OpenDevice(41,2,0)"));
        QCOMPARE(enabled(dialog), QStringList({"_2", "_3", "_4", "_5"}));
        QCOMPARE(focus(dialog), QString("_2"));
        QVERIFY2(dialog.windowTitle().contains("SN: HD2 , DriverLib:V0.00, Firmware:V3.00"),
                 qPrintable(dialog.windowTitle()));

        answerWith("btnConfirm");
        pressButton(&dialog, "pushButton_3");
        QCOMPARE(enabled(dialog), QStringList({"_2", "_4", "_5", "_6", "_8"}));
        answerWith("btnConfirm");
        pressButton(&dialog, "pushButton_2"); // only the other one
        QVERIFY(dialog.channelOpened(0) && dialog.channelOpened(1));
        QCOMPARE(fake_->calls().filter("InitChannel"), QStringList({"InitChannel(7,0)", "InitChannel(7,1)"}));
        QCOMPARE(fake_->calls().filter("filter"), QStringList());
        QCOMPARE(enabled(dialog), QStringList({"_5", "_6", "_8", "_9"}));
        QCOMPARE(focus(dialog), QString("closeBtn"));
        QVERIFY(!dialog.findChild<QLabel *>("hintLabel")->isHidden());

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
        QVERIFY(dialog.findChild<QLabel *>("hintLabel")->isHidden());

        dialog.findChild<QWidget *>("pushButton_5")->setFocus();
        pressButton(&dialog, "pushButton_5");
        QCOMPARE(fake_->takeCalls(), QStringList{"CloseDevice(7)"});
        QCOMPARE(closed.size(), 1);
        QCOMPARE(dialog.windowTitle(), plain);
        QCOMPARE(enabled(dialog), QStringList({"comboBox", ""}));
        QCOMPARE(focus(dialog), QString());

        openTheDevice(dialog);
        closeDevice(); // not by the dialog
        QTRY_COMPARE(enabled(dialog), QStringList({"comboBox", ""}));
        QVERIFY(answers_->messages().isEmpty());
    }

    void openingFails()
    {
        fake_->deviceHandle = 0;
        OpenDlg dialog(1);
        for (unsigned code = 0; code < LanguageCount; ++code) {
            setLanguageCode(code);
            pressButton(&dialog, "pushButton");
        }
        QCOMPARE(answers_->takeMessages(),
                 QStringList({"警告|设备打开失败！", "警告|設備打開失敗！", "warning|Device opening failed!"}));

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

    void everyStepOfAChannelCanFail()
    {
        const QStringList rates{"设置波特率失败！", "設置波特率失敗！", "Setting baud rate failed!"};
        const QStringList filters{"设置滤波失败！", "設置濾波失敗！", "Setting filtering failed!"};
        const struct {
            QString failing;
            QString call; // the last one that is made
            QStringList texts;
        } steps[] = {
            {"SetCanFdStandard",
             "SetCanFdStandard(7,1,1)",
             {"设置CANFD标准失败！", "設置CANFD標準失敗！", "Failed to set CANFD standard!"}},
            {"SetArbitrationBaud", "SetArbitrationBaud(7,1,13)", rates},
            {"SetDataBaud", "SetDataBaud(7,1,3)", rates},
            {"InitChannel", "InitChannel(7,1)", {"CAN初始化失败！", "CAN初始化失敗！", "CAN Initialization failed!"}},
            {"1/filter_clear", "SetValue(1/filter_clear,0)", filters},
            {"1/filter_mode", "SetValue(1/filter_mode,1)", filters},
            {"1/filter_start", "SetValue(1/filter_start,0x100)", filters},
            {"1/filter_end", "SetValue(1/filter_end,0x18FF00FF)", filters},
            {"1/filter_ack", "SetValue(1/filter_ack,0)", filters},
            {"StartChannel", "StartChannel(102)", {"CAN启动失败！", "CAN啓動失敗！", "CAN start failed!"}},
            {"1/baud_rate_custom",
             "SetValue(1/baud_rate_custom,500K)",
             {"设置自定义波特率失败！", "設置自定義波特率失敗！", "Setting custom baud rate failed!"}},
        };
        OpenDlg dialog(0);
        openTheDevice(dialog);
        QStringList calls; // of the steps so far
        for (const auto &[failing, call, texts] : steps) {
            const bool custom = failing == "1/baud_rate_custom";
            if (custom)
                calls = calls.mid(0, 1); // right after the standard
            calls << call;
            storeChannelParameters(1, {1, 1, 13, 3, custom, "500K", true, "1-100-18FF00FF"});
            fake_->failing = QStringList{failing};
            for (unsigned code = 0; code < LanguageCount; ++code) {
                setLanguageCode(code);
                answerWith("btnConfirm");
                dialog.openCh(1);
                QCOMPARE(fake_->takeCalls(), calls);
                QCOMPARE(answers_->takeMessages(), QStringList{warningTitle() + "|" + texts.at(int(code))});
                QVERIFY(!dialog.channelOpened(1));
                resetChannel(1);
                fake_->takeCalls();
            }
        }
        fake_->failing.clear();
        dialog.initDlg(); // the dialog's timer may have seen a channel between two steps
        answerWith("btnConfirm");
        pressButton(&dialog, "pushButton_4");
        QVERIFY(dialog.channelOpened(1));
    }

    void aFailureOfTheFirstLetsTheSecondBeTried()
    {
        storeChannelParameters(0, {0, 0, 5, 0, false, "", true, "0-1-2"});
        fake_->failing = QStringList{"0/filter_clear"};
        OpenDlg dialog(0);
        openTheDevice(dialog);
        answerWith("btnConfirm");
        dialog.openCh(2); // both
        QVERIFY(!dialog.channelOpened(0) && dialog.channelOpened(1));
        QCOMPARE(fake_->calls().filter("Arbitration"),
                 QStringList({"SetArbitrationBaud(7,0,5)", "SetArbitrationBaud(7,1,5)"}));
        QCOMPARE(answers_->messages().size(), 1);

        fake_->failing.clear();
        fake_->takeCalls();
        answerWith("btnConfirm");
        dialog.openCh(2);
        QCOMPARE(fake_->calls().filter("InitChannel"), QStringList()); // both are initialised
    }

    void nothingOpensWhenCancelledOrWhenTheDeviceIsGone()
    {
        OpenDlg dialog(0);
        openTheDevice(dialog);
        answerWith("btnCancel");
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
    }

    void theUpgradeIsOfferedToAnOldAndToASilentAdapter()
    {
        fake_->info.firmwareVersion = 0x210;
        for (const auto &[status, version] : {std::pair(kStatusPresent, "(V2.10)"), std::pair(0u, "(V0.00)")}) {
            fake_->status = status;
            const QString expected = version;
            answers_->on<UpdateDlg>([expected](UpdateDlg *question) {
                QVERIFY(question->findChild<QLabel *>("label")->text().contains(expected));
                pressButton(question, "pushButton_2");
            });
            OpenDlg dialog(0);
            openTheDevice(dialog);
            closeDevice();
        }
    }
};

QTEST_MAIN(TestOpenDlg)
#include "test_opendlg.moc"
