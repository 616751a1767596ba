#include "bench/trialscene.h"
#include "device/language.h"
#include "device/settingsstore.h"
#include "frames/pendingframes.h"
#include "frames/recvthread.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QtTest>

class TestMainWindow : public QObject
{
    Q_OBJECT

private:
    static SimulatorOptions quiet()
    {
        SimulatorOptions options;
        options.traffic = SimulatorOptions::Traffic::Off;
        return options;
    }
    static void restart(Scene &scene)
    {
        scene.window.reset();
        setLanguageCode(SimplifiedChinese);
        scene.window = std::make_unique<MainWindow>();
        scene.user = std::make_unique<WindowDriver>(*scene.window);
        const auto *field = scene.user->find<QLineEdit>("ch2SendIDEdit");
        QVERIFY(QTest::qWaitFor([field] { return !field->text().isEmpty(); })); // the late start
        QTest::qWait(100);                                                      // some rounds
    }
    static bool isStored(const Scene &scene, const char *entry)
    {
        return scene.folder.read("config/setdb.txt").contains(entry);
    }
    static void sendEndlessly(WindowDriver &user, const QByteArray &panel, const char *intervalMs)
    {
        user.find<QLineEdit>(panel + "SendCountEdit")->setText("-1");
        user.find<QLineEdit>(panel + "SendInvEdit")->setText(intervalMs);
        user.click(panel + "SendBtn");
    }

private slots:
    void cleanup() { takePendingFrames(); } // what came after the window's last round

    void startsWhateverTheFilesHold()
    {
        const struct {
            QByteArray settingsLine;
            const char *title; // of the first menu
            bool catalogues;
        } files[] = {
            {"Language,EN.qm", "Device Manage(&O)", true},
            {"Language,CNF.qm;merge,1;recvIDAdd,1", "設備管理(&O)", true},
            {"Language,../x", "设备管理(&O)", true},
            {"Language,EN.qm;merge", "设备管理(&O)", true}, // damaged
            {"listCount,-5;refreshInterval,0;ch1sendLenCombo,99;merge,x;ch1ProtocolCombo,-3", "设备管理(&O)", true},
            {"Language,EN.qm", "设备管理(&O)", false},
        };
        Scene scene(quiet());
        QDir(scene.folder.path("help")).removeRecursively();
        for (const auto &[settingsLine, title, catalogues] : files) {
            scene.folder.write("config/setdb.txt", settingsLine);
            if (!catalogues)
                QDir(scene.folder.path("language")).removeRecursively();
            restart(scene);
            QCOMPARE(scene.user->find<QMenu>("menuDevice")->title(), QString(title));
            QCOMPARE(scene.window->windowTitle(), QString("Ostrel-V1.17"));
            QCOMPARE(scene.user->find<QLineEdit>("ch2SendIDEdit")->text(), QString("00000001"));
            QCOMPARE(scene.folder.read("config/setdb.txt"), settingsLine); // starting writes nothing
        }
    }

    void switchesLanguagesAndKeepsLiveTexts()
    {
        Scene scene(quiet());
        WindowDriver &user = *scene.user;
        appendPendingFrames({ModelItem(), ModelItem()});
        QTRY_COMPARE(user.number("ch1SendCount"), 2u);
        user.trigger("actionEnglish");
        QTRY_COMPARE(user.find<QAbstractButton>("ch1StopSendBtn")->text(), QString("Stop"));
        QCOMPARE(user.find<QAction>("actionListBuffer")->text(), QString("Data List Buffer(1000)(&D)"));
        QCOMPARE(user.number("ch1SendCount"), 2u);
        QVERIFY(scene.folder.read("language/config.ini").contains("Sel=2"));

        QFile::remove(scene.folder.path("language/CNF.qm"));
        user.trigger("actionTraditionalChinese");
        QCoreApplication::processEvents();
        QCOMPARE(languageCode(), unsigned(English));
        QCOMPARE(user.find<QAbstractButton>("ch1StopSendBtn")->text(), QString("Stop"));
        QCOMPARE(user.find<QMenu>("menuHelp")->title(), QString("Help(&H)"));
        QVERIFY(user.find<QAction>("actionEnglish")->isChecked());
        QVERIFY(isStored(scene, "Language,EN.qm"));
        restart(scene); // remembered
        QCOMPARE(languageCode(), unsigned(English));
    }

    // A recorded log arrives frame by frame: every one, in order, on both channels, in every loop.
    void captureHoldsEveryFrameOfARecordedLog()
    {
        constexpr int kFrames = 400;
        const TestFolder traces;
        QByteArray log;
        for (int i = 0; i < kFrames; ++i)
            log += QString::asprintf("(100.%06d) can0 %03X#%02X\n", i * 500, i, i & 0xFF).toUtf8();
        traces.write("trace.log", log);
        SimulatorOptions replay;
        replay.traffic = SimulatorOptions::Traffic::Trace;
        replay.tracePath = traces.path("trace.log").toStdString();

        Scene scene(replay);
        WindowDriver &user = *scene.user;
        user.click("cleanListBtn"); // numbers start at 1
        user.startCapture(scene.folder.path("capture.csv"));
        QVERIFY(user.openEverything());
        QTRY_VERIFY_WITH_TIMEOUT(user.number("ch2RecvCount") > 3 * kFrames, 20000);
        user.stopCapture();
        QVERIFY(user.modal().unexpected().isEmpty());

        const QStringList lines = QString::fromUtf8(scene.folder.read("capture.csv")).remove('\r').split('\n');
        int taken[2] = {0, 0};
        for (int index = 1; index < lines.size() - 1; ++index) {
            const QStringList fields = lines.at(index).split(',');
            QCOMPARE(fields.size(), 11);
            QCOMPARE(fields.at(0).toInt(), index);
            const int channel = fields.at(3).toInt() - 1;
            QVERIFY(channel == 0 || channel == 1);
            const int frame = taken[channel]++ % kFrames;
            QCOMPARE(fields.at(5) + fields.at(10), QString::asprintf("0x%03Xx| %02X ", frame, frame & 0xFF));
        }
        QVERIFY(taken[0] > 3 * kFrames - 100);
        QVERIFY(taken[1] > 3 * kFrames);
        QVERIFY(lines.size() <= int(user.received()) + 2);
    }

    // While channels receive and while one of them sends.
    void unpluggedAdapterIsToldAndComesBack()
    {
        Scene scene{SimulatorOptions()};
        WindowDriver &user = *scene.user;
        for (int round = 1; round <= 2; ++round) {
            QVERIFY(user.openEverything());
            for (const char *line : {"通道1打开成功！", "通道2打开成功！", "并非来自Halden-D2"})
                QCOMPARE(user.log().count(line), round);
            const quint64 before = user.number("ch1RecvCount");
            QTRY_VERIFY(user.number("ch1RecvCount") > before + 10);
            QTRY_VERIFY(scene.window->windowTitle().startsWith("Ostrel-V1.17 - SN:"));
            if (round == 2)
                sendEndlessly(user, "ch1", "10");
            QTRY_VERIFY(round == 1 || user.number("ch1SendCount") > 3);

            scene.adapter->unplug();
            QTRY_COMPARE(user.log().count("设备已关闭！"), round);
            QTRY_COMPARE(user.log().contains("通道1CAN数据发送失败！"), round == 2);
            QCOMPARE(scene.window->windowTitle(), QString("Ostrel-V1.17"));
            for (const char *button : {"ch1SendBtn", "ch2SendBtn", "ch1StopSendBtn"})
                QVERIFY2(!user.find<QWidget>(button)->isEnabled(), button);
            QVERIFY(!isDeviceOpen());
            for (const recvThread *thread : scene.window->findChildren<recvThread *>())
                QVERIFY(!thread->isRunning());
            scene.adapter->replug();
        }
        QVERIFY(user.openEverything());
        QTRY_VERIFY(scene.window->windowTitle().contains("SN:"));
        user.closeDevice();
        QCOMPARE(user.log().count("设备已关闭！"), 3);
        QCOMPARE(scene.window->windowTitle(), QString("Ostrel-V1.17"));
    }

    // The window's end does not wait for a sleeping sender, and leaves nothing open.
    void closesAtOnceDuringALongInterval()
    {
        Scene scene{SimulatorOptions()};
        WindowDriver &user = *scene.user;
        QVERIFY(user.openEverything());
        sendEndlessly(user, "ch1", "3600000");
        sendEndlessly(user, "ch2", "3600000");
        QTRY_COMPARE(user.number("ch1SendCount") + user.number("ch2SendCount"), 2u);
        QElapsedTimer timer;
        timer.start();
        scene.window.reset();
        QVERIFY2(timer.elapsed() < 5000, "an hour's sleep was waited for");
        QVERIFY(!isDeviceOpen());
        QVERIFY(!isChannelOpen(0));
    }

    // The watch asks nothing while a sender runs, although it goes on showing rates.
    void watchIsSilentWhileSending()
    {
        Scene scene(quiet());
        WindowDriver &user = *scene.user;
        QVERIFY(user.openEverything());
        sendEndlessly(user, "ch1", "3600000");
        QTRY_COMPARE(user.find<QLabel>("ch1SendRate")->text(), QString("1/s;"));
        scene.adapter->unplug();
        for (int round = 0; round < 2; ++round) {
            appendPendingFrames({ModelItem(), ModelItem(), ModelItem()});
            QTRY_COMPARE(user.find<QLabel>("ch1SendRate")->text(), QString("3/s;"));
            QTRY_COMPARE(user.find<QLabel>("ch1SendRate")->text(), QString("0/s;"));
        }
        QVERIFY(isDeviceOpen());
        user.click("ch1StopSendBtn");
        QTRY_VERIFY(!isDeviceOpen());
    }

    void entriesLeadWhereTheySay()
    {
        Scene scene(quiet());
        WindowDriver &user = *scene.user;
        const auto leadsTo = [&user](const char *action) {
            QStringList shown;
            user.modal().onDialog([&shown](QDialog *dialog) {
                const auto *mode = dialog->findChild<QComboBox *>("workStatusCombo");
                shown << dialog->metaObject()->className() + QString(mode && mode->isEnabled() ? " editable" : "");
                dialog->reject();
            });
            user.trigger(action);
            user.modal().dropSteps();
            for (QWidget *window : QApplication::topLevelWidgets())
                if (window->isVisible() && (window->inherits("fileDlg") || window->inherits("listSendDlg"))) {
                    shown << window->metaObject()->className();
                    window->close();
                }
            return (shown + user.modal().takeMessages()).join(' ');
        };
        QVERIFY(leadsTo("actionCanSetting").startsWith("提示|"));
        QVERIFY(leadsTo("actionDeviceInfo").startsWith("警告|"));
        QVERIFY(leadsTo("actionFirmwareUpgrade").startsWith("警告|"));
        QVERIFY(user.openEverything());
        const char *const entries[][2] = {
            {"actionDeviceOperations", "OpenDlg"},      {"actionFirmwareUpgrade", "UpdateDlg"},
            {"actionListSend", "listSendDlg"},          {"actionCanSetting", "ParaDialog editable"},
            {"actionViewParameters", "ParaDialog"},     {"actionDeviceInfo", "INfDialog"},
            {"actionAbout", "关于Ostrel|Ostrel-V1.17"}, {"actionFileSend", "fileDlg"}};
        scene.folder.write("firmware/x-V9.99-20260101.bin", "newer");
        for (const auto &[action, shown] : entries)
            QCOMPARE(leadsTo(action).section('\n', 0, 0), QString(shown));
        user.trigger("actionClearLog");
        QVERIFY(user.log().isEmpty());
        user.startCapture(scene.folder.path("missing/x.csv"));
        QVERIFY(user.log().contains("实时保存的文件无法打开"));
    }

    void optionsAreStoredAtOnce()
    {
        Scene scene(quiet());
        WindowDriver &user = *scene.user;
        for (const char *action : {"actionHexTimeStamp", "actionMergeSameId", "actionCheckRecvId"})
            user.trigger(action);
        for (const char *entry : {"timeHex,0", "merge,1", "recvIDAdd,1"})
            QVERIFY2(isStored(scene, entry), entry);

        // One gap: the check is off again, and says so in the language of the moment.
        user.trigger("actionEnglish");
        auto *receiver = scene.window->findChildren<recvThread *>().constFirst();
        emit receiver->errorID(0x7FE, 0xAB);
        QCOMPARE(user.modal().takeMessages(), QStringList{"warning|ID error:last ID:7fe,current ID:ab"});
        QVERIFY(!user.find<QAction>("actionCheckRecvId")->isChecked());
        QVERIFY(isStored(scene, "recvIDAdd,0"));
        user.trigger("actionTraditionalChinese");
        emit receiver->errorID(1, 3);
        QCOMPARE(user.modal().takeMessages(), QStringList{"提示|ID 不連續:上一幀ID:1,當前ID:3"});
    }

    void tuningValuesAreEnteredAndShown()
    {
        Scene scene(quiet());
        WindowDriver &user = *scene.user;
        const auto enter = [&user](const char *action, const char *text) {
            user.modal().onDialog([text](QDialog *dialog) {
                dialog->findChild<QLineEdit *>("valueEdit")->setText(text);
                dialog->findChild<QAbstractButton *>("btnValueOK")->click();
                dialog->close();
            });
            user.trigger(action);
            return user.find<QAction>(action)->text();
        };
        QCOMPARE(enter("actionScanTime", "20"), QString("接收扫描时间(20ms)(&S)"));
        QCOMPARE(enter("actionFramesPerReceive", "77"), QString("每次接收帧数(77)(&F)"));
        QCOMPARE(enter("actionListBuffer", "3"), QString("列表缓存帧数(3)(&D)"));
        QCOMPARE(enter("actionListBuffer", "0"), QString("列表缓存帧数(3)(&D)")); // refused
        QVERIFY(isStored(scene, "listCount,3"));

        appendPendingFrames(QVector<ModelItem>(10).toList());
        QTRY_COMPARE(user.number("ch1SendCount"), 10u);
        QCOMPARE(user.rows(), 3);
    }

    void storedValuesHoldFromTheStart()
    {
        Scene scene(quiet());
        const auto intervals = [&scene] {
            QList<int> all;
            for (const QTimer *timer : scene.window->findChildren<QTimer *>())
                all << timer->interval();
            return all;
        };
        const struct {
            const char *line;
            const char *limit;
            int rows; // of two frames of one identifier
            int interval;
        } files[] = {{"listCount,1000001;merge,1;refreshInterval,77", "(1000000)", 1, 77},
                     {"listCount,5000000000;merge,2;refreshInterval,9", "(1000000)", 2, 100},
                     {"listCount,1;merge,0;refreshInterval,10000", "(1)", 1, 10000},
                     {"listCount,0;refreshInterval,10001", "(1000)", 2, 100}};
        for (const auto &[line, limit, rows, interval] : files) {
            scene.folder.write("config/setdb.txt", line);
            restart(scene);
            WindowDriver &user = *scene.user;
            QVERIFY(user.find<QAction>("actionListBuffer")->text().contains(limit));
            QCOMPARE(user.find<QAction>("actionMergeSameId")->isChecked(), QByteArray(line).contains("merge,1"));
            QVERIFY2(intervals().contains(interval), line);
            settings::setValue("refreshInterval", "20", false); // from the next round on
            if (interval == 10000)
                continue;
            appendPendingFrames({ModelItem(), ModelItem()});
            QTRY_COMPARE(user.rows(), rows);
            QTRY_VERIFY(intervals().contains(20));
        }
    }
};

QTEST_MAIN(TestMainWindow)
#include "test_mainwindow.moc"
