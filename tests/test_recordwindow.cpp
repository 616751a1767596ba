// The record window on the simulated adapter: what was on the bus stands in the files, and the log tells of each.
#include "analysis/recordwindow.h"
#include "bench/trialscene.h"
#include "frames/framesender.h"
#include "frames/pendingframes.h"
#include "frames/tap.h"
#include "traces/tracereader.h"

#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>
#include <QtTest>

using namespace std::chrono_literals;

class TestRecordWindow : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir settings_;

    static SimulatorOptions quiet()
    {
        SimulatorOptions options;
        options.traffic = SimulatorOptions::Traffic::Off;
        return options;
    }
    static RecordWindow *shown(Scene &scene, const QString &file)
    {
        scene.user->trigger("actionEnglish");
        scene.user->trigger("actionRecord");
        auto *window = scene.window->findChild<RecordWindow *>();
        window->findChild<QLineEdit *>("pathEdit")->setText(scene.folder.path(file));
        auto *format = window->findChild<QComboBox *>("formatCombo");
        format->setCurrentIndex(format->findData(file.section('.', -1)));
        return window;
    }
    static void send(std::uint32_t id, std::uint8_t byte, unsigned channel = 0)
    {
        RawFrame frame;
        frame.id = id;
        frame.length = 2;
        frame.data[1] = byte;
        QVERIFY(sendRaw(channel, frame, TransmitType::Normal) == SendResult::Taken);
    }
    static std::vector<RawFrame> read(const QString &path)
    {
        QFile file(path);
        QString error;
        file.open(QIODevice::ReadOnly);
        const auto reader = openTrace(&file, path, &error);
        std::vector<RawFrame> frames(1000);
        frames.resize(reader ? static_cast<std::size_t>(reader->read(frames.data(), 1000)) : 0);
        return frames;
    }
    static QStringList texts(const std::vector<RawFrame> &frames)
    {
        QStringList made;
        for (const RawFrame &frame : frames)
            made << QString::asprintf("%X %d", frame.id, frame.data[1]);
        return made;
    }

private slots:
    void initTestCase() { QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings_.path()); }
    void init() { QSettings().clear(); }
    void cleanup() { takePendingFrames(); }

    void filesHoldWhatPassed_data()
    {
        QTest::addColumn<QString>("file");
        QTest::newRow("blf") << "drive.blf";
        QTest::newRow("candump") << "drive.log";
        QTest::newRow("asc") << "drive.asc";
    }
    void filesHoldWhatPassed()
    {
        QFETCH(QString, file);
        Scene scene(quiet());
        QVERIFY(scene.user->openEverything());
        RecordWindow *window = shown(scene, file);
        TapReader tap;
        window->findChild<QPushButton *>("beginBtn")->click();
        QVERIFY(window->isRunning());
        window->close(); // it goes on
        for (int i = 0; i < 40; ++i)
            send(0x100, std::uint8_t(i));
        QTRY_COMPARE(scene.user->received(), 40u);
        TapBatch batch;
        tap.take(batch, 0ms);
        scene.user->trigger("actionRecord");
        QVERIFY(window->isVisible());
        window->findChild<QPushButton *>("endBtn")->click();
        QVERIFY(!window->isRunning());
        const std::vector<RawFrame> written = read(scene.folder.path(file));
        QCOMPARE(written.size(), batch.frames.size());
        for (std::size_t i = 0; i < written.size(); ++i)
            QVERIFY(sameFrame(written[i], batch.frames[i]));
        const QString log = scene.user->log();
        QVERIFY(log.contains("Recording to " + QDir::toNativeSeparators(scene.folder.path(file))));
        QVERIFY(log.contains(file + ", 80 frames"));
        QVERIFY(log.contains("Recording ended: 80 frames, 0 lost"));
        scene.user->closeDevice();
    }

    void whatAFormatCannotHoldIsTold()
    {
        SimulatorOptions options = quiet();
        options.errorOneIn = 8;
        Scene scene(options);
        QVERIFY(scene.user->openEverything());
        RecordWindow *window = shown(scene, "drive.csv");
        window->findChild<QPushButton *>("beginBtn")->click();
        for (int i = 0; i < 80; ++i)
            send(0x100, std::uint8_t(i));
        QTRY_VERIFY(scene.user->log().contains(" error frames")); // they are asked for now and then
        window->findChild<QPushButton *>("endBtn")->click();
        QVERIFY(scene.user->log().contains("The format cannot hold: error frame ("));
        scene.user->closeDevice();
    }

    // From a start to a stop, with what was before, through a filter; the next start begins the next file.
    void triggersBeginAndEndFiles()
    {
        Scene scene(quiet());
        QVERIFY(scene.user->openEverything());
        RecordWindow *window = shown(scene, "row.log");
        window->findChild<QLineEdit *>("filterEdit")->setText("tx and not id 7FF");
        window->findChild<QComboBox *>("startKind")->setCurrentIndex(1); // identifiers
        window->findChild<QComboBox *>("startChannel")->setCurrentIndex(2);
        window->findChild<QLineEdit *>("startIds")->setText("200..2FF");
        window->findChild<QComboBox *>("stopKind")->setCurrentIndex(2); // and data
        window->findChild<QLineEdit *>("stopMask")->setText("?? 0F");
        window->findChild<QSpinBox *>("beforeFramesSpin")->setValue(1);
        window->findChild<QPushButton *>("beginBtn")->click();
        QVERIFY(window->findChild<QLabel *>("stateLabel")->text().startsWith("Waiting for the start"));
        for (int round = 0; round < 2; ++round) {
            send(0x100, 1);
            send(0x235, 2); // on the other channel
            send(0x234, 3, 1);
            send(0x7FF, 15);
            send(0x102, 15);
            send(0x103, 4);
        }
        QTRY_COMPARE(scene.user->log().count("Recorded: "), 2);
        scene.window.reset(); // ends the recording
        const QStringList expected = {"235 2", "234 3", "102 15"};
        QCOMPARE(texts(read(scene.folder.path("row_0001.log"))), expected);
        QCOMPARE(texts(read(scene.folder.path("row_0002.log"))), expected);
        QVERIFY(!QFile::exists(scene.folder.path("row_0003.log")));
        scene.window = std::make_unique<MainWindow>();
        scene.user = std::make_unique<WindowDriver>(*scene.window);
        scene.user->trigger("actionRecord"); // remembered
        QCOMPARE(scene.window->findChild<QLineEdit *>("startIds")->text(), QString("200..2FF"));
        QCOMPARE(scene.window->findChild<QComboBox *>("startChannel")->currentIndex(), 2);
        QCOMPARE(scene.window->findChild<QLineEdit *>("filterEdit")->text(), QString("tx and not id 7FF"));
    }

    // A file that is there already is replaced only when the user says so; by the save dialog once, not for ever.
    void whatIsThereIsAskedFor()
    {
        Scene scene(quiet());
        RecordWindow *window = shown(scene, "drive.blf");
        auto *path = window->findChild<QLineEdit *>("pathEdit");
        auto *begin = window->findChild<QPushButton *>("beginBtn");
        const auto begins = [&] {
            begin->click();
            const bool begun = window->isRunning();
            window->findChild<QPushButton *>("endBtn")->click();
            return begun;
        };
        scene.folder.write("drive.log", "old");
        path->setText(scene.folder.path("drive.log")); // the format follows
        ModalAnswer &answer = scene.user->modal();
        QVERIFY(!begins());
        QVERIFY(answer.takeMessages().value(0).contains("exists already"));
        QCOMPARE(scene.folder.read("drive.log"), QByteArray("old"));
        answer.on<QFileDialog>([&](QFileDialog *dialog) {
            dialog->setOption(QFileDialog::DontConfirmOverwrite);
            dialog->selectFile("drive.log");
            static_cast<QDialog *>(dialog)->accept();
        });
        window->findChild<QPushButton *>("browseBtn")->click();
        QVERIFY(begins());
        QCOMPARE(answer.takeMessages(), QStringList());
        QCOMPARE(scene.folder.read("drive.log"), QByteArray());
        QVERIFY(!begins());
        window->findChild<QSpinBox *>("sizeSpin")->setValue(1); // numbers: none is replaced
        QVERIFY(begins() && begins());
        QCOMPARE(answer.takeMessages().size(), 1);
        window->findChild<QSpinBox *>("keepSpin")->setValue(2); // but some go
        QVERIFY(!begins());
        QVERIFY(answer.takeMessages().value(0).contains("2 numbered files"));
    }

    // The file's start is the moment of Begin, whenever the device is opened.
    void timesCountFromTheBeginning()
    {
        Scene scene(quiet());
        RecordWindow *window = shown(scene, "drive.blf");
        window->findChild<QPushButton *>("beginBtn")->click();
        const std::chrono::nanoseconds begun = std::chrono::steady_clock::now().time_since_epoch();
        QTest::qWait(20);
        QVERIFY(scene.user->openEverything());
        RawFrame frame;
        frame.time = 1'000'000;
        publishToTap(&frame, 1);
        window->findChild<QPushButton *>("endBtn")->click();
        const std::vector<RawFrame> written = read(scene.folder.path("drive.blf"));
        QCOMPARE(written.size(), std::size_t(1));
        QVERIFY(written[0].time >= frame.time + deviceOpenedAt() - begun.count());
        scene.user->closeDevice();
    }

    void whatCannotBeMeantIsRefused_data()
    {
        QTest::addColumn<QByteArray>("field");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("hint");
        QTest::newRow("filter") << QByteArray("filterEdit") << "id 100 and"
                                << "Filter, character ";
        QTest::newRow("folder") << QByteArray("pathEdit") << "/nowhere/at/all.blf"
                                << "There is no such folder: ";
        QTest::newRow("range") << QByteArray("startIds") << "300..200"
                               << "A range of identifiers looks like";
        QTest::newRow("too large") << QByteArray("startIds") << "20000000"
                                   << "A range of identifiers looks like";
        QTest::newRow("mask") << QByteArray("startMask") << "0G"
                              << "Data look like";
    }
    void whatCannotBeMeantIsRefused()
    {
        QFETCH(QByteArray, field);
        QFETCH(QString, text);
        QFETCH(QString, hint);
        Scene scene(quiet());
        RecordWindow *window = shown(scene, "never.blf");
        window->findChild<QComboBox *>("startKind")->setCurrentIndex(field.startsWith("start") ? 2 : 0);
        window->findChild<QLineEdit *>(field)->setText(text);
        window->findChild<QPushButton *>("beginBtn")->click();
        QVERIFY(!window->isRunning());
        QVERIFY(window->findChild<QLabel *>("hintLabel")->text().startsWith(hint));
        QVERIFY(!QFile::exists(scene.folder.path("never.blf")));
    }
};

QTEST_MAIN(TestRecordWindow)
#include "test_recordwindow.moc"
