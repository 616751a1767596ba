// How long the window of a recording keeps its user waiting: ostrel_recording_trial FILE EXPRESSION. Off-screen or on a
// screen; needs a file that is made for it (bench/make-candump-log). Prints a table; nothing is judged.
#include "analysis/recordingmodel.h"
#include "analysis/recordingview.h"
#include "analysis/recordingwindow.h"
#include "bench/trialscene.h"

#include <QApplication>
#include <QLineEdit>
#include <QProgressBar>
#include <QSettings>
#include <QTemporaryDir>

#include <cstdio>
#include <ctime>
#include <random>

namespace
{
constexpr int kJumps = 300;
constexpr int kLongestMs = 600000;

double processorMs()
{
    return static_cast<double>(std::clock()) * 1000 / CLOCKS_PER_SEC;
}

// Runs the event loop until it is done, and prints what it cost.
template <typename Done> void measure(const char *what, LoopWatch *watch, const Done &done)
{
    QElapsedTimer timer;
    timer.start();
    const double before = processorMs();
    watch->start();
    const bool ended = QTest::qWaitFor(done, kLongestMs);
    std::printf("%-28s %9.1f ms wall %9.1f ms processor %8.2f ms longest gap of the event loop%s\n", what,
                static_cast<double>(timer.nsecsElapsed()) / 1e6, processorMs() - before, watch->longestMs(),
                ended ? "" : ", given up");
}
} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    if (argc != 3) {
        std::fputs("ostrel_recording_trial FILE EXPRESSION\n", stderr);
        return 2;
    }
    QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    LoopWatch watch;
    measure("nothing, 1 s", &watch, [timer = QElapsedTimer()]() mutable {
        if (!timer.isValid())
            timer.start();
        return timer.elapsed() > 1000;
    });
    QElapsedTimer opening;
    opening.start();
    QString error;
    std::unique_ptr<RecordingWindow> window(
        RecordingWindow::openFile(QString::fromLocal8Bit(argv[1]), nullptr, &error));
    if (!window) {
        std::fprintf(stderr, "%s\n", qPrintable(error));
        return 1;
    }
    auto *model = window->findChild<RecordingModel *>();
    auto *view = window->findChild<RecordingView *>();
    measure("first rows painted", &watch, [&] { return model->rowCount() > 0; });
    std::printf("%-28s %9.1f ms\n", "from the call to there", static_cast<double>(opening.nsecsElapsed()) / 1e6);
    measure("index", &watch, [&] { return window->index().settled(); });
    std::mt19937_64 random(1);
    const auto jumps = [&](const char *what) {
        double longest = 0;
        int left = kJumps;
        measure(what, &watch, [&] {
            QElapsedTimer timer;
            timer.start();
            view->setCurrent(random() % model->total());
            view->viewport()->repaint();
            longest = std::max(longest, static_cast<double>(timer.nsecsElapsed()) / 1e6);
            return --left == 0;
        });
        std::printf("%-28s %9.2f ms\n", "the longest of them", longest);
    };
    jumps("jumps, painted");
    auto *filter = window->findChild<QLineEdit *>(QStringLiteral("recordingFilter"));
    filter->setText(QString::fromLocal8Bit(argv[2]));
    QTest::keyClick(filter, Qt::Key_Return);
    auto *progress = window->findChild<QProgressBar *>(QStringLiteral("recordingProgress"));
    measure("filter, first rows", &watch, [&] { return model->total() > 0; });
    measure("filter, complete", &watch, [&] { return !progress->isVisible(); });
    std::printf("%-28s %9llu\n", "matches", static_cast<unsigned long long>(model->total()));
    if (model->total() > 0)
        jumps("jumps among them, painted");
    return 0;
}
