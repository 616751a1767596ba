// The statistics of recordings in their window, with databases as the baseline; error frames on their whole way, from
// the simulated wire to the window, the operation log and a recording.
#include "analysis/channelpanel.h"
#include "analysis/identifiermodel.h"
#include "analysis/liverecording.h"
#include "analysis/signaldatabases.h"
#include "analysis/statisticswindow.h"
#include "analysis/supervision.h"
#include "bench/trialscene.h"
#include "device/language.h"
#include "frames/pendingframes.h"

#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QSettings>
#include <QtTest>

class TestRecordedStatistics : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir settings_;

    static QString shownNumber(const StatisticsWindow &window, int channel, int row, KindModel::Column column)
    {
        const auto *panel = window.findChild<ChannelPanel *>(QStringLiteral("channelPanel%1").arg(channel));
        const auto *kinds = panel ? panel->findChild<KindModel *>() : nullptr;
        return kinds ? kinds->data(kinds->index(row, column), Qt::DisplayRole).toString() : QStringLiteral("no panel");
    }
    static int rowOf(const IdentifierModel &model, const QString &id)
    {
        for (int row = 0; row < model.rowCount(); ++row)
            if (model.text(row, IdentifierModel::IdColumn) == id)
                return row;
        return -1;
    }
    // Every 10 ms 0x123, every 20 ms 0x456 sent on channel 1; ten extended frames on channel 4.
    static RecordingPart recording(TestFolder &folder)
    {
        QByteArray log;
        for (int i = 0; i < 100; ++i) {
            log += QString::asprintf("(1.%02d0000) can0 123#%02X\n", i, i).toUtf8();
            if (i % 2 == 0)
                log += QString::asprintf("(1.%02d1000) can0 456#R T\n", i).toUtf8();
            if (i % 10 == 0)
                log += QString::asprintf("(1.%02d2000) can3 18FF0000##155\n", i).toUtf8();
        }
        folder.write("drive.log", log);
        auto index = std::make_shared<RecordingIndex>(folder.path("drive.log"));
        QString error;
        index->open(&error);
        index->waitForMore(159, std::chrono::seconds(10));
        return {index, 0, index->rows()};
    }

private slots:
    void initTestCase() { QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings_.path()); }
    void init() { QSettings().clear(); }
    void cleanup() { takePendingFrames(); }

    void countsWhatIsRecorded()
    {
        TestFolder folder;
        setLanguageCode(English);
        RecordingPart part = recording(folder);
        QCOMPARE(part.end, std::uint64_t(160));
        const QPointer<StatisticsWindow> window = StatisticsWindow::openRecording(part, nullptr);
        QTRY_VERIFY(window->hasReadAll() && window->findChild<QProgressBar *>()->isHidden());
        const auto &model = *window->findChild<IdentifierModel *>();
        QCOMPARE(window->windowTitle(), QString("Bus statistics: drive.log"));
        constexpr int kAll = KindModel::kRows - 1;
        QCOMPARE(shownNumber(*window, 1, kAll, KindModel::RxTotal), QString("100"));
        QCOMPARE(shownNumber(*window, 1, int(FrameKind::Remote), KindModel::TxTotal), QString("50"));
        QCOMPARE(shownNumber(*window, 1, kAll, KindModel::RxRate), QString("101")); // 100 in 0.99 s
        QCOMPARE(shownNumber(*window, 4, int(FrameKind::FdSwitched), KindModel::RxTotal), QString("10"));
        QCOMPARE(model.text(rowOf(model, "0x123"), IdentifierModel::CountColumn), QString("100"));
        QCOMPARE(model.text(rowOf(model, "0x18FF0000"), IdentifierModel::MeanColumn), QString("100.000"));
        QVERIFY(window->findChild<QLabel *>("stateLabel")->text().contains("unknown"));
        const QString load = window->findChild<QLabel *>("loadLabel")->text();
        QVERIFY2(load.startsWith("Bus load: mean ") && !load.contains("unknown"), qPrintable(load));
        QVERIFY(window->findChild<QPushButton *>("freezeBtn")->isHidden());

        window->findChild<QPushButton *>("resetBtn")->click();
        QTRY_VERIFY(window->hasReadAll() && model.rowCount() == 3);
        QCOMPARE(model.text(rowOf(model, "0x123"), IdentifierModel::CountColumn), QString("100"));
        window->close();
        QTRY_VERIFY(!window);

        part.first = 5;
        part.end = 15;
        const QPointer<StatisticsWindow> ten = StatisticsWindow::openRecording(part, nullptr);
        QCOMPARE(ten->windowTitle(), QString("Bus statistics: drive.log, frames 6 to 15"));
        QTRY_VERIFY(ten->hasReadAll());
        ten->refresh();
        std::uint64_t frames = 0;
        for (const IdentifierStatistics &entry : ten->findChild<IdentifierModel *>()->shown().identifiers)
            frames += entry.count;
        QCOMPARE(frames, std::uint64_t(10));
        ten->close();
    }

    // The menu's own window is not mistaken for one of a recording, whose parent the main window may be.
    void databasesAreTheBaseline()
    {
        Scene scene(SimulatorOptions{});
        scene.user->trigger("actionEnglish");
        QStringList lines;
        StatisticsWindow *window = StatisticsWindow::openRecording(recording(scene.folder), scene.window.get());
        connect(window, &StatisticsWindow::log, this, [&](const QString &line) { lines << line; });
        QTRY_VERIFY(window->hasReadAll());
        window->supervision().useDatabases();
        QVERIFY(lines.join('\n').contains("load a signal database first"));

        // 0x123 as it is, 0x200 never there, 0x201 without a cycle, the group of 18FF0000 twice as often as it is.
        scene.folder.write("cycles.dbc",
                           "BU_: A\nBO_ 291 Engine: 8 A\nBO_ 512 Gone: 8 A\nBO_ 513 Seldom: 8 A\n"
                           "BO_ 2566848766 Group: 8 A\nBA_DEF_ BO_ \"GenMsgCycleTime\" INT 0 10000;\n"
                           "BA_DEF_ BO_ \"VFrameFormat\" ENUM \"StandardCAN\",\"ExtendedCAN\",\"reserved\","
                           "\"J1939PG\";\nBA_DEF_DEF_ \"GenMsgCycleTime\" 0;\n"
                           "BA_ \"GenMsgCycleTime\" BO_ 291 10;\nBA_ \"GenMsgCycleTime\" BO_ 512 50;\n"
                           "BA_ \"GenMsgCycleTime\" BO_ 2566848766 50;\nBA_ \"VFrameFormat\" BO_ "
                           "2566848766 3;\n");
        SignalDatabases::shared()->add(scene.folder.path("cycles.dbc"), DatabaseChannels::Both);
        window->supervision().useDatabases();
        QCOMPARE(window->supervision().messages(), std::size_t(8)); // four, on both channels
        QTRY_VERIFY(window->hasReadAll());
        window->refresh();
        const auto &model = *window->findChild<IdentifierModel *>();
        const auto mark = [&](const QString &id) {
            return model.text(rowOf(model, id), IdentifierModel::SupervisionColumn);
        };
        QVERIFY(!mark("0x123").contains("late") && !mark("0x123").contains("early"));
        QVERIFY2(mark("0x18FF0000").contains("late"), qPrintable(mark("0x18FF0000")));
        QVERIFY2(mark("0x200").contains("missing"), qPrintable(mark("0x200")));
        QCOMPARE(rowOf(model, "0x201"), -1);
        QVERIFY(!mark("0x456").contains("new")); // sent: the database does not say
        QVERIFY2(lines.join('\n').contains("Supervision: channel 1 Rx 0x200 missing"), qPrintable(lines.join('\n')));

        scene.user->trigger("actionStatistics");
        QCOMPARE(scene.window->findChildren<StatisticsWindow *>().size(), 2);
        QVERIFY(window->isVisible());
    }

    void errorFramesReachWindowLogAndRecording()
    {
        qputenv("OSTREL_SIM_ERRORS", "10");
        Scene scene(SimulatorOptions::fromEnvironment());
        qunsetenv("OSTREL_SIM_ERRORS");
        scene.user->trigger("actionEnglish");
        scene.user->trigger("actionStatistics");
        const auto *window = scene.window->findChild<StatisticsWindow *>();
        for (const TraceFormat format : {TraceFormat::Blf, TraceFormat::Asc}) {
            RecorderSettings settings;
            settings.path = scene.folder.path("errors");
            settings.format = format;
            window->findChild<QPushButton *>("resetBtn")->click();
            std::uint64_t errors[kChannelCount] = {};
            {
                LiveRecording recording(settings, FrameFilter());
                QVERIFY(scene.user->openEverything());
                const auto counted = [&](int channel) {
                    return shownNumber(*window, channel, int(FrameKind::Error), KindModel::RxTotal).toULongLong();
                };
                QTRY_VERIFY(counted(1) > 10 && counted(2) > 10);
                scene.user->closeDevice();
                QTest::qWait(1000); // what is on its way
                for (unsigned channel = 0; channel < kChannelCount; ++channel)
                    errors[channel] = counted(static_cast<int>(channel) + 1);
                recording.end();
            }
            QFile file(settings.path);
            QVERIFY(file.open(QIODevice::ReadOnly));
            QString error;
            const auto reader = openTrace(&file, format, &error);
            QVERIFY2(reader, qPrintable(error));
            std::vector<RawFrame> frames(100000);
            frames.resize(static_cast<std::size_t>(reader->read(frames.data(), static_cast<int>(frames.size()))));
            for (const RawFrame &frame : frames)
                if (frame.error)
                    --errors[frame.channel - 1];
            QCOMPARE(errors[0], std::uint64_t(0));
            QCOMPARE(errors[1], std::uint64_t(0));
        }
        const QString log = scene.user->log();
        QVERIFY2(log.contains("error frames (stuff error)"), qPrintable(log));
    }
};

QTEST_MAIN(TestRecordedStatistics)
#include "test_recordedstatistics.moc"
