// Trials of the whole program that take their time: the real window on the simulated adapter, driven as a user would.
//   ostrel_trials saturate SECONDS [FILE]   both channels full of the shortest FD frames, capture to FILE when given
//   ostrel_trials filter SECONDS FILE       the same on a list of 50,000 rows with conditions on two columns
//   ostrel_trials unplug TIMES              the adapter pulled while frames flow, plugged in and opened again
//   ostrel_trials endless SECONDS           both panels send without end and without interval
//   ostrel_trials replay FILE               the file sent with its recorded timing on a quiet bus, and compared
//   ostrel_trials record SECONDS FILE       channel 1 captured (of OSTREL_SIM_TRACE, say)
//   ostrel_trials mixture ROWS FILE         writes a file of mixed frames, a millisecond apart
// Each prints what it measured; it ends with 1 when frames are missing or differ.
#include "app/displayfilter.h"
#include "app/receiveview.h"
#include "capturerows.h"
#include "device/settingsstore.h"
#include "frames/mytablemodel.h"
#include "frames/pendingframes.h"
#include "processusage.h"
#include "trialscene.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QSpinBox>
#include <QTextStream>
#include <QTime>

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

namespace
{
QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

SimulatorOptions bus(SimulatorOptions::Traffic traffic)
{
    SimulatorOptions options;
    options.traffic = traffic;
    return options;
}

// Lets the window run and tells what it cost.
void runAndReport(Scene &scene, int seconds)
{
    LoopWatch watch;
    QTest::qWait(2000); // up to speed
    const ProcessUsage before = ProcessUsage::now();
    watch.start();
    QElapsedTimer timer;
    timer.start();
    for (int tenth = 1; tenth <= 10; ++tenth) {
        QTest::qWait(seconds * 100);
        out() << QString("  after %1 s: resident %2 MiB, list %3 rows, longest gap of the event loop %4 ms\n")
                     .arg(timer.elapsed() / 1000)
                     .arg(ProcessUsage::now().residentMiB(), 0, 'f', 1)
                     .arg(scene.user->rows())
                     .arg(watch.longestMs(), 0, 'f', 1);
        out().flush();
    }
    const ProcessUsage after = ProcessUsage::now();
    out() << QString("CPU %1 % of one core; resident %2 MiB, then %3 MiB\n")
                 .arg((after.cpuSeconds - before.cpuSeconds) * 1e5 / static_cast<double>(timer.elapsed()), 0, 'f', 1)
                 .arg(before.residentMiB(), 0, 'f', 1)
                 .arg(after.residentMiB(), 0, 'f', 1);
}

// prepare: what is to be done with the window before the adapter is opened.
int saturate(int seconds, const QString &capture, const std::function<void(Scene &)> &prepare = {})
{
    Scene scene(bus(SimulatorOptions::Traffic::Flood));
    if (prepare)
        prepare(scene);
    QFile::remove(capture);
    if (!capture.isEmpty())
        scene.user->startCapture(capture);
    if (!scene.user->openEverything())
        return 1;
    QElapsedTimer timer;
    timer.start();
    runAndReport(scene, seconds);
    const double elapsed = static_cast<double>(timer.elapsed()) / 1000;
    scene.user->closeDevice();
    scene.user->stopCapture();
    const quint64 frames = scene.user->received();
    out() << "frames counted: " << frames << ", " << qRound64(static_cast<double>(frames) / elapsed) << " a second\n";
    const bool lost = scene.user->log().contains("丢失");
    out() << (lost ? "frames were lost\n" : "the log tells of no lost frame\n");
    if (capture.isEmpty())
        return lost;
    const qint64 rows = captureRows(capture);
    out() << "rows captured: " << rows << '\n';
    return lost || rows != static_cast<qint64>(frames);
}

// One condition lets one channel through, the other holds a text for each of 50,000 rows that have been shown.
int filter(int seconds, const QString &capture)
{
    constexpr int kRows = 50000;
    settings::setValue("listCount", QString::number(kRows), false);
    return saturate(seconds, capture, [](Scene &scene) {
        auto *view = scene.window->findChild<ReceiveView *>();
        view->setListLimit(kRows);
        QList<ModelItem> frames;
        QStringList stamps;
        for (int i = 0; i < kRows; ++i) {
            ModelItem item;
            item.channelText = QString::number(i % 2 + 1);
            item.timeStamp = "0x" + QString::number(i, 16).toUpper();
            stamps.append(item.timeStamp);
            frames.append(item);
        }
        appendPendingFrames(frames);
        view->refresh();
        QElapsedTimer timer;
        timer.start();
        auto *filter = scene.window->findChild<DisplayFilter *>();
        filter->setCondition(stamps, TimeStampColumn);
        filter->setCondition({"1"}, ChannelColumn);
        out() << "conditions set on " << view->model()->rowCount() << " rows in " << timer.elapsed() << " ms\n";
    });
}

int openFiles()
{
    return QDir("/proc/self/fd").entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System).size();
}

int threads()
{
    return QDir("/proc/self/task").entryList(QDir::NoDotAndDotDot | QDir::Dirs).size();
}

int unplug(int times)
{
    Scene scene(bus(SimulatorOptions::Traffic::Flood));
    WindowDriver &user = *scene.user;
    for (int i = 1; i <= times; ++i) {
        if (!user.openEverything())
            return 1;
        QTest::qWait(500);
        QElapsedTimer timer;
        timer.start();
        scene.adapter->unplug();
        while (user.log().count("设备已关闭！") < i) {
            QTest::qWait(5);
            if (timer.elapsed() > 5000)
                return 1;
        }
        const qint64 told = timer.elapsed();
        QTest::qWait(200);
        if (i == 1 || i % 10 == 0)
            out() << QString("  pulled %1 times: told after %2 ms, %3 threads, %4 open files, resident %5 MiB\n")
                         .arg(i)
                         .arg(told)
                         .arg(threads())
                         .arg(openFiles())
                         .arg(ProcessUsage::now().residentMiB(), 0, 'f', 1);
        out().flush();
        scene.adapter->replug();
    }
    return 0;
}

int endless(int seconds)
{
    Scene scene(bus(SimulatorOptions::Traffic::Off));
    if (!scene.user->openEverything())
        return 1;
    for (const char *panel : {"ch1", "ch2"}) {
        scene.user->find<QLineEdit>(QByteArray(panel) + "SendCountEdit")->setText("-1");
        scene.user->find<QLineEdit>(QByteArray(panel) + "SendInvEdit")->setText("0");
        scene.user->click(QByteArray(panel) + "SendBtn");
    }
    runAndReport(scene, seconds);
    QElapsedTimer timer;
    timer.start();
    for (const char *panel : {"ch1", "ch2"})
        scene.user->click(QByteArray(panel) + "StopSendBtn");
    while (scene.user->log().count("数据中止发送！") < 2 && timer.elapsed() < 10000)
        QTest::qWait(1);
    out() << "both stopped after " << timer.elapsed() << " ms\n";
    QTest::qWait(500);
    const quint64 sent = scene.user->transmitted();
    const quint64 received = scene.user->received();
    out() << "sent " << sent << ", received " << received << '\n';
    timer.restart();
    scene.user.reset();
    scene.window.reset();
    out() << "window closed in " << timer.elapsed() << " ms\n";
    return sent != received;
}

int record(int seconds, const QString &path)
{
    Scene scene(SimulatorOptions::fromEnvironment());
    QFile::remove(path);
    scene.user->startCapture(path);
    scene.user->modal().onDialog([&scene](QDialog *dialog) {
        dialog->findChild<QAbstractButton *>("pushButton")->click();
        scene.user->modal().onDialog(
            [](QDialog *parameters) { parameters->findChild<QAbstractButton *>("btnConfirm")->click(); });
        dialog->findChild<QAbstractButton *>("pushButton_3")->click();
        dialog->close();
    });
    scene.user->trigger("actionDeviceOperations");
    QTest::qWait(seconds * 1000);
    scene.user->closeDevice();
    scene.user->stopCapture();
    out() << captureRows(path) << " rows in " << path << '\n';
    return 0;
}

int mixture(int rows, const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return 1;
    const int lengths[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64};
    file.write("header\n");
    for (int i = 0; i < rows; ++i) {
        const bool fd = i % 2 == 1;
        const bool extended = i % 3 == 0;
        const bool remote = !fd && i % 10 == 4;
        const int length = remote ? 0 : fd ? lengths[i / 2 % 16] : i / 2 % 9;
        QString data = "x| ";
        for (int b = 0; b < length; ++b)
            data += QString::asprintf("%02X ", (i + b) & 0xFF);
        file.write(QString("%1,=\"%2\",0x0,1,Rx,0x%3,%4,%5,%6,%7,%8\n")
                       .arg(i + 1)
                       .arg(QTime::fromMSecsSinceStartOfDay(36000000 + i).toString("hh:mm:ss.zzz"),
                            extended ? QString::asprintf("%08X", 0x10000 + i) : QString::asprintf("%03X", i & 0x7FF),
                            extended ? "扩展帧" : "标准帧", remote ? "远程帧" : "数据帧")
                       .arg(length)
                       .arg(!fd          ? "CAN"
                            : i % 4 == 1 ? "CANFD-加速"
                                         : "CANFD",
                            data)
                       .toUtf8());
    }
    return 0;
}

struct Row {
    QStringList frame; // what must come out as it went in
    double ms = 0;
};

// The rows of a capture; with deviceTime their moments are the device's, else the system's.
std::vector<Row> rowsFrom(const QString &path, const QString &direction, const QString &channel, bool deviceTime)
{
    std::vector<Row> rows;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return rows;
    QTextStream in(&file);
    in.setCodec("UTF-8");
    in.readLine();
    while (!in.atEnd()) {
        const QStringList f = in.readLine().split(',');
        if (f.size() != 11 || (!direction.isEmpty() && (f.at(4) != direction || f.at(3) != channel)))
            continue;
        Row row;
        row.frame = QStringList{f.at(5), f.at(6), f.at(7), f.at(8), f.at(9), f.at(10)};
        row.ms = deviceTime ? static_cast<double>(f.at(2).mid(2).toULongLong(nullptr, 16)) / 1000
                            : QTime::fromString(f.at(1).mid(2, 12), "hh:mm:ss.zzz").msecsSinceStartOfDay();
        rows.push_back(row);
    }
    return rows;
}

int replay(const QString &path)
{
    Scene scene(bus(SimulatorOptions::Traffic::Off));
    WindowDriver &user = *scene.user;
    const QString capture = scene.folder.path("replayed.csv");
    user.startCapture(capture);
    if (!user.openEverything())
        return 1;
    user.trigger("actionFileSend");
    QWidget *dialog = user.find<QWidget>("fileDlg");
    dialog->findChild<QLineEdit *>()->setText(path);
    dialog->findChild<QComboBox *>("comboBox_2")->setCurrentIndex(1);
    dialog->findChild<QAbstractButton *>("pbSend")->click();
    while (!user.log().contains("文件发送完成！"))
        QTest::qWait(50);
    QTest::qWait(500);
    user.closeDevice();
    user.stopCapture();
    out() << user.log().section('\n', -4) << '\n';

    const std::vector<Row> wanted = rowsFrom(path, {}, {}, false);
    std::vector<Row> got = rowsFrom(capture, "Rx", "2", true);
    // A pass of the receiver takes the classic queue before the FD queue: the device's clock has the order of the bus.
    std::stable_sort(got.begin(), got.end(), [](const Row &a, const Row &b) { return a.ms < b.ms; });
    std::size_t different = 0;
    for (std::size_t i = 0; i < std::min(wanted.size(), got.size()); ++i)
        different += wanted[i].frame != got[i].frame;
    out() << "rows in the file " << wanted.size() << ", received on channel 2 " << got.size() << ", different "
          << different << '\n';
    if (wanted.size() != got.size() || wanted.size() < 2)
        return 1;
    const double wantedSpan = wanted.back().ms - wanted.front().ms;
    const double gotSpan = got.back().ms - got.front().ms;
    std::vector<double> errors;
    for (std::size_t i = 1; i < got.size(); ++i)
        errors.push_back(std::abs((got[i].ms - got[i - 1].ms) - (wanted[i].ms - wanted[i - 1].ms)));
    std::sort(errors.begin(), errors.end());
    out() << QString("span of the file %1 ms, on the bus %2 ms, difference %3 %; error of a single gap: median %4 ms, "
                     "largest %5 ms\n")
                 .arg(wantedSpan, 0, 'f', 3)
                 .arg(gotSpan, 0, 'f', 3)
                 .arg((gotSpan - wantedSpan) / wantedSpan * 100, 0, 'f', 4)
                 .arg(errors[errors.size() / 2], 0, 'f', 3)
                 .arg(errors.back(), 0, 'f', 3);
    return different != 0;
}
} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments().mid(1);
    const QString trial = arguments.value(0);
    const int number = arguments.value(1).toInt();
    out().setCodec("UTF-8");
    if (trial == "saturate" && number > 0)
        return saturate(number, arguments.value(2));
    if (trial == "filter" && number > 0)
        return filter(number, arguments.value(2));
    if (trial == "unplug" && number > 0)
        return unplug(number);
    if (trial == "endless" && number > 0)
        return endless(number);
    if (trial == "record" && number > 0)
        return record(number, arguments.value(2));
    if (trial == "mixture" && number > 0)
        return mixture(number, arguments.value(2));
    if (trial == "replay" && arguments.size() == 2)
        return replay(arguments.at(1));
    out() << "saturate SECONDS [FILE] | filter SECONDS FILE | unplug TIMES | endless SECONDS | replay FILE | record "
             "SECONDS FILE | mixture ROWS FILE\n";
    return 2;
}
