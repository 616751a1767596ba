#include "app/receiveview.h"
#include "bench/trialscene.h"
#include "device/dialogs/opendlg.h"
#include "device/settingsstore.h"
#include "faultydriver.h"
#include "frames/pendingframes.h"
#include "frames/recvthread.h"
#include "frames/sendthread.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QSpinBox>
#include <QtTest>

#include <atomic>

namespace
{
enum class Trouble { Unplug, Refuse, Late, AbsurdCount, AbsurdLength };

const char *const kAlways = "always";

SimulatorOptions busy()
{
    SimulatorOptions options;
    options.vehicleDelayMs = 0;
    return options;
}

// Every filter, rate and switch that opening a channel can set.
const char *const kSettings = "ch1paramFilterID,0-000-7FF|1-00000000-1FFFFFFF;ch1paramfilterMode,1;ch2paramFilterID,0-"
                              "000-7FF|1-00000000-1FFFFFFF;"
                              "ch2paramfilterMode,1;refreshInterval,20";
} // namespace
Q_DECLARE_METATYPE(Trouble)

class TestFaults : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Scene> scene_;
    std::atomic<const char *> operation_{nullptr}; // the one in trouble; kAlways: every one
    std::atomic<int> callsBefore_{0};              // that still go well
    std::atomic<Trouble> trouble_{Trouble::Refuse};
    std::atomic<bool> met_{false};

    Fault answer(const char *operation)
    {
        const char *wanted = operation_;
        if (!wanted || (wanted != kAlways && qstrcmp(wanted, operation) != 0) || callsBefore_-- > 0)
            return Fault::None;
        met_ = true;
        switch (trouble_) {
        case Trouble::Unplug:
            operation_ = nullptr;
            scene_->adapter->unplug();
            return Fault::None;
        case Trouble::Late:
            QThread::msleep(100);
            return Fault::None;
        case Trouble::Refuse:
            return Fault::Refuse;
        case Trouble::AbsurdCount:
            return Fault::AbsurdCount;
        case Trouble::AbsurdLength:
            return Fault::AbsurdLength;
        }
        return Fault::None;
    }
    CountingDriver *driver() const { return static_cast<CountingDriver *>(scene_->adapter); }
    WindowDriver &user() const { return *scene_->user; }
    // A user without expectations that an earlier failure has left over.
    void newUser()
    {
        scene_->user.reset();
        scene_->user = std::make_unique<WindowDriver>(*scene_->window);
    }
    bool anyThreadRuns() const
    {
        bool runs = false;
        for (const sendThread *thread : scene_->window->findChildren<sendThread *>())
            runs = runs || thread->isRunning();
        for (const recvThread *thread : scene_->window->findChildren<recvThread *>())
            runs = runs || (thread->isRunning() && !isDeviceOpen());
        return runs;
    }
    void sendOnBoth()
    {
        for (const char *panel : {"ch1", "ch2"}) {
            const QByteArray name(panel);
            if (!user().find<QAbstractButton>(name + "SendBtn")->isEnabled())
                continue;
            user().find<QComboBox>(name + "ProtocolCombo")->setCurrentIndex(name == "ch1" ? 0 : 1);
            user().find<QLineEdit>(name + "SendCountEdit")->setText("-1");
            user().find<QLineEdit>(name + "SendInvEdit")->setText("0");
            user().click(name + "SendBtn");
        }
        QTest::qWait(60);
    }
    void stopBoth()
    {
        for (const char *button : {"ch1StopSendBtn", "ch2StopSendBtn"})
            if (user().find<QAbstractButton>(button)->isEnabled())
                user().click(button);
    }
    bool sendersRest() const
    {
        for (const sendThread *thread : scene_->window->findChildren<sendThread *>())
            if (thread->isRunning())
                return false;
        return true;
    }
    void sendFile()
    {
        QByteArray rows = "titles\n";
        for (int i = 0; i < 10; ++i)
            rows += QByteArray("1,=\"10:00:00.00") + QByteArray::number(i) + "\",0x0," + QByteArray::number(i % 2 + 1) +
                    ",Tx,0x100,f,t,1," + (i < 5 ? "CAN" : "CANFD") + ",x| 01 \n";
        scene_->folder.write("send.csv", rows);
        user().trigger("actionFileSend");
        auto *dialog = user().find<QDialog>("fileDlg");
        dialog->findChild<QLineEdit *>("lineEdit")->setText(scene_->folder.path("send.csv"));
        dialog->findChild<QComboBox *>("comboBox")->setCurrentIndex(2);
        dialog->findChild<QSpinBox *>("spinBox")->setValue(2);
        if (dialog->findChild<QAbstractButton *>("pbSend")->isEnabled())
            dialog->findChild<QAbstractButton *>("pbSend")->click();
        QTRY_VERIFY_WITH_TIMEOUT(sendersRest(), 30000);
        dialog->hide();
    }
    void closeChannels()
    {
        newUser();
        user().modal().on<OpenDlg>([](OpenDlg *dialog) {
            dialog->findChild<QAbstractButton *>("pushButton_6")->click();
            dialog->close();
        });
        user().trigger("actionDeviceOperations");
    }
    void comesToRest()
    {
        newUser();
        if (isDeviceOpen())
            user().closeDevice();
        QTRY_VERIFY_WITH_TIMEOUT(!isDeviceOpen() && !anyThreadRuns(), 30000);
        QVERIFY(!isChannelOpen(0) && !isChannelOpen(1));
        scene_->window->findChild<ReceiveView *>()->refresh();
    }

private slots:
    void init()
    {
        operation_ = nullptr;
        met_ = false;
        scene_ = std::make_unique<Scene>(
            std::make_unique<FaultyDriver>(busy(), [this](const char *operation) { return answer(operation); }));
        scene_->folder.write("config/setdb.txt", kSettings);
        settings::load(scene_->folder.settingsPath());
    }
    void cleanup()
    {
        operation_ = nullptr;
        scene_.reset();
        takePendingFrames();
    }

    void everyStep_data()
    {
        QTest::addColumn<Trouble>("trouble");
        QTest::addColumn<QByteArray>("operation");
        QTest::addColumn<int>("callsBefore");
        const std::pair<const char *, Trouble> troubles[] = {{"unplug", Trouble::Unplug}, {"refuse", Trouble::Refuse}};
        for (const auto &[name, trouble] : troubles)
            for (const char *operation :
                 {"OpenDevice", "GetPropertyInterface", "GetDeviceStatus", "GetDeviceInfo", "SetCanFdStandard",
                  "SetArbitrationBaud", "SetDataBaud", "InitChannel", "SetValue", "StartChannel", "ReceiveCan",
                  "ReceiveCanFd", "TransmitCan", "TransmitCanFd", "ResetChannel", "CloseDevice"})
                QTest::addRow("%s %s", name, operation) << trouble << QByteArray(operation) << 0;
        // The second channel, the middle of a filter, the middle of a file.
        for (const char *operation : {"SetCanFdStandard", "InitChannel", "StartChannel"})
            QTest::addRow("unplug second %s", operation) << Trouble::Unplug << QByteArray(operation) << 1;
        QTest::addRow("unplug in a filter") << Trouble::Unplug << QByteArray("SetValue") << 4;
        QTest::addRow("unplug in a run") << Trouble::Unplug << QByteArray("TransmitCan") << 20;
        QTest::addRow("late") << Trouble::Late << QByteArray(kAlways) << 0;
        for (const char *operation : {"ReceiveCan", "ReceiveCanFd", "TransmitCan", "TransmitCanFd"})
            QTest::addRow("absurd count %s", operation) << Trouble::AbsurdCount << QByteArray(operation) << 0;
        for (const char *operation : {"ReceiveCan", "ReceiveCanFd"})
            QTest::addRow("absurd length %s", operation) << Trouble::AbsurdLength << QByteArray(operation) << 0;
    }
    // Opening, sending on both channels, sending a file, closing the channels and the device go on to their end
    // whatever one operation does; the books balance and the next opening works.
    void everyStep()
    {
        QFETCH(Trouble, trouble);
        QFETCH(QByteArray, operation);
        QFETCH(int, callsBefore);
        callsBefore_ = callsBefore;
        trouble_ = trouble;
        operation_ = operation == kAlways ? kAlways : operation.constData();

        user().openEverything();
        QTest::qWait(trouble == Trouble::Late ? 300 : 60);
        sendOnBoth();
        stopBoth();
        QTRY_VERIFY_WITH_TIMEOUT(sendersRest(), 30000);
        sendFile();
        closeChannels();
        comesToRest();
        QVERIFY2(met_, "the operation was never called");

        operation_ = nullptr;
        scene_->adapter->replug();
        newUser();
        if (trouble != Trouble::AbsurdLength) // those frames are not the simulator's
            for (unsigned channel = 0; channel < kChannelCount; ++channel)
                QCOMPARE(user().number(kReceivedLabels[channel]), driver()->received(channel));
        const quint64 before = user().number("ch1RecvCount");
        QVERIFY(user().openEverything());
        QTRY_VERIFY(user().number("ch1RecvCount") > before + 10);
        QCOMPARE(user().modal().unexpected(), QStringList());
    }

    void closedFromTheDialogWhileBothSend()
    {
        for (int round = 0; round < 5; ++round) {
            newUser();
            QVERIFY(user().openEverything());
            sendOnBoth();
            QVERIFY(!sendersRest());
            comesToRest();
            QTRY_VERIFY(!user().find<QWidget>("ch1SendBtn")->isEnabled() &&
                        !user().find<QWidget>("ch2StopSendBtn")->isEnabled());
        }
        for (unsigned channel = 0; channel < kChannelCount; ++channel) {
            QCOMPARE(user().number(kReceivedLabels[channel]), driver()->received(channel));
            QCOMPARE(user().number(kTransmittedLabels[channel]), driver()->transmitted(channel));
        }
    }

    // The second warning comes up while the first one waits for its answer.
    void twoWarningsAtOnce()
    {
        QVERIFY(user().openEverything());
        for (recvThread *receiver : scene_->window->findChildren<recvThread *>())
            QMetaObject::invokeMethod(
                receiver, [receiver] { emit receiver->errorID(0x100, 0x102); }, Qt::QueuedConnection);
        QTRY_COMPARE(user().modal().messages().size(), 2);
        QCOMPARE(user().modal().messages().at(0), user().modal().messages().at(1));
        const quint64 before = user().number("ch1RecvCount");
        QTRY_VERIFY(user().number("ch1RecvCount") > before);
        comesToRest();
    }

    // Whatever part of the file a broken disk has left, the window starts, and opens with what it has.
    void settingsCutAtEveryByte()
    {
        settings::setValue("Language", "CN.qm", false);
        settings::setValue("listCount", "77", true);
        const QByteArray whole = scene_->folder.read("config/setdb.txt");
        QVERIFY(whole.size() > 100);
        QVERIFY(whole.contains("listCount,77"));
        const int valueAt = whole.indexOf("listCount,") + int(qstrlen("listCount,"));
        constexpr int kWindowEvery = 50;
        for (int size = 0; size <= whole.size(); ++size) {
            scene_->folder.write("config/setdb.txt", whole.left(size));
            settings::load(scene_->folder.settingsPath());
            const QString kept = settings::value("listCount", "1000");
            // A key without its comma makes the file one that is damaged.
            const QByteArray lastEntry = whole.left(size).mid(whole.left(size).lastIndexOf(';') + 1);
            const bool damaged = !lastEntry.contains(',');
            QCOMPARE(kept, damaged || size < valueAt ? QString("1000") : whole.mid(valueAt, qMin(2, size - valueAt)));
            if (size % kWindowEvery != 0)
                continue;
            scene_->user.reset();
            scene_->window = nullptr;
            scene_->window = std::make_unique<MainWindow>();
            newUser();
            QVERIFY2(user().openEverything(), qPrintable(QString::number(size)));
            comesToRest();
        }
    }
};

QTEST_MAIN(TestFaults)
#include "test_faults.moc"
