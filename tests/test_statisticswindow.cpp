// The statistics window on the simulated adapter, as a user has it: beside the main window, with traffic.
#include "analysis/bitmap.h"
#include "analysis/identifiermodel.h"
#include "analysis/signaldatabases.h"
#include "analysis/statisticswindow.h"
#include "analysis/supervision.h"
#include "bench/trialscene.h"
#include "device/language.h"
#include "frames/framesender.h"
#include "frames/pendingframes.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QTableView>
#include <QtTest>

class TestStatisticsWindow : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir settings_;

    static SimulatorOptions traffic(bool on)
    {
        SimulatorOptions options;
        options.traffic = on ? SimulatorOptions::Traffic::BuiltIn : SimulatorOptions::Traffic::Off;
        return options;
    }
    // Opened from the menu.
    static StatisticsWindow *shown(Scene &scene)
    {
        scene.user->trigger("actionEnglish");
        scene.user->trigger("actionStatistics");
        return scene.window->findChild<StatisticsWindow *>();
    }
    static void send(std::uint32_t id, std::initializer_list<std::uint8_t> data)
    {
        RawFrame frame;
        frame.id = id;
        frame.length = static_cast<std::uint8_t>(data.size());
        std::copy(data.begin(), data.end(), frame.data);
        QVERIFY(sendRaw(0, frame, TransmitType::Normal) == SendResult::Taken);
    }
    static quint64 counted(const IdentifierModel &model, const QString &direction)
    {
        quint64 sum = 0;
        for (int row = 0; row < model.rowCount(); ++row)
            if (model.text(row, IdentifierModel::DirectionColumn) == direction)
                sum += model.text(row, IdentifierModel::CountColumn).toULongLong();
        return sum;
    }
    static QStringList column(const IdentifierModel &model, int column)
    {
        QStringList texts;
        for (int row = 0; row < model.rowCount(); ++row)
            texts << model.text(row, column);
        return texts;
    }

private slots:
    void initTestCase() { QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings_.path()); }
    void init() { QSettings().clear(); }
    void cleanup() { takePendingFrames(); }

    // Closed and opened again while frames come; then everything of a fresh count is everything the main window has.
    void countsAsTheMainWindowDoes()
    {
        Scene scene(traffic(true));
        StatisticsWindow *window = shown(scene);
        QVERIFY(window && window->isVisible());
        QVERIFY(scene.user->openEverything());
        auto *model = window->findChild<IdentifierModel *>();
        for (int round = 0; round < 5; ++round) {
            QTRY_VERIFY(model->rowCount() > 5);
            window->close();
            window->open();
            QVERIFY(model->shown().identifiers.size() < 5);
        }
        scene.user->closeDevice();
        window->close();
        QTest::qWait(500); // until the main window has shown what came
        const quint64 before[] = {scene.user->received(), scene.user->transmitted()};
        window->open();
        QVERIFY(scene.user->openEverything());
        QTRY_VERIFY(model->rowCount() > 10);
        scene.user->click("ch1SendBtn");
        QTRY_VERIFY(scene.user->transmitted() > before[1]);
        QTRY_VERIFY(model->shown().channels.at(1).loadNow().value_or(0) > 0.01);
        scene.user->closeDevice();
        scene.user->openEverything(); // the adapter's clock begins anew; counting goes on
        QTest::qWait(300);
        scene.user->closeDevice();
        QTRY_COMPARE(counted(*model, "Rx"), scene.user->received() - before[0]);
        QTRY_COMPARE(counted(*model, "Tx"), scene.user->transmitted() - before[1]);
        QVERIFY(model->shown().channels.at(1).loadPeak().value() < 1.01);
        QCOMPARE(model->shown().lost, std::uint64_t(0));
        QTRY_VERIFY(window->findChild<QLabel *>("stateLabel")->text().contains("unknown")); // nothing is open
    }

    void rowsAreSortedFoundCopiedAndFrozen()
    {
        Scene scene(traffic(false));
        StatisticsWindow *window = shown(scene);
        QVERIFY(scene.user->openEverything());
        auto *model = window->findChild<IdentifierModel *>();
        auto *view = window->findChild<QTableView *>("identifierTable");
        for (int round = 0; round < 12; ++round) {
            send(0x300, {1, 2});
            if (round < 2)
                send(0x100, {std::uint8_t(0x10 + round), 2, 3});
            send(0x7FF, {std::uint8_t(round * 8)});
        }
        QTRY_COMPARE(counted(*model, "Rx"), 26u); // of channel 2
        auto *search = window->findChild<QLineEdit *>("searchEdit");
        QTest::keyClicks(search, "rx ch2");
        QCOMPARE(model->rowCount(), 3);
        QCOMPARE(column(*model, IdentifierModel::IdColumn), QStringList({"0x300", "0x100", "0x7FF"})); // as first seen
        const auto sorted = [&](int by, Qt::SortOrder order) {
            view->sortByColumn(by, order);
            return column(*model, IdentifierModel::IdColumn).join(' ');
        };
        QCOMPARE(sorted(IdentifierModel::CountColumn, Qt::AscendingOrder), QString("0x100 0x300 0x7FF"));  // 2 < 12
        QCOMPARE(sorted(IdentifierModel::CountColumn, Qt::DescendingOrder), QString("0x300 0x7FF 0x100")); // stable
        QCOMPARE(sorted(IdentifierModel::IdColumn, Qt::DescendingOrder), QString("0x7FF 0x300 0x100"));
        QCOMPARE(sorted(IdentifierModel::LengthColumn, Qt::AscendingOrder), QString("0x7FF 0x300 0x100"));
        QCOMPARE(sorted(IdentifierModel::DataColumn, Qt::AscendingOrder), QString("0x300 0x100 0x7FF"));

        view->selectRow(1); // 0x100
        QCOMPARE(window->findChild<BitMap *>()->movedText(), QString("0.0"));
        QVERIFY(!model->data(model->index(1, IdentifierModel::DataColumn), Qt::UserRole + 1).toByteArray().isEmpty());
        view->sortByColumn(IdentifierModel::IdColumn, Qt::AscendingOrder);
        QCOMPARE(view->currentIndex().row(), 0); // the selection goes with its identifier
        view->setFocus();
        QTest::keyClick(view, Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QApplication::clipboard()->text().section('\t', 0, 6),
                 QString("2\tRx\t0x100\tStandard\t3\t2\t11 02 03"));

        search->clear();
        const QString file = scene.folder.path("export.csv");
        QVERIFY(window->exportCsv(file));
        const QStringList lines = QString::fromUtf8(scene.folder.read("export.csv")).split('\n');
        QCOMPARE(lines.size(), 1 + 6 + 1); // sent and received
        QVERIFY(lines[0].startsWith("\uFEFFChannel,Direction,ID,Kind,Length,Count,Data,Period (ms)"));
        QVERIFY(!window->exportCsv(scene.folder.path("none/export.csv")));
        QVERIFY(scene.user->log().contains("Cannot write"));

        auto *freeze = window->findChild<QPushButton *>("freezeBtn");
        freeze->click();
        send(0x300, {1, 2});
        QTest::qWait(3 * StatisticsWindow::kRefreshMs);
        QCOMPARE(counted(*model, "Rx"), 26u);
        freeze->click();
        QTRY_COMPARE(counted(*model, "Rx"), 27u);
        window->findChild<QPushButton *>("resetBtn")->click();
        QCOMPARE(model->rowCount(), 0);
        scene.user->closeDevice();
    }

    // Names come and go with the databases, by channel, and are found, sorted and exported.
    void messagesHaveTheNamesOfTheDatabases()
    {
        Scene scene(traffic(false));
        scene.folder.write("one.dbc", "BO_ 768 Pump: 2 X\nBO_ 2566844158 Group: 8 X\n"
                                      "BA_DEF_ BO_ \"VFrameFormat\" ENUM \"StandardCAN\",\"ExtendedCAN\",\"J1939PG\";\n"
                                      "BA_ \"VFrameFormat\" BO_ 2566844158 2;\n");
        StatisticsWindow *window = shown(scene);
        QVERIFY(scene.user->openEverything());
        auto *model = window->findChild<IdentifierModel *>();
        const QHeaderView *header = window->findChild<QTableView *>("identifierTable")->horizontalHeader();
        send(0x100, {1});
        send(0x300, {1, 2});
        RawFrame frame;
        frame.id = 0x18FEEE55; // as in the database, but for the source
        frame.extended = true;
        QVERIFY(sendRaw(0, frame, TransmitType::Normal) == SendResult::Taken);
        QTRY_COMPARE(model->rowCount(), 6);
        QVERIFY(header->isSectionHidden(IdentifierModel::MessageColumn));
        const auto databases = SignalDatabases::shared();
        databases->add(scene.folder.path("one.dbc"), DatabaseChannels::First);
        QVERIFY(!header->isSectionHidden(IdentifierModel::MessageColumn));
        window->findChild<QLineEdit *>("searchEdit")->setText("CH1");
        QCOMPARE(column(*model, IdentifierModel::MessageColumn), QStringList({"", "Pump", "Group"}));
        model->sort(IdentifierModel::MessageColumn, Qt::DescendingOrder);
        QCOMPARE(column(*model, IdentifierModel::MessageColumn), QStringList({"Pump", "Group", ""}));
        window->findChild<QLineEdit *>("searchEdit")->setText("pump");
        QCOMPARE(column(*model, IdentifierModel::IdColumn), QStringList("0x300")); // not on channel 2
        QVERIFY(model->csv().contains("Supervision,Message\n") && model->csv().endsWith(",Pump\n"));
        databases->remove(scene.folder.path("one.dbc"));
        QCOMPARE(model->rowCount(), 0);
        scene.user->closeDevice();
    }

    void supervisionMarksWhatIsMissingAndNew()
    {
        Scene scene(traffic(false));
        StatisticsWindow *window = shown(scene);
        QVERIFY(scene.user->openEverything());
        auto *model = window->findChild<IdentifierModel *>();
        Supervision &supervision = window->supervision();
        // A recording to learn from: a message every 10 ms that the bus has, and one that it has not.
        QByteArray log;
        for (int i = 0; i < 50; ++i)
            log += QString::asprintf("(1.%03d000) can0 123#00\n(1.%03d000) can0 456#00\n", i * 10, i * 10).toUtf8();
        scene.folder.write("learn.log", log);
        supervision.readRecording(scene.folder.path("learn.log"));
        QTRY_COMPARE(supervision.messages(), std::size_t(2));
        QVERIFY(supervision.save(scene.folder.path("baseline.json")));
        scene.folder.write("bad.json", "{");
        QVERIFY(!supervision.load(scene.folder.path("bad.json")));
        QVERIFY(supervision.load(scene.folder.path("baseline.json")));
        RawFrame frame;
        for (const std::uint32_t id : {0x123, 0x789}) {
            frame.id = id;
            QVERIFY(sendRaw(1, frame, TransmitType::Normal) == SendResult::Taken);
        }
        const auto marked = [&](const QString &id) {
            for (int row = 0; row < model->rowCount(); ++row)
                if (model->text(row, IdentifierModel::IdColumn) == id && model->key(row).channel == 1)
                    return model->text(row, IdentifierModel::SupervisionColumn);
            return QString("no row");
        };
        QTRY_COMPARE(marked("0x456"), QString("missing")); // never seen, a row of its own
        QTRY_COMPARE(marked("0x123"), QString("missing"));
        QCOMPARE(marked("0x789"), QString("new"));
        QTRY_VERIFY(scene.user->log().contains("Supervision: channel 1 Rx 0x456 missing"));
        QVERIFY(scene.user->log().contains("Supervision: channel 1 Rx 0x789 new"));
        supervision.stop();
        QCOMPARE(marked("0x456"), QString("no row"));
        scene.user->closeDevice();
    }
};

QTEST_MAIN(TestStatisticsWindow)
#include "test_statisticswindow.moc"
