// What is made of an opened recording in the real windows: sent on the simulated adapter, compared, filtered by a
// signal, cancelled; expectations come from awk on the log.
#include "analysis/comparisonwindow.h"
#include "analysis/recordingmodel.h"
#include "analysis/recordingview.h"
#include "analysis/recordingwindow.h"
#include "analysis/replaybar.h"
#include "analysis/signaldatabases.h"
#include "app/analysismenu.h"
#include "bench/trialscene.h"
#include "frames/pendingframes.h"
#include "frames/tap.h"
#include "traces/recordingexport.h"

#include <QAction>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QSettings>
#include <QSlider>
#include <QTableView>
#include <QTemporaryDir>
#include <QtTest>

using namespace std::chrono_literals;

namespace
{

SimulatorOptions quiet()
{
    SimulatorOptions options;
    options.traffic = SimulatorOptions::Traffic::Off;
    return options;
}

void save(const QString &path, const QByteArray &text)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
}

QByteArray shell(const QString &command)
{
    QProcess process;
    process.start(QStringLiteral("sh"), {QStringLiteral("-c"), command});
    process.waitForFinished();
    return process.readAllStandardOutput();
}

// 200 rows on both channels, 1 ms apart: every seventh of a kind that cannot go out, then one that comes much later.
QByteArray log()
{
    QByteArray text;
    for (int i = 0; i < 200; ++i) {
        const char *frame = i % 14 == 6 ? "20000004#0000000000000000" : i % 14 == 13 ? "123##1AABB" : "";
        const QByteArray usual = QString::asprintf("%03X#%02X%04X", 0x100 + i % 9, i, i * 3).toLatin1();
        text += QString::asprintf("(1700000000.%06d) can%d ", i * 1000, i % 29 == 28 ? 4 : i % 2).toLatin1() +
                (*frame ? QByteArray(frame) : usual) + '\n';
    }
    return text + "(1700009000.000000) can0 7AA#01\n(1700009000.000100) can0 7AB#02\n";
}

// "interface identifier#data" of what passed the tap as sent, in the order of each channel.
QStringList sent(TapReader &tap)
{
    QStringList all;
    TapBatch batch;
    tap.take(batch, 0ms);
    for (const RawFrame &frame : batch.frames)
        if (frame.direction == Direction::Sent)
            all.append(
                QStringLiteral("can%1 %2%3%4")
                    .arg(frame.channel - 1)
                    .arg(QString::number(frame.id, 16).rightJustified(3, '0').toUpper(),
                         frame.fd ? QStringLiteral("##1") : QStringLiteral("#"),
                         QString::fromLatin1(
                             QByteArray(reinterpret_cast<const char *>(frame.data), frame.length).toHex().toUpper())));
    return all;
}

} // namespace

class TestRecordingUse : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings_.path()); }
    void clockKeepsThePace();
    void replays();
    void replayIsInterrupted();
    void compares();
    void signalFilter();
    void analyses();
    void cancels();
    void commandLine();

private:
    // The window of a recording that the main window has opened.
    RecordingWindow *open(Scene &scene, const QString &name, const QByteArray &text)
    {
        scene.user->trigger("actionEnglish");
        path_ = scene.folder.path(name);
        save(path_, text);
        scene.window->analysisMenu()->openRecording(path_);
        auto *window = scene.window->findChild<RecordingWindow *>();
        if (!QTest::qWaitFor([window] { return window->index().settled(); }))
            qFatal("no index");
        return window;
    }
    template <typename Widget> static Widget *find(QWidget *window, const char *name)
    {
        return window->findChild<Widget *>(QLatin1String(name));
    }
    static void click(QWidget *window, const char *button) { find<QPushButton>(window, button)->click(); }
    static void enter(QWidget *window, const char *line, const QString &text)
    {
        find<QLineEdit>(window, line)->setText(text);
        QTest::keyClick(find<QLineEdit>(window, line), Qt::Key_Return);
    }
    static QString firstCell(QWidget *window)
    {
        return window->findChild<RecordingModel *>()->index(0, IndexColumn).data().toString();
    }

    QTemporaryDir settings_;
    QString path_;
};

void TestRecordingUse::clockKeepsThePace()
{
    ReplayClock clock(2);
    RawFrame frame;
    frame.time = 7'000'000'000;
    const auto begin = clock.due(frame);
    frame.time += 3'000'000'000;
    QCOMPARE((clock.due(frame) - begin) / 1ms, 1500);
    QCOMPARE(*clock.timeAt(begin + 500ms), 8'000'000'000);
    clock.setSpeed(0.5, begin + 500ms); // two of the recording's seconds are left
    QCOMPARE((clock.due(frame) - begin) / 1ms, 4500);
    clock.setTime(9'000'000'000, begin + 10s); // after a pause
    QCOMPARE((clock.due(frame) - begin) / 1ms, 12000);
    frame.time = INT64_MAX;
    QVERIFY(clock.due(frame) > begin + 10h);
    ReplayClock fixed(1, 20);
    const auto first = fixed.due(frame);
    QCOMPARE((fixed.due(frame) - first) / 1ms, 20);
    QVERIFY(!replayChannelsFromText(QStringLiteral("1=3")));
    QVERIFY(!replayChannelsFromText(QStringLiteral("1")));
    QVERIFY(*replayChannelsFromText(QStringLiteral("5=2,1=2")) == (ReplayChannels{{5, 2}, {1, 2}}));
}

void TestRecordingUse::replays()
{
    takePendingFrames(); // of another test
    Scene scene(quiet());
    RecordingWindow *window = open(scene, QStringLiteral("drive.log"), log());
    click(window, "recordingReplay");
    click(window, "replayStart");
    QCOMPARE(find<QLabel>(window, "replayState")->text(), QStringLiteral("No channel is open!"));
    QVERIFY(scene.user->openEverything());

    // The shown rows, with one channel of the recording on another one.
    enter(window, "recordingFilter", QStringLiteral("time ..100"));
    find<QComboBox>(window, "replayRows")->setCurrentIndex(int(ReplayBar::Choice::Shown));
    find<QLineEdit>(window, "replayChannels")->setText(QStringLiteral("2=1,1=2"));
    find<QDoubleSpinBox>(window, "replaySpeed")->setValue(4);
    TapReader tap;
    click(window, "replayStart");
    const QString rows = QStringLiteral("head -200 %1 | awk '{sub(/can0/,\"canX\"); sub(/can1/,\"can0\"); "
                                        "sub(/canX/,\"can1\"); print $2, $3}' | grep -v ' 2000' | grep -v can4")
                             .arg(path_);
    const QStringList expected = QString::fromLatin1(shell(rows)).split('\n', Qt::SkipEmptyParts);
    const int refused = shell(QStringLiteral("grep can4 %1 | grep -vc ' 2000'").arg(path_)).trimmed().toInt();
    const int errors = shell(QStringLiteral("grep -c ' 2000' ") + path_).trimmed().toInt();
    QVERIFY(refused > 0 && errors > 0);
    QTRY_VERIFY(scene.user->log().contains(
        QStringLiteral("Replay completed: %1 frames sent, %2 not taken").arg(expected.size()).arg(refused)));
    QVERIFY(scene.user->log().contains(QStringLiteral(", %1 cannot be sent").arg(errors)));
    QCOMPARE(sent(tap), expected);
    QTRY_COMPARE(scene.user->transmitted(), quint64(expected.size())); // in the frame list too
    scene.user->closeDevice();
}

void TestRecordingUse::replayIsInterrupted()
{
    Scene scene(quiet());
    RecordingWindow *window = open(scene, QStringLiteral("gap.log"), log());
    QVERIFY(scene.user->openEverything());
    const auto state = [window] { return find<QLabel>(window, "replayState")->text(); };
    TapReader tap;
    // One by one, in the order of the file.
    click(window, "recordingReplay");
    click(window, "replayStep");
    QTRY_VERIFY(state().startsWith(QLatin1String("row 2,")));
    click(window, "replayStep");
    QTRY_VERIFY(state().startsWith(QLatin1String("row 3,")));
    QCOMPARE(sent(tap), (QStringList{"can0 100#000000", "can1 101#010003"}));
    // On to the row that is due in hours, which a step does not wait for.
    click(window, "replayPause");
    QTRY_VERIFY(state().startsWith(QLatin1String("row 201,")));
    sent(tap);
    click(window, "replayStep");
    QTRY_VERIFY(state().startsWith(QLatin1String("row 202,")));
    QCOMPARE(sent(tap), QStringList{"can0 7AA#01"});
    // Back, and from there on until the gap, where it stops at once.
    find<QSlider>(window, "replayPosition")->setValue(9000);
    QTRY_VERIFY(state().startsWith(QLatin1String("row 182,")));
    click(window, "replayPause");
    QTRY_VERIFY(state().startsWith(QLatin1String("row 201,")));
    QCOMPARE(sent(tap).first().toLatin1(), shell("sed -n 182p " + path_ + " | cut -d' ' -f2-").trimmed());
    click(window, "replayStop");
    QTRY_VERIFY(scene.user->log().contains(QLatin1String("Replay stopped: ")));
    // A send panel works while it waits; the device goes.
    click(window, "replayStart");
    QTRY_VERIFY(state().startsWith(QLatin1String("row 201,")));
    sent(tap);
    scene.user->find<QLineEdit>("ch1SendIDEdit")->setText(QStringLiteral("0x55"));
    scene.user->click("ch1SendBtn");
    QStringList fromPanel;
    QTRY_VERIFY((fromPanel += sent(tap)).size() == 1);
    QVERIFY(fromPanel.first().startsWith(QLatin1String("can0 055#")));
    QTRY_VERIFY(scene.user->find<QPushButton>("ch1SendBtn")->isEnabled());
    scene.user->closeDevice();
    QTRY_VERIFY(scene.user->log().contains(QLatin1String("Replay ended: no channel is open")));
    QVERIFY(scene.user->openEverything());
    click(window, "replayStart");
    scene.window.reset(); // and the program ends while it runs
}

void TestRecordingUse::compares()
{
    Scene scene(quiet());
    RecordingWindow *window = open(scene, QStringLiteral("left.log"), log());
    // Without the first ten rows, with one identifier less, one more and one other byte.
    const QString other = scene.folder.path(QStringLiteral("right.log"));
    shell(QStringLiteral("sed '1,10d; / 104#/d; s/ 7AB#/ 7AC#/; s/ 105#8C/ 105#8D/' %1 > %2").arg(path_, other));
    enter(window, "recordingGoTo", QStringLiteral("11"));
    QString error;
    ComparisonWindow *comparison = window->compareWith(other, &error);
    QVERIFY2(comparison, qPrintable(error));
    auto *table = find<QTableView>(comparison, "comparisonTable");
    auto *status = find<QLabel>(comparison, "comparisonStatus");
    QTRY_VERIFY(status->text().contains(QLatin1String("identifiers")));
    // Channel 5, on which a few frames are, counts as another one.
    const auto names = [&](const QString &file, int from) {
        return QString::fromLatin1(
                   shell(QStringLiteral("tail -n +%1 %2 | grep -v ' 2000' | awk '{split($3,p,\"#\"); print "
                                        "$2, p[1]}' | sort -u")
                             .arg(from)
                             .arg(file)))
            .split('\n', Qt::SkipEmptyParts);
    };
    const QStringList left = names(path_, 11);
    const QStringList right = names(other, 1);
    const auto missing = [](const QStringList &from, const QStringList &in) {
        return int(std::count_if(from.begin(), from.end(), [&](const QString &name) { return !in.contains(name); }));
    };
    QVERIFY(missing(left, right) > 0);
    const int all = left.size() + missing(right, left);
    QVERIFY2(
        status->text().startsWith(QStringLiteral("%1 identifiers: %2 only left, %3 only right, 1 with different data")
                                      .arg(all)
                                      .arg(missing(left, right))
                                      .arg(missing(right, left))),
        qPrintable(status->text()));
    find<QComboBox>(comparison, "comparisonShown")->setCurrentIndex(2); // different data
    QCOMPARE(table->model()->rowCount(), 1);
    table->selectRow(0);
    const QByteArray row = shell(QStringLiteral("grep -n ' 105#8C' %1 | cut -d: -f1").arg(path_)).trimmed();
    const auto current = [&](const char *name) { return find<RecordingView>(comparison, name)->current(); };
    QCOMPARE(current("comparedLeft"), row.toULongLong() - 1);
    const QByteArray otherRow = shell(QStringLiteral("grep -n ' 105#8D' %1 | cut -d: -f1").arg(other)).trimmed();
    QCOMPARE(current("comparedRight"), otherRow.toULongLong() - 1);
    // What is selected left stands beside the same moment right.
    find<RecordingView>(comparison, "comparedLeft")->setCurrent(50);
    const QByteArray line = shell(QStringLiteral("sed -n 51p ") + path_).trimmed();
    QCOMPARE(shell(QStringLiteral("sed -n %1p %2").arg(current("comparedRight") + 1).arg(other)).trimmed(), line);
}

void TestRecordingUse::signalFilter()
{
    Scene scene(quiet());
    RecordingWindow *window = open(scene, QStringLiteral("values.log"), log());
    auto *model = window->findChild<RecordingModel *>();
    enter(window, "recordingFilter", QStringLiteral("signal Count > 99"));
    QCOMPARE(find<QLabel>(window, "recordingMessage")->text(), QStringLiteral("no signal database is loaded"));
    const QString database = scene.folder.path(QStringLiteral("counts.dbc"));
    save(database, "VERSION \"\"\nBU_: A\nBO_ 260 Counts: 3 A\n SG_ Count : 0|8@1+ (1,0) [0|255] \"\" A\n");
    SignalDatabases::shared()->add(database, DatabaseChannels::Both);
    enter(window, "recordingFilter", QStringLiteral("signal Count > 99"));
    const QByteArray rows = shell(QStringLiteral("awk '$3 ~ /^104#/ && substr($3,5,2) >= \"64\" {print NR}' ") + path_);
    QTRY_COMPARE(model->total(), std::uint64_t(rows.count('\n')));
    QVERIFY(rows.count('\n') > 5);
    QTRY_COMPARE(firstCell(window).toLatin1(), rows.split('\n').first());
}

void TestRecordingUse::analyses()
{
    Scene scene(quiet());
    RecordingWindow *window = open(scene, QStringLiteral("parts.log"), log());
    const auto titles = [&](const char *action) {
        const QWidgetList before = QApplication::topLevelWidgets();
        find<QAction>(window, action)->trigger();
        QStringList added;
        for (const QWidget *shown : QApplication::topLevelWidgets())
            if (!before.contains(const_cast<QWidget *>(shown)) && shown->isVisible())
                added.append(shown->windowTitle());
        return added.join(QLatin1Char('|'));
    };
    enter(window, "recordingGoTo", QStringLiteral("31"));
    click(window, "recordingMark");
    enter(window, "recordingGoTo", QStringLiteral("60"));
    find<QAction>(window, "actionSelectFromMarked")->trigger();
    for (const char *action : {"actionStatisticsOfAll", "actionSignalsOfAll", "actionPlotOfAll"}) {
        const QString title = titles(action);
        QVERIFY2(title.contains(QLatin1String("parts.log")) && !title.contains(QLatin1String("31")), qPrintable(title));
    }
    for (const char *action : {"actionStatisticsOfSelected", "actionSignalsOfSelected", "actionPlotOfSelected"}) {
        const QString title = titles(action);
        QVERIFY2(title.contains(QLatin1String("31")) && title.contains(QLatin1String("60")), qPrintable(title));
    }
    window->close(); // the others stay, with the file
    QTRY_VERIFY(!scene.window->findChild<RecordingWindow *>());
}

void TestRecordingUse::cancels()
{
    // Larger than what is indexed in a moment.
    const QString path = settings_.filePath(QStringLiteral("long.log"));
    QByteArray text;
    for (int i = 0; i < 200000; ++i)
        text += QString::asprintf("(%d.%06d) can0 123#%08X\n", 1700000000 + i / 1000, i % 1000 * 1000, i).toLatin1();
    save(path, text);
    QString error;
    RecordingIndex index(path);
    QVERIFY(index.open(&error));
    index.cancel();
    QTRY_VERIFY(index.settled());
    QVERIFY(index.state().cancelled && index.rows() < 200000);
    index.setFollow(true); // goes on
    QTRY_COMPARE(index.rows(), std::uint64_t(200000));

    FilterError wrong;
    const FrameFilter all = *FrameFilter::parse(QStringLiteral("id 123"), &wrong);
    const FrameFilter none = *FrameFilter::parse(QStringLiteral("id 7FF"), &wrong);
    RecordingFilter filter(index, all, 1);
    filter.cancel();
    QVERIFY(filter.finished());
    QTest::qWait(1);
    const std::uint64_t matches = filter.matches();
    QCOMPARE(matches, filter.rowsDone()); // what was found stays right
    QVERIFY(matches == 0 || filter.rowOf(matches - 1) == matches - 1);
    {
        RecordingSearch search(index, none, FrameFilter(), 0, false); // its end cancels it
    }
    const QString target = settings_.filePath(QStringLiteral("target.log"));
    save(target, "what was there");
    RecordingExport run(index, nullptr, 0, 200000, target, TraceFormat::Candump);
    run.cancel();
    QTRY_VERIFY(run.state().finished);
    QVERIFY(run.state().cancelled);
    QCOMPARE(shell(QStringLiteral("cat ") + target), QByteArray("what was there"));
}

// The program itself remembers the folder of what it has opened.
void TestRecordingUse::commandLine()
{
    QTemporaryDir home;
    const QString path = home.filePath(QStringLiteral("named.log"));
    save(path, log());
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.path());
    environment.insert(QStringLiteral("OSTREL_DRIVER"), QStringLiteral("simulated"));
    program.setProcessEnvironment(environment);
    program.start(QStringLiteral(OSTREL_PROGRAM), {path});
    QVERIFY(program.waitForStarted());
    const QString settings = home.filePath(QStringLiteral("Ostrel/Ostrel.conf"));
    const auto opened = [&] {
        return shell(QStringLiteral("cat %1 2>/dev/null").arg(settings)).contains(home.path().toUtf8());
    };
    QTRY_VERIFY_WITH_TIMEOUT(opened(), 30000);
    program.kill();
    program.waitForFinished();
}

QTEST_MAIN(TestRecordingUse)
#include "test_recordinguse.moc"
