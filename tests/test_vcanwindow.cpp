// The whole window on virtual CAN interfaces, with the programs of can-utils on the other end. Needs vcan0 and vcan1 to
// be up and can-utils; the last test needs the right to add interfaces.
// OSTREL_VCAN_FRAMES: how many frames are captured (20000); OSTREL_VCAN_LOG: a candump log of can0 to be replayed.
#include "app/mainwindow.h"
#include "device/devicelayer.h"
#include "device/driver/socketcan/socketcandriver.h"
#include "dialogs/filedlg.h"
#include "testfolder.h"
#include "windowdriver.h"

#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QLoggingCategory>
#include <QProcess>
#include <QSpinBox>
#include <QStandardPaths>
#include <QtTest>

namespace
{

constexpr int kPatienceMs = 30000;
constexpr int kQuietMs = 1500; // nothing moves any more after that

// Frames as candump writes them, in their order. The two kinds reach the program through queues of their own.
struct Traffic {
    QByteArrayList classic;
    QByteArrayList fd;
    QList<double> classicTimes; // seconds

    int size() const { return classic.size() + fd.size(); }
    void add(const QByteArray &frame, double time)
    {
        if (!frame.contains("##")) {
            classic.append(frame);
            classicTimes.append(time);
            return;
        }
        QByteArray known = frame; // the program knows of the bit-rate switch only
        char &flags = known.data()[known.indexOf("##") + 2];
        flags = (flags - '0') % 2 ? '1' : '0';
        fd.append(known);
    }
};

Traffic fromCandumpLog(const QByteArray &log, const QByteArray &interface)
{
    Traffic traffic;
    for (const QByteArray &line : log.split('\n')) {
        const QByteArrayList fields = line.trimmed().split(' '); // "(1.5) can0 123#00"
        if (fields.size() >= 3 && fields.at(1) == interface)
            traffic.add(fields.at(2), fields.at(0).mid(1, fields.at(0).size() - 2).toDouble());
    }
    return traffic;
}

// A row of the capture as candump would have written the frame.
QByteArray asCandump(const QStringList &row)
{
    const QByteArray id = row.at(5).mid(2).toLatin1();
    const QByteArray data = row.at(10).mid(3).remove(' ').toLatin1();
    if (row.at(9).startsWith("CANFD"))
        return id + "##" + (row.at(9).contains('-') ? "1" : "0") + data;
    if (row.at(7) == QString("远程帧"))
        return id + "#R" + (row.at(8) == "0" ? "" : row.at(8).toLatin1());
    return id + '#' + data;
}

Traffic fromCapture(const QString &path, const QString &channel, const QString &direction)
{
    Traffic traffic;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return traffic;
    for (const QByteArray &line : file.readAll().split('\n')) {
        const QStringList row = QString::fromUtf8(line).split(',');
        if (row.size() == 11 && row.at(3) == channel && row.at(4) == direction)
            traffic.add(asCandump(row), row.at(2).toULongLong(nullptr, 16) * 1e-6);
    }
    return traffic;
}

// candump on both interfaces, from its start to log().
class Candump
{
public:
    explicit Candump(const TestFolder &folder) : path_(folder.path("candump.log"))
    {
        const int before = receivers();
        process_.setStandardOutputFile(path_);
        process_.start("candump", {"-L", "-r", "33554432", "vcan0", "vcan1"});
        process_.waitForStarted();
        for (QElapsedTimer timer = started(); receivers() < before + 2 && timer.elapsed() < kPatienceMs;)
            QTest::qWait(20);
    }
    QByteArray log()
    {
        process_.terminate();
        process_.waitForFinished();
        QFile file(path_);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    static QElapsedTimer started()
    {
        QElapsedTimer timer;
        timer.start();
        return timer;
    }
    static int receivers()
    {
        QFile list("/proc/net/can/rcvlist_all");
        return list.open(QIODevice::ReadOnly) ? list.readAll().count("raw") : 0;
    }

    QString path_;
    QProcess process_;
};

// Empty when both are the same, else the first place where they are not.
QByteArray difference(const QByteArrayList &here, const QByteArrayList &there)
{
    for (int i = 0; i < qMax(here.size(), there.size()); ++i)
        if (here.value(i, "nothing") != there.value(i, "nothing"))
            return QByteArray::number(i) + ": " + here.value(i, "nothing") + " against " + there.value(i, "nothing");
    return {};
}

int run(const QString &program, const QString &arguments)
{
    QProcess process;
    process.start(program, arguments.split(' '));
    while (process.state() != QProcess::NotRunning)
        QTest::qWait(20); // the window goes on
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

} // namespace

class TestVcanWindow : public QObject
{
    Q_OBJECT

private:
    struct Scene {
        TestFolder folder;
        std::unique_ptr<MainWindow> window;
        std::unique_ptr<WindowDriver> user;

        Scene()
        {
            folder.copyCatalogues();
            setDriver(std::make_unique<SocketCanDriver>());
            window = std::make_unique<MainWindow>();
            window->show();
            user = std::make_unique<WindowDriver>(*window);
            QTest::qWait(50); // the late start
        }
        ~Scene()
        {
            window.reset();
            setDriver(nullptr);
        }
        QString capture() const { return folder.path("capture.csv"); }
        quint64 moved() const { return user->received() + user->transmitted(); }
        void waitUntilQuiet() const
        {
            for (quint64 before = moved() + 1; before != moved();) {
                before = moved();
                QTest::qWait(kQuietMs);
            }
        }
    };

    static void report(const char *what, const Traffic &traffic, const Traffic &other)
    {
        qInfo("%s: %d classic and %d FD frames here, %d and %d there", what, traffic.classic.size(), traffic.fd.size(),
              other.classic.size(), other.fd.size());
    }
    static int wantedFrames()
    {
        const int wanted = qEnvironmentVariableIntValue("OSTREL_VCAN_FRAMES");
        return wanted > 0 ? wanted : 20000;
    }
    static bool sendFile(Scene &scene, const QString &path, int channel)
    {
        scene.user->click("ch1SendFileBtn");
        auto *dialog = scene.window->findChild<fileDlg *>();
        dialog->findChild<QLineEdit *>("lineEdit")->setText(path);
        dialog->findChild<QComboBox *>("comboBox")->setCurrentIndex(channel);
        dialog->findChild<QComboBox *>("comboBox_2")->setCurrentIndex(0);
        dialog->findChild<QSpinBox *>("spinBox")->setValue(1);
        dialog->findChild<QSpinBox *>("spinBox_2")->setValue(0);
        dialog->findChild<QAbstractButton *>("pbSend")->click();
        return QTest::qWaitFor([&] { return scene.user->log().contains("文件发送完成！"); }, 10 * kPatienceMs);
    }

private slots:
    void initTestCase()
    {
        // The off-screen platform's only complaint, once for every dialog.
        QLoggingCategory::setFilterRules("default.warning=false");
        for (const char *name : {"vcan0", "vcan1"}) {
            CanInterface interface;
            if (!findCanInterface(name, &interface) || !interface.up || !interface.fd)
                QSKIP("no vcan0 and vcan1 with FD that are up: the window is not tested on CAN interfaces");
        }
        for (const char *program : {"candump", "cangen", "canplayer", "ip"})
            if (QStandardPaths::findExecutable(program).isEmpty())
                QSKIP("no can-utils: the window is not tested on CAN interfaces");
    }

    // cangen -> the window's capture -> a file sent by the window; candump sees both.
    void capturesAndSendsWhatCangenMakes()
    {
        const int frames = wantedFrames();
        Scene scene;
        QVERIFY(scene.user->openEverything());
        scene.user->startCapture(scene.capture());
        Candump candump(scene.folder);
        QCOMPARE(run("cangen", QString("vcan0 -m -g 1 -c 50 -n %1").arg(frames)), 0);
        scene.waitUntilQuiet();
        scene.user->stopCapture();
        const Traffic made = fromCandumpLog(candump.log(), "vcan0");
        const Traffic captured = fromCapture(scene.capture(), "1", "Rx");
        report("cangen, captured", captured, made);
        const double seconds = made.classicTimes.last() - made.classicTimes.first();
        qInfo("%.0f frames a second for %.1f s", made.size() / seconds, seconds);
        QCOMPARE(made.size(), frames);
        QCOMPARE(difference(captured.classic, made.classic), QByteArray());
        QCOMPARE(difference(captured.fd, made.fd), QByteArray());
        double worst = 0;
        for (int i = 0; i < made.classic.size(); ++i)
            worst = qMax(worst, qAbs((captured.classicTimes.at(i) - captured.classicTimes.first()) -
                                     (made.classicTimes.at(i) - made.classicTimes.first())));
        qInfo("time stamps differ by at most %.0f us", worst * 1e6);
        QVERIFY2(worst < 0.001, "time stamps are the kernel's own");
        QVERIFY(!scene.user->log().contains("丢失"));

        Candump again(scene.folder);
        QVERIFY(sendFile(scene, scene.capture(), 1));
        scene.waitUntilQuiet();
        const Traffic sent = fromCandumpLog(again.log(), "vcan1");
        report("capture sent as a file", captured, sent);
        QCOMPARE(difference(sent.classic, captured.classic), QByteArray());
        QCOMPARE(difference(sent.fd, captured.fd), QByteArray());
        QVERIFY(scene.user->modal().unexpected().isEmpty());
    }

    void panelsSendWhatCandumpLogs_data()
    {
        QTest::addColumn<int>("format");
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("protocol");
        QTest::addColumn<QString>("length");
        QTest::addColumn<QString>("id");
        QTest::addColumn<QByteArray>("first");
        QTest::addColumn<QByteArray>("last"); // of 300, counting up
        QTest::newRow("classic") << 0 << 0 << 0 << "8"
                                 << "7F0" << QByteArray("7F0#00FF000000000000") << QByteArray("11B#2B00010000000000");
        QTest::newRow("extended") << 1 << 0 << 0 << "2"
                                  << "1FFFFFFF" << QByteArray("1FFFFFFF#00FF") << QByteArray("0000012A#2B00");
        QTest::newRow("remote") << 0 << 1 << 0 << "4"
                                << "123" << QByteArray("123#R4") << QByteArray("24E#R4");
        QTest::newRow("FD") << 0 << 0 << 1 << "12"
                            << "0" << QByteArray("000##000FF00000000000000000000")
                            << QByteArray("12B##02B0001000000000000000000");
        QTest::newRow("FD with switch") << 1 << 0 << 2 << "64"
                                        << "1" << QByteArray("00000001##100FF" + QByteArray(124, '0'))
                                        << QByteArray("0000012C##12B0001" + QByteArray(122, '0'));
    }
    void panelsSendWhatCandumpLogs()
    {
        QFETCH(int, format);
        QFETCH(int, type);
        QFETCH(int, protocol);
        QFETCH(QString, length);
        QFETCH(QString, id);
        QFETCH(QByteArray, first);
        QFETCH(QByteArray, last);
        constexpr int kFrames = 300;
        Scene scene;
        QVERIFY(scene.user->openEverything());
        scene.user->startCapture(scene.capture());
        Candump candump(scene.folder);
        for (const char *panel : {"ch1", "ch2"}) {
            const QByteArray ch(panel);
            WindowDriver &user = *scene.user;
            user.find<QComboBox>(ch + "FrameTypeCombo")->setCurrentIndex(format);
            user.find<QComboBox>(ch + "ProtocolCombo")->setCurrentIndex(protocol);
            user.find<QComboBox>(ch + "FrameDataCombo")->setCurrentIndex(type);
            user.find<QComboBox>(ch + "sendLenCombo")->setCurrentText(length);
            user.find<QLineEdit>(ch + "SendIDEdit")->setText(id);
            user.find<QLineEdit>(ch + "SendDataEdit")->setText("00 FF");
            user.find<QLineEdit>(ch + "SendCountEdit")->setText(QString::number(kFrames));
            user.find<QLineEdit>(ch + "SendInvEdit")->setText("0");
            user.find<QCheckBox>(ch + "IDAddChk")->setChecked(true);
            user.find<QCheckBox>(ch + "DataAddChk")->setChecked(true);
            user.click(ch + "SendBtn");
        }
        QTRY_COMPARE_WITH_TIMEOUT(scene.user->log().count("数据发送完成！"), 2, kPatienceMs);
        scene.waitUntilQuiet();
        scene.user->stopCapture();
        const QByteArray log = candump.log();
        for (const char *channel : {"1", "2"}) {
            const Traffic logged = fromCandumpLog(log, *channel == '1' ? "vcan0" : "vcan1");
            const Traffic shown = fromCapture(scene.capture(), channel, "Tx");
            QCOMPARE(logged.size(), kFrames);
            const QByteArrayList &frames = protocol == 0 ? logged.classic : logged.fd;
            QCOMPARE(frames.first(), first);
            QCOMPARE(frames.last(), last);
            QCOMPARE(difference(shown.classic, logged.classic), QByteArray());
            QCOMPARE(difference(shown.fd, logged.fd), QByteArray());
            QCOMPARE(fromCapture(scene.capture(), channel, "Rx").size(), 0); // a sender hears nothing of itself
        }
        QVERIFY(scene.user->modal().messages().isEmpty());
    }

    void capturesWhatCanplayerReplays()
    {
        Scene scene;
        QString path = qEnvironmentVariable("OSTREL_VCAN_LOG");
        if (path.isEmpty()) {
            QByteArray made;
            for (int i = 0; i < 2000; ++i)
                made += QString::asprintf("(100.%06d) can0 %03X#%08X\n", i * 400, i % 0x800, i).toLatin1();
            scene.folder.write("made.log", made);
            path = scene.folder.path("made.log");
        }
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const Traffic recorded = fromCandumpLog(file.readAll(), "can0");
        QVERIFY(scene.user->openEverything());
        scene.user->startCapture(scene.capture());
        QCOMPARE(run("canplayer", QString("-I %1 vcan1=can0").arg(path)), 0);
        scene.waitUntilQuiet();
        scene.user->stopCapture();
        const Traffic captured = fromCapture(scene.capture(), "2", "Rx");
        report("canplayer", captured, recorded);
        QVERIFY(recorded.size() > 0);
        QCOMPARE(difference(captured.classic, recorded.classic), QByteArray());
        QCOMPARE(difference(captured.fd, recorded.fd), QByteArray());
    }

    void interfacesComeAndGo_data()
    {
        QTest::addColumn<QStringList>("going"); // arguments of ip
        QTest::addColumn<QStringList>("coming");
        QTest::newRow("down, up") << QStringList{"link set ostreltest1 down"} << QStringList();
        QTest::newRow("removed, added") << QStringList{"link del ostreltest1"}
                                        << QStringList{"link add ostreltest1 type vcan"};
        QTest::newRow("renamed") << QStringList{"link set ostreltest1 down", "link set ostreltest1 name ostreltest2",
                                                "link set ostreltest2 up"}
                                 << QStringList{"link set ostreltest2 down", "link set ostreltest2 name ostreltest1"};
        QTest::newRow("both removed") << QStringList{"link del ostreltest0", "link del ostreltest1"}
                                      << QStringList{"link add ostreltest0 type vcan",
                                                     "link add ostreltest1 type vcan"};
    }
    void interfacesComeAndGo()
    {
        QFETCH(QStringList, going);
        QFETCH(QStringList, coming);
        const QStringList up{"link set ostreltest0 up mtu 72", "link set ostreltest1 up mtu 72"};
        const auto ip = [](const QStringList &commands) {
            for (const QString &command : commands)
                if (run("ip", command) != 0)
                    return false;
            return true;
        };
        for (const char *name : {"ostreltest0", "ostreltest1", "ostreltest2"})
            run("ip", QString("link del %1").arg(name));
        if (!ip({"link add ostreltest0 type vcan", "link add ostreltest1 type vcan"}))
            QSKIP("no right to add a vcan interface");
        QVERIFY(ip(up));
        Scene scene;
        WindowDriver &user = *scene.user;
        const int device = deviceNames().indexOf("ostreltest0 + ostreltest1");
        QVERIFY(device >= 0);
        for (int round = 1; round <= 2; ++round) {
            QVERIFY(user.openEverything(device));
            QTRY_VERIFY(scene.window->windowTitle().contains("SN:ostreltest0+ostrelte"));
            user.find<QLineEdit>("ch2SendCountEdit")->setText("-1");
            user.find<QLineEdit>("ch2SendInvEdit")->setText("1");
            user.click("ch2SendBtn");
            QTRY_VERIFY(user.number("ch2SendCount") > 20);

            QVERIFY(ip(going));
            QTRY_COMPARE(user.log().count("设备已关闭！"), round);
            QCOMPARE(scene.window->windowTitle(), QString("Ostrel-V1.17"));
            QVERIFY(!isDeviceOpen());
            QVERIFY(user.log().contains("ostreltest1"));
            QTRY_VERIFY(!user.find<QWidget>("ch2SendBtn")->isEnabled());

            QVERIFY(ip(coming));
            QVERIFY(ip(up));
        }
        // What is open after all that works.
        QVERIFY(user.openEverything(device));
        const quint64 before = user.number("ch1RecvCount");
        QCOMPARE(run("cangen", "ostreltest0 -g 0 -n 100"), 0);
        QTRY_COMPARE(user.number("ch1RecvCount"), before + 100);
        QVERIFY(user.modal().messages().isEmpty());
    }

    void cleanupTestCase()
    {
        for (const char *name : {"ostreltest0", "ostreltest1", "ostreltest2"})
            run("ip", QString("link del %1").arg(name));
    }
};

QTEST_MAIN(TestVcanWindow)
#include "test_vcanwindow.moc"
