// What the window does with a refresh round of two saturated channels: number, count, capture, show and paint.
#include "benchframes.h"

#include "app/displayfilter.h"
#include "app/frametableview.h"
#include "app/receiveview.h"
#include "app/siftdialog.h"
#include "frames/framebuilder.h"
#include "frames/pendingframes.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

namespace
{
constexpr int kFdFrames = 1 << 0;
constexpr int kCapture = 1 << 1;
constexpr int kMerge = 1 << 2;
constexpr int kFilter = 1 << 3;

// A view as large as the window's at 1920x1080.
class Bench
{
public:
    Bench(uint limit, int options) : options_(options)
    {
        view_.resize(1900, 700);
        view_.show();
        view_.setListLimit(limit);
        view_.setMerge(options & kMerge);
        if (options & kCapture)
            startCapture();
    }

    // Texts made anew: a round also releases the last one's.
    void handOver()
    {
        const int distinct = options_ & kMerge ? kMergedIds : 2048;
        appendPendingFrames(finishedItems(kRound, distinct, options_ & kFdFrames));
    }
    void round()
    {
        view_.refresh();
        QCoreApplication::processEvents();
    }
    void fill(int rows)
    {
        while (view_.model()->rowCount() < rows && !(options_ & kMerge)) {
            const int before = view_.model()->rowCount();
            handOver();
            round();
            if (view_.model()->rowCount() == before)
                break;
        }
    }
    void hideEveryOtherId()
    {
        QStringList ids;
        for (int id = 0; id < 2048; id += 2)
            ids << "0x" + QString::number(id, 16).toUpper().rightJustified(3, '0');
        view_.findChild<DisplayFilter *>()->setCondition(ids, IdColumn);
    }
    void showAll() { view_.findChild<DisplayFilter *>()->clearAll(); }
    ReceiveView &view() { return view_; }

private:
    static constexpr int kMergedIds = 1000;

    void startCapture()
    {
        const QString path = folder_.filePath("bench.csv");
        QTimer::singleShot(0, [path] {
            QWidget *dialog = QApplication::activeModalWidget();
            dialog->findChild<QLineEdit *>("pathEdit")->setText(path);
            dialog->findChild<QPushButton *>("okBtn")->click();
        });
        view_.findChild<QCheckBox *>("checkBox")->click();
    }

    const int options_;
    const QTemporaryDir folder_;
    ReceiveView view_;
};

void refreshRound(benchmark::State &state, int options)
{
    const int limit = static_cast<int>(state.range(0));
    Bench bench(static_cast<uint>(limit), options);
    bench.fill(limit);
    if (options & kFilter)
        bench.hideEveryOtherId(); // so the rounds move hidden rows, too
    for (auto _ : state) {
        state.PauseTiming();
        bench.handOver();
        state.ResumeTiming();
        bench.round();
    }
    countFrames(state, kRound);
}

// The plain work on the same texts to compare with: every text copied once.
void copyTexts(benchmark::State &state)
{
    const QList<ModelItem> items = finishedItems(kRound, 2048, false);
    for (auto _ : state) {
        for (const ModelItem &item : items) {
            for (int column = 0; column < FrameColumnCount; ++column) {
                const QString &text = columnText(item, static_cast<FrameColumn>(column));
                benchmark::DoNotOptimize(QString(text.constData(), text.size()));
            }
        }
    }
    countFrames(state, kRound);
}

// The table painted whole, nothing else.
void paintTable(benchmark::State &state, int options)
{
    Bench bench(1000, options);
    bench.fill(1000);
    QWidget *viewport = bench.view().findChild<FrameTableView *>()->viewport();
    for (auto _ : state)
        viewport->repaint();
}

// A right click on a column of many different texts, up to the pop-up painted.
void openFilter(benchmark::State &state)
{
    const int values = static_cast<int>(state.range(0));
    Bench bench(static_cast<uint>(values), 0);
    bench.fill(values);
    FrameTableView *table = bench.view().findChild<FrameTableView *>();
    SiftDialog *popup = bench.view().findChild<SiftDialog *>();
    for (auto _ : state) {
        emit table->customContextMenuRequested(QPoint(2, 2));
        QMenu *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        menu->actions().first()->trigger();
        menu->close();
        QCoreApplication::processEvents();
        if (!popup->isVisible())
            state.SkipWithError("no pop-up");
        state.PauseTiming();
        popup->hide();
        QCoreApplication::processEvents();
        state.ResumeTiming();
    }
}

// A condition set on, and taken from, a full table.
void setFilter(benchmark::State &state)
{
    const int limit = static_cast<int>(state.range(0));
    Bench bench(static_cast<uint>(limit), 0);
    bench.fill(limit);
    for (auto _ : state) {
        bench.hideEveryOtherId();
        QCoreApplication::processEvents();
        bench.showAll();
        QCoreApplication::processEvents();
    }
}
} // namespace

BENCHMARK(copyTexts)->Name("copyTexts/baseline")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(refreshRound, listed, 0)->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(refreshRound, listed_fd, kFdFrames)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(refreshRound, captured, kCapture)->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(refreshRound, captured_fd, kCapture | kFdFrames)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(refreshRound, merged, kMerge)->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(refreshRound, filtered, kFilter)->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(paintTable, listed, 0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(paintTable, listed_fd, kFdFrames)->Unit(benchmark::kMillisecond);
BENCHMARK(setFilter)->Arg(50000)->Unit(benchmark::kMillisecond);
BENCHMARK(openFilter)->Arg(50000)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
