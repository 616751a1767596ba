#include "app/mainwindow.h"
#include "device/devicelayer.h"
#include "device/driver/simulated/simulateddriver.h"
#include "device/language.h"
#include "device/settingsstore.h"
#include "dialogs/dialogscaler.h"
#include "fakedriver.h"
#include "frames/pendingframes.h"
#include "frames/recvthread.h"
#include "frames/sendthread.h"
#include "testfolder.h"
#include "windowdriver.h"

#include <QAbstractButton>
#include <QAction>
#include <QDir>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMenu>
#include <QTableView>
#include <QThread>
#include <QtTest>

class TestMainWindow : public QObject
{
    Q_OBJECT

private:
    // Everything a case needs, made anew for each.
    struct Scene {
        TestFolder folder;
        SimulatedDriver *adapter = nullptr;
        std::unique_ptr<MainWindow> window;
        std::unique_ptr<WindowDriver> user;

        explicit Scene(const SimulatorOptions &options = SimulatorOptions(), const QByteArray &settingsLine = {})
        {
            folder.copyCatalogues();
            if (!settingsLine.isEmpty())
                folder.write("config/setdb.txt", settingsLine);
            auto driver = std::make_unique<SimulatedDriver>(options);
            adapter = driver.get();
            setDriver(std::move(driver));
            show();
        }
        void show()
        {
            window = std::make_unique<MainWindow>();
            window->show();
            user = std::make_unique<WindowDriver>(*window);
            QTest::qWait(50); // the late start
        }
        ~Scene()
        {
            window.reset();
            setDriver(nullptr);
            takePendingFrames(); // what came after the window's last round
        }
    };

    static SimulatorOptions quiet()
    {
        SimulatorOptions options;
        options.traffic = SimulatorOptions::Traffic::Off;
        return options;
    }

    static QString menuTitle(const Scene &scene, const char *name)
    {
        return scene.window->findChild<QMenu *>(QLatin1String(name))->title();
    }

private slots:
    void startsWhateverTheFilesHold_data()
    {
        QTest::addColumn<QByteArray>("settingsLine");
        QTest::addColumn<bool>("catalogues");
        QTest::addColumn<QString>("title"); // of the first menu
        QTest::newRow("nothing") << QByteArray() << true << "设备管理(&O)";
        QTest::newRow("english") << QByteArray("Language,EN.qm") << true << "Device Manage(&O)";
        QTest::newRow("traditional") << QByteArray("Language,CNF.qm;merge,1;recvIDAdd,1") << true << "設備管理(&O)";
        QTest::newRow("english, no catalogue") << QByteArray("Language,EN.qm") << false << "设备管理(&O)";
        QTest::newRow("unknown catalogue") << QByteArray("Language,../x") << true << "设备管理(&O)";
        QTest::newRow("damaged settings") << QByteArray("Language,EN.qm;merge") << true << "设备管理(&O)";
        QTest::newRow("absurd values")
            << QByteArray("listCount,-5;refreshInterval,0;ch1sendLenCombo,99;merge,x;ch1ProtocolCombo,-3") << true
            << "设备管理(&O)";
    }
    void startsWhateverTheFilesHold()
    {
        QFETCH(QByteArray, settingsLine);
        QFETCH(bool, catalogues);
        QFETCH(QString, title);
        Scene scene(quiet(), settingsLine);
        if (!catalogues) {
            scene.window.reset();
            QDir(scene.folder.path("language")).removeRecursively();
            setLanguageCode(SimplifiedChinese);
            scene.show();
        }
        QDir(scene.folder.path("help")).removeRecursively();
        QCOMPARE(menuTitle(scene, "menuDevice"), title);
        QCOMPARE(scene.window->windowTitle(), QString("Ostrel-V1.17"));
        QTest::qWait(250); // some rounds
        QCOMPARE(scene.user->rows(), 0);
        if (!settingsLine.isEmpty())
            QCOMPARE(scene.folder.read("config/setdb.txt"), settingsLine); // starting writes nothing
    }

    void switchesLanguagesAndKeepsLiveTexts()
    {
        Scene scene(quiet());
        WindowDriver &user = *scene.user;
        appendPendingFrames({ModelItem(), ModelItem()});
        QTRY_COMPARE(user.number("ch1SendCount"), 2u);
        user.find<QLineEdit>("ch2SendIDEdit")->setText("55");
        user.trigger("actionEnglish");
        QTRY_COMPARE(user.find<QAbstractButton>("ch1StopSendBtn")->text(), QString("Stop"));
        QCOMPARE(menuTitle(scene, "menuSend"), QString("Multiple Transmiter(&T)"));
        QVERIFY(user.find<QAction>("actionListBuffer")->text().startsWith("Data List Buffer(1000)"));
        QCOMPARE(user.find<QTableView>("tableView")->model()->headerData(1, Qt::Horizontal).toString(),
                 QString("system time"));
        QCOMPARE(user.number("ch1SendCount"), 2u);
        QCOMPARE(user.find<QLineEdit>("ch2SendIDEdit")->text(), QString("55"));
        QVERIFY(scene.folder.read("config/setdb.txt").contains("Language,EN.qm"));
        QVERIFY(scene.folder.read("language/config.ini").contains("Sel=2"));

        QFile::remove(scene.folder.path("language/CNF.qm"));
        user.trigger("actionTraditionalChinese");
        QCOMPARE(languageCode(), unsigned(English));
        QVERIFY(user.find<QAction>("actionEnglish")->isChecked());
        QVERIFY(scene.folder.read("config/setdb.txt").contains("Language,EN.qm"));

        scene.window.reset(); // remembered
        setLanguageCode(SimplifiedChinese);
        scene.show();
        QCOMPARE(languageCode(), unsigned(English));
    }

    // A recorded log arrives frame by frame: every one, in order, on both channels, in every loop.
    void captureHoldsEveryFrameOfARecordedLog()
    {
        constexpr int kFrames = 400;
        QByteArray log;
        QList<QStringList> expected; // identifier, format, type, length, data
        for (int i = 0; i < kFrames; ++i) {
            const bool extended = i % 3 == 1;
            const bool remote = i % 7 == 3;
            const QString id =
                QString::number(extended ? 0x10000 + i : i, 16).rightJustified(extended ? 8 : 3, '0').toUpper();
            const int length = remote ? 0 : i % 9;
            QString data;
            QString dataText = "x| ";
            for (int b = 0; b < length; ++b) {
                const QString byte = QString::number((i + b) & 0xFF, 16).rightJustified(2, '0').toUpper();
                data += byte;
                dataText += byte + ' ';
            }
            log += QString::asprintf("(100.%06d) can0 ", i * 500).toUtf8() + id.toUtf8() + '#' +
                   (remote ? QByteArray("R") : data.toUtf8()) + '\n';
            expected << QStringList{"0x" + id, extended ? "扩展帧" : "标准帧", remote ? "远程帧" : "数据帧",
                                    QString::number(length), dataText};
        }
        SimulatorOptions options;
        options.traffic = SimulatorOptions::Traffic::Trace;
        QTemporaryDir folder;
        options.tracePath = folder.filePath("trace.log").toStdString();
        QFile trace(folder.filePath("trace.log"));
        QVERIFY(trace.open(QIODevice::WriteOnly));
        trace.write(log);
        trace.close();

        Scene scene(options);
        WindowDriver &user = *scene.user;
        const QString path = scene.folder.path("capture.csv");
        user.click("cleanListBtn"); // numbers start at 1
        user.startCapture(path);
        QVERIFY(user.openEverything());
        QTRY_VERIFY_WITH_TIMEOUT(user.number("ch2RecvCount") > 3 * kFrames, 20000);
        user.stopCapture();
        QVERIFY(user.modal().unexpected().isEmpty());

        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly | QIODevice::Text));
        QByteArray content = file.readAll();
        QVERIFY(content.startsWith("\xEF\xBB\xBF"
                                   "序号,系统时间,"));
        const QList<QByteArray> lines = content.split('\n');
        int taken[2] = {0, 0};
        int index = 0;
        for (const QByteArray &line : lines.mid(1, lines.size() - 2)) {
            const QStringList fields = QString::fromUtf8(line).split(',');
            QCOMPARE(fields.size(), 11);
            QCOMPARE(fields.at(0).toInt(), ++index);
            const int channel = fields.at(3).toInt() - 1;
            QVERIFY(channel == 0 || channel == 1);
            const QStringList frame{fields.at(5), fields.at(6), fields.at(7), fields.at(8), fields.at(10)};
            QCOMPARE(frame, expected.at(taken[channel]++ % kFrames));
        }
        QVERIFY(taken[0] > 3 * kFrames - 100);
        QVERIFY(taken[1] > 3 * kFrames);
        QVERIFY(quint64(index) <= user.number("ch1RecvCount") + user.number("ch2RecvCount"));
    }

    // The adapter lets through what its ranges say and nothing else, counted against what the vehicle sent.
    void acceptanceFilterCutsTheVehiclesTraffic()
    {
        const auto inRanges = [](std::uint32_t word) {
            const std::uint32_t id = word & kIdMask;
            return (word & kIdExtendedFlag) ? id >= 0x18FF0000 && id <= 0x18FF00FF : id >= 0x100 && id <= 0x1FF;
        };
        constexpr quint64 kLastMoment = 20;
        Scene scene(SimulatorOptions(), "ch1paramFilterID,0-100-1FF|1-18FF0000-18FF00FF;ch1paramfilterMode,1");
        WindowDriver &user = *scene.user;
        const auto countUntilClosed = [&](const std::function<bool(std::uint32_t)> &passes, quint64 *received) {
            const FrameCounts before = scene.adapter->vehicleCounts();
            user.click("pushButton"); // counters to 0
            // The parameters as they are stored: confirming stores both channels alike.
            QVERIFY(user.openEverything());
            QTest::qWait(1500);
            scene.adapter->unplug();
            QTRY_VERIFY(!isDeviceOpen());
            QTest::qWait(200);
            quint64 expected = 0;
            for (const auto &[word, count] : scene.adapter->vehicleCounts())
                if (passes(word))
                    expected += count - (before.count(word) ? before.at(word) : 0);
            // Frames that the adapter had not handed over when it was pulled are gone with it.
            for (const char *label : kReceivedLabels)
                QVERIFY2(user.number(label) <= expected && user.number(label) + kLastMoment > expected,
                         qPrintable(QString("%1 of %2").arg(user.number(label)).arg(expected)));
            *received = expected;
            scene.adapter->replug();
        };
        quint64 filtered = 0;
        countUntilClosed(inRanges, &filtered);
        QVERIFY(filtered > 50);
        settings::setValue("ch1paramfilterMode", "0", true);
        quint64 all = 0;
        countUntilClosed([](std::uint32_t) { return true; }, &all);
        QVERIFY(all > 2 * filtered);
    }

    void unpluggedAdapterIsToldAndComesBack()
    {
        Scene scene;
        WindowDriver &user = *scene.user;
        for (int round = 1; round <= 2; ++round) {
            QVERIFY(user.openEverything());
            QVERIFY(user.log().contains("通道1打开成功！"));
            QVERIFY(user.log().contains("通道2打开成功！"));
            QVERIFY(user.log().contains("并非来自Halden-D2"));
            const quint64 before = user.number("ch1RecvCount");
            QTRY_VERIFY(user.number("ch1RecvCount") > before + 10);
            QTRY_VERIFY(scene.window->windowTitle().startsWith("Ostrel-V1.17 - SN:"));
            QVERIFY(user.find<QWidget>("ch1SendBtn")->isEnabled());

            scene.adapter->unplug();
            QTRY_COMPARE(user.log().count("设备已关闭！"), round);
            QCOMPARE(scene.window->windowTitle(), QString("Ostrel-V1.17"));
            QVERIFY(!user.find<QWidget>("ch1SendBtn")->isEnabled());
            QVERIFY(!user.find<QWidget>("ch2SendBtn")->isEnabled());
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
        Scene scene;
        WindowDriver &user = *scene.user;
        QVERIFY(user.openEverything());
        for (const char *panel : {"ch1", "ch2"}) {
            user.find<QLineEdit>(QByteArray(panel).append("SendCountEdit"))->setText("-1");
            user.find<QLineEdit>(QByteArray(panel).append("SendInvEdit"))->setText("3600000");
            user.click(QByteArray(panel).append("SendBtn"));
        }
        QTRY_COMPARE(user.number("ch1SendCount") + user.number("ch2SendCount"), 2u);
        QElapsedTimer timer;
        timer.start();
        scene.user.reset();
        scene.window.reset();
        QVERIFY2(timer.elapsed() < 5000, "an hour's sleep was waited for");
        QVERIFY(!isDeviceOpen());
        QVERIFY(!isChannelOpen(0));
    }

    void unplugEndsARunThatSleeps()
    {
        Scene scene;
        WindowDriver &user = *scene.user;
        QVERIFY(user.openEverything());
        user.find<QLineEdit>("ch1SendCountEdit")->setText("-1");
        user.click("ch1SendBtn");
        QTRY_VERIFY(user.number("ch1SendCount") > 3);
        scene.adapter->unplug();
        QTRY_VERIFY(user.log().contains("通道1CAN数据发送失败！"));
        QTRY_VERIFY(user.log().contains("设备已关闭！"));
        QVERIFY(!user.find<QWidget>("ch1SendBtn")->isEnabled());
        QVERIFY(!user.find<QWidget>("ch1StopSendBtn")->isEnabled());
    }

    void optionsAreStoredAtOnce()
    {
        Scene scene(quiet());
        WindowDriver &user = *scene.user;
        QVERIFY(user.find<QAction>("actionHexTimeStamp")->isChecked());
        user.trigger("actionHexTimeStamp");
        user.trigger("actionMergeSameId");
        user.trigger("actionCheckRecvId");
        QByteArray file = scene.folder.read("config/setdb.txt");
        for (const char *entry : {"timeHex,0", "merge,1", "recvIDAdd,1"})
            QVERIFY2(file.contains(entry), entry);

        // One gap: the check is off again, and says so in the language of the moment.
        user.trigger("actionEnglish");
        auto *receiver = scene.window->findChildren<recvThread *>().constFirst();
        emit receiver->errorID(0x7FE, 0xAB);
        QCOMPARE(user.modal().takeMessages(), QStringList{"warning|ID error:last ID:7fe,current ID:ab"});
        QVERIFY(!user.find<QAction>("actionCheckRecvId")->isChecked());
        QVERIFY(scene.folder.read("config/setdb.txt").contains("recvIDAdd,0"));
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
        };
        enter("actionScanTime", "20");
        enter("actionFramesPerReceive", "77");
        enter("actionListBuffer", "3");
        QCOMPARE(user.find<QAction>("actionScanTime")->text(), QString("接收扫描时间(20ms)(&S)"));
        QCOMPARE(user.find<QAction>("actionFramesPerReceive")->text(), QString("每次接收帧数(77)(&F)"));
        QCOMPARE(user.find<QAction>("actionListBuffer")->text(), QString("列表缓存帧数(3)(&D)"));
        QVERIFY(scene.folder.read("config/setdb.txt").contains("listCount,3"));
        enter("actionListBuffer", "0"); // refused
        QVERIFY(scene.folder.read("config/setdb.txt").contains("listCount,3"));

        QList<ModelItem> batch;
        for (int i = 0; i < 10; ++i)
            batch.append(ModelItem());
        appendPendingFrames(batch);
        QTRY_COMPARE(user.number("ch1SendCount"), 10u);
        QCOMPARE(user.rows(), 3);
    }

    void withoutADriverOpeningFails()
    {
        Scene scene(quiet());
        scene.adapter->unplug();
        WindowDriver &user = *scene.user;
        user.modal().onDialog([](QDialog *dialog) {
            dialog->findChild<QAbstractButton *>("pushButton")->click();
            dialog->close();
        });
        user.trigger("actionDeviceOperations");
        QCOMPARE(user.modal().takeMessages(), QStringList{"警告|设备打开失败！"});
        QVERIFY(!isDeviceOpen());
    }
};

QTEST_MAIN(TestMainWindow)
#include "test_mainwindow.moc"
