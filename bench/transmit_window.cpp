// ostrel_transmit_window [SECONDS]: the transmit list in its window, beside the main one, on the simulated adapter.
// Prints the processor time with 200 entries of 5 to 1,000 ms, and the event loop's longest gap while 2,000 are edited.
#include "dialogs/listsenddlg.h"
#include "processusage.h"
#include "trialscene.h"

#include <QAction>
#include <QApplication>
#include <QPushButton>
#include <QTableView>
#include <QUndoStack>

#include <cstdio>
#include <cstdlib>
#include <functional>

namespace
{
constexpr int kSent = 200;
constexpr int kMany = 2000;
constexpr unsigned kShortestMs = 5;
constexpr unsigned kLongestMs = 1000;
constexpr int kRepetitions = 20;

TransmitList entries(int count, int running)
{
    TransmitList list;
    for (int number = 0; number < count; ++number) {
        auto entry = std::make_shared<TransmitEntry>();
        entry->serial = newTransmitSerial();
        entry->name = QStringLiteral("Message %1").arg(number);
        entry->frame.id = static_cast<std::uint32_t>(number % 0x7FF);
        entry->frame.length = kClassicDataBytes;
        entry->on = number < running;
        entry->interval =
            kShortestMs + static_cast<unsigned>(number % running) * (kLongestMs - kShortestMs) / unsigned(running - 1);
        list << entry;
    }
    return list;
}

void measureTime(int seconds, const char *what)
{
    QTest::qWait(1000);
    const double before = ProcessUsage::now().cpuSeconds;
    QTest::qWait(seconds * 1000);
    std::printf("%s: %.1f %% of a core\n", what, 100 * (ProcessUsage::now().cpuSeconds - before) / seconds);
    std::fflush(stdout);
}

void measureGaps(listSendDlg *list)
{
    TransmitModel *model = list->document()->model();
    auto *table = list->findChild<QTableView *>(QStringLiteral("tableView"));
    const auto trigger = [list](const char *action) { list->findChild<QAction *>(QLatin1String(action))->trigger(); };
    const struct {
        const char *name;
        std::function<void(int)> edit;
    } edits[] = {
        {"nothing", [](int) {}},
        {"a cell", [model](int turn) { model->setCells({turn * 90}, IntervalColumn, QString::number(700 + turn)); }},
        {"a cell of all rows",
         [&](int turn) {
             table->selectAll();
             QVector<int> rows;
             for (int row = 0; row < model->rowCount(); ++row)
                 rows << row;
             model->setCells(rows, CommentColumn, QString::number(turn));
         }},
        {"add", [&](int) { trigger("actionAdd"); }},
        {"move", [&](int) { trigger("actionUp"); }},
        {"copy", [&](int) { trigger("actionCopy"); }},
        {"undo", [&](int) { trigger("actionUndo"); }},
        {"redo", [&](int) { trigger("actionRedo"); }},
        {"remove", [&](int) { trigger("actionRemove"); }},
    };
    LoopWatch watch;
    for (const auto &[name, edit] : edits) {
        table->setCurrentIndex(model->index(model->rowCount() / 2, NameColumn));
        watch.start();
        std::vector<double> times; // of the edit and of what it has to show
        for (int turn = 0; turn < kRepetitions; ++turn) {
            QElapsedTimer timer;
            timer.start();
            edit(turn);
            QCoreApplication::processEvents();
            times.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
            QTest::qWait(30);
        }
        std::sort(times.begin(), times.end());
        std::printf("%d entries, %d times %s: median %.1f ms, longest gap %.1f ms\n", model->rowCount(), kRepetitions,
                    name, times[times.size() / 2], watch.longestMs());
        std::fflush(stdout);
    }
}
} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 20;
    SimulatorOptions options;
    options.traffic = SimulatorOptions::Traffic::Off;
    Scene scene(options);
    scene.user->openEverything();
    scene.user->trigger("actionListSend");
    auto *list = scene.window->findChild<listSendDlg *>();
    list->document()->change(entries(kSent, kSent));
    auto *start = list->findChild<QPushButton *>(QStringLiteral("pbnStart"));
    start->click();
    measureTime(seconds, "200 entries, both windows shown");
    scene.window->showMinimized();
    list->showNormal();
    measureTime(seconds, "200 entries, the list's window alone");
    scene.window->showNormal();
    list->findChild<QPushButton *>(QStringLiteral("pbnStop"))->click();
    list->document()->change(entries(kMany, kSent));
    start->click();
    measureGaps(list);
    list->close();
    scene.user->closeDevice();
    return 0;
}
