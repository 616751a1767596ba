#include "device/channelparameters.h"
#include "device/devicelayer.h"
#include "device/dialogs/applyparameters.h"
#include "device/dialogs/filterdialog.h"
#include "device/dialogs/paradialog.h"
#include "device/dialogs/valuedialog.h"
#include "device/settingsstore.h"
#include "fakedriver.h"
#include "modalhelper.h"
#include "testfolder.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

class TestParaDialog : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestFolder> folder_;
    FakeDriver *fake_ = nullptr;
    std::unique_ptr<ModalAnswer> answers_;

    static QComboBox *combo(const QWidget &dialog, const char *name)
    {
        return dialog.findChild<QComboBox *>(QLatin1String(name));
    }
    // What opening the channel would set: work status, standard, rates, custom rate, filter.
    static QString stored(unsigned channel)
    {
        const ChannelParameters p = loadChannelParameters(channel);
        return QString("%1 %2 %3 %4 ").arg(p.workStatus).arg(p.canFdStandard).arg(p.arbitration).arg(p.data) +
               QString("%1:%2 %3:%4").arg(p.customBaudRate).arg(p.customBaudRateText).arg(p.filterOn).arg(p.filterRows);
    }
    // The user answers the next parameter dialog with this button.
    void answerWith(const char *button)
    {
        answers_->on<ParaDialog>([button](ParaDialog *dialog) { pressButton(dialog, button); });
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

    void confirmingAFreshStoreWritesTheChannelsKeys()
    {
        const QString defaults = "ch%1paramABIT1,0;ch%1paramABIT2,0;ch%1paramCustomBaudrate,;ch%1paramFilterID,;"
                                 "ch%1paramcanFDStandard,0;ch%1paramfilterMode,0;ch%1paramisCustomBaudrate,0;"
                                 "ch%1paramworkStatus,0";
        for (int selector : {1, int(ParaDialog::BothChannels)}) {
            folder_->useSettings("");
            ParaDialog dialog(true, false, selector);
            pressButton(&dialog, "btnConfirm");
            QCOMPARE(dialog.result(), int(QDialog::Accepted));
            QCOMPARE(QString::fromUtf8(folder_->read("config/setdb.txt")),
                     selector == 1 ? defaults.arg(2) : defaults.arg(1) + ";" + defaults.arg(2));
        }
    }

    void valuesTravelBetweenStoreAndForm()
    {
        storeChannelParameters(0, {1, 1, 14, 8, true, "500K", true, "0-1-2"});
        storeChannelParameters(1, {0, 1, 99, 3, false, "", false, ""});
        settings::setValue("ch2paramworkStatus", "often", false); // no number
        for (const char *button : {"btnCancel", "btnConfirm"}) {
            QCOMPARE(stored(0), QString("1 1 14 8 1:500K 1:0-1-2"));
            QCOMPARE(stored(1), QString("0 1 99 3 0: 0:"));
            ParaDialog dialog(true, false, ParaDialog::BothChannels);
            QCOMPARE(combo(dialog, "ABIT1Combo")->currentText(), QString("666.66kbps(80%)"));
            QVERIFY(dialog.findChild<QCheckBox *>("CustomBaudrateCheckBox")->isHidden());
            QVERIFY(combo(dialog, "chCombo")->isHidden());
            combo(dialog, "ABIT2Combo")->setCurrentIndex(2);
            pressButton(&dialog, button);
        }
        QCOMPARE(stored(0), QString("1 1 14 2 1:500K 1:0-1-2"));
        QCOMPARE(stored(1), stored(0));

        storeChannelParameters(1, {0, 0, 99, 3, false, "", false, ""});
        ParaDialog either(true, true, ParaDialog::BothChannels);
        combo(either, "chCombo")->setCurrentIndex(1);
        QCOMPARE(combo(either, "ABIT1Combo")->currentIndex(), 0); // an index the list does not have
        QCOMPARE(combo(either, "ABIT2Combo")->currentText(), QString("1Mbps(80%)"));
        pressButton(&either, "btnSave");
        QCOMPARE(stored(1), QString("0 0 0 3 0: 0:"));
        QCOMPARE(stored(0), QString("1 1 14 2 1:500K 1:0-1-2"));
    }

    // The driver knows these by their place.
    void orderOfTheLists()
    {
        const QMap<const char *, QString> lists{
            {"ABIT1Combo", "1M 800k 500k 400k 250k 200k 125k 100k 80k 50k 40k 20k 10k 5k 666.66k 83.33k 66.66k 33.33k"},
            {"ABIT2Combo", "5M 4M 2M 1M 800k 500k 250k 125k 100k"},
            {"canFDStandardCombo", "CANFD ISO CANFD BOSCH"},
            {"workStatusCombo", "正常 只听"},
            {"chCombo", "通道1 通道2"}};
        const ParaDialog dialog(true, true, ParaDialog::BothChannels);
        for (auto list = lists.begin(); list != lists.end(); ++list) {
            QStringList texts;
            for (int item = 0; item < combo(dialog, list.key())->count(); ++item) {
                const QString text = combo(dialog, list.key())->itemText(item);
                const QString point = text == "5Mbps(75%)" ? "bps(75%)" : "bps(80%)";
                texts << (text.endsWith(point) ? text.chopped(point.size()) : text);
            }
            QCOMPARE(texts.join(' '), list.value());
        }
    }

    void onlyTheFilterIsOpenInAView()
    {
        storeChannelParameters(0, {0, 1, 99, 3, true, "K", false, "0-1-2"});
        settings::setValue("ch1paramworkStatus", "often", false);
        QByteArray expected = folder_->read("config/setdb.txt").replace("workStatus,0", "workStatus,often");
        for (const char *button : {"btnSave", "btnConfirm"}) {
            ParaDialog view(false, true, ParaDialog::BothChannels);
            if (qstrcmp(button, "btnConfirm") == 0) {
                answers_->on<FilterDialog>([](FilterDialog *filter) {
                    pressButton(filter, "btnAdd");
                    pressButton(filter, "btnConfirm");
                });
                view.findChild<QCheckBox *>("filterModeCheck")->click();
                expected.replace("filterMode,0", "filterMode,1").replace("0-1-2", "0-1-2|0-0-0");
            }
            pressButton(&view, button);
            QCOMPARE(folder_->read("config/setdb.txt"), expected);
        }
        ParaDialog view(false, true, ParaDialog::BothChannels);
        QVERIFY(combo(view, "chCombo")->isEnabled());
        for (const char *name : {"workStatusCombo", "canFDStandardCombo", "ABIT1Combo", "ABIT2Combo"})
            QVERIFY2(!combo(view, name)->isEnabled(), name);
        QVERIFY(view.findChild<QWidget *>("filterModeCheck")->isEnabled());
        const ParaDialog second(true, true, 1);
        QVERIFY(!combo(second, "chCombo")->isEnabled());
    }

    void theFiltersEditorIsOpenedByTickingAndByItsButton()
    {
        storeChannelParameters(1, {0, 0, 0, 0, false, "", false, "0-5-6"});
        ParaDialog dialog(true, false, 1);
        auto *box = dialog.findChild<QCheckBox *>("filterModeCheck");
        for (const char *button : {"btnConfirm", "btnCancel"}) {
            answers_->on<FilterDialog>([button](FilterDialog *filter) {
                QCOMPARE(filter->windowTitle(), QString("通道2滤波设置"));
                pressButton(filter, "btnAdd");
                pressButton(filter, button);
            });
            if (qstrcmp(button, "btnConfirm") == 0) {
                box->click();
                box->click(); // off: no editor
                QVERIFY(!dialog.findChild<QWidget *>("filterEditBtn")->isEnabled());
                box->setChecked(true);
            } else {
                pressButton(&dialog, "filterEditBtn");
            }
        }
        QCOMPARE(stored(1), QString("0 0 0 0 0: 0:0-5-6"));
        pressButton(&dialog, "btnSave");
        QCOMPARE(stored(1), QString("0 0 0 0 0: 1:0-5-6|0-0-0"));
    }

    void applyingNeedsAnOpenChannelAndAYes()
    {
        const auto log = [](const QString &) { QFAIL("nothing is to be applied"); };
        applyParameters(nullptr, log);
        QCOMPARE(answers_->messages(), QStringList{"提示|设备未打开！"});
        QVERIFY(openDevice(kDeviceType, 0, 0));
        QVERIFY(initChannel(0, 0));
        fake_->takeCalls();
        answerWith("btnCancel");
        applyParameters(nullptr, log);
        QCOMPARE(fake_->calls(), QStringList());
    }

    void applying()
    {
        const QStringList first{"SetCanFdStandard(7,0,0)", "SetArbitrationBaud(7,0,0)", "SetDataBaud(7,0,0)"};
        const QStringList both =
            first + QStringList{"SetCanFdStandard(7,1,1)", "SetArbitrationBaud(7,1,2)", "SetDataBaud(7,1,3)"};
        const QStringList clear = both + QStringList{"SetValue(1/filter_clear,0)"};
        const QStringList range{"SetValue(1/filter_mode,1)", "SetValue(1/filter_start,0x1)",
                                "SetValue(1/filter_end,0xF)", "SetValue(1/filter_ack,0)"};
        const struct {
            const char *settings; // of channel 2, besides its rates; channel 1 has the defaults
            QList<int> open;
            const char *failing;
            QStringList calls;
            int channelsSet;
            QString message;
        } cases[] = {
            {"off", {0, 1}, "", both, 2, ""},
            {"off", {1}, "", {}, 0, ""}, // up to the first closed channel
            {"off", {0}, "", first, 1, ""},
            {"1-1-F", {0, 1}, "", clear + range, 2, ""},
            {"", {0, 1}, "", clear + range.mid(3), 2, ""},
            {"off", {0, 1}, "SetDataBaud", first, 0, "警告|设置波特率失败！"},
            {"1-1-F", {0, 1}, "1/filter_clear", clear, 1, "警告|设置滤波失败！"},
        };
        for (const auto &[settings, open, failing, calls, channelsSet, message] : cases) {
            QVERIFY(openDevice(kDeviceType, 0, 0));
            for (int channel : open)
                QVERIFY(initChannel(unsigned(channel), 0));
            storeChannelParameters(1, {0, 1, 2, 3, false, "K", qstrcmp(settings, "off") != 0, settings});
            fake_->failing = QStringList{failing};
            fake_->takeCalls();
            answerWith("btnConfirm");
            QString log;
            applyParameters(nullptr, [&log](const QString &line) { log += line; });
            QCOMPARE(fake_->takeCalls(), calls);
            QCOMPARE(answers_->takeMessages().join(' '), message);
            QCOMPARE(log, QString("设备参数设置成功！").repeated(channelsSet));
            closeDevice();
        }
    }

    void aValueIsOneNumberWithinItsLimits()
    {
        for (const char *typed : {"1", "5000", "", "0", "5001", "-5", "x", "1,000", "1.5", "0x10", "99999999999"}) {
            const bool taken = qstrcmp(typed, "1") == 0 || qstrcmp(typed, "5000") == 0;
            valueDialog dialog;
            QSignalSpy values(&dialog, &valueDialog::getValue);
            dialog.setEntry(2, "Frames", 1, 5000, 20);
            dialog.show();
            auto *edit = dialog.findChild<QLineEdit *>("valueEdit");
            QCOMPARE(edit->text(), QString("20"));
            edit->setText(typed);
            dialog.findChild<QPushButton *>("btnValueOK")->click();
            QVERIFY2(dialog.isVisible() != taken, typed);
            pressButton(&dialog, "btnValueCancel");
            QVERIFY(!dialog.isVisible());
            QCOMPARE(values.size(), taken ? 1 : 0);
            QCOMPARE(values.value(0).value(0).toString(), taken ? typed : "");
        }
    }
};

QTEST_MAIN(TestParaDialog)
#include "test_paradialog.moc"
