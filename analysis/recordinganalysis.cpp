// What is made of a recording from its window: statistics, signals, plots, a comparison, replay, and the databases for
// filters.
#include "analysis/recordingwindow.h"

#include "analysis/comparisonwindow.h"
#include "analysis/filterline.h"
#include "analysis/plotwindow.h"
#include "analysis/recordingview.h"
#include "analysis/replaybar.h"
#include "analysis/signaldatabases.h"
#include "analysis/signalswindow.h"
#include "analysis/statisticswindow.h"
#include "device/language.h"
#include "frames/framefeed.h"
#include "signals/signalnames.h"
#include "widgets/messages.h"

#include <QBoxLayout>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QPushButton>
#include <QToolButton>

void RecordingWindow::makeAnalyses(QBoxLayout *tools)
{
    static const char *const names[2][3] = {
        {"actionStatisticsOfAll", "actionSignalsOfAll", "actionPlotOfAll"},
        {"actionStatisticsOfSelected", "actionSignalsOfSelected", "actionPlotOfSelected"}};
    analyseButton_ = new QToolButton(this);
    analyseButton_->setObjectName(QStringLiteral("recordingAnalyse"));
    auto *menu = new QMenu(this);
    for (const int selected : {0, 1}) {
        for (const Analysis analysis : {Analysis::Statistics, Analysis::Signals, Analysis::Plot}) {
            const int place = static_cast<int>(analysis);
            QAction *action = menu->addAction(QString());
            action->setObjectName(QLatin1String(names[selected][place]));
            connect(action, &QAction::triggered, this,
                    [this, analysis, selected] { analyse(analysis, selected == 1); });
            analyses_[selected][place] = action;
        }
        menu->addSeparator();
    }
    selectFromMarked_ = menu->addAction(QString());
    selectFromMarked_->setObjectName(QStringLiteral("actionSelectFromMarked"));
    menu->addSeparator();
    compareWith_ = menu->addAction(QString());
    compareWith_->setObjectName(QStringLiteral("actionCompareWith"));
    analyseButton_->setMenu(menu);
    analyseButton_->setPopupMode(QToolButton::InstantPopup);
    analyseButton_->setToolButtonStyle(Qt::ToolButtonTextOnly);
    analyseButton_->setFocusPolicy(Qt::TabFocus);
    replayButton_ = new QPushButton(this);
    replayButton_->setObjectName(QStringLiteral("recordingReplay"));
    replayButton_->setCheckable(true);
    replay_ = new ReplayBar(
        index_, [this](ReplayBar::Choice choice) { return rowsToReplay(choice); }, this);
    replay_->hide();
    tools->addWidget(analyseButton_);
    tools->addWidget(replayButton_);

    connect(selectFromMarked_, &QAction::triggered, this,
            [this] { view_->selectFrom(model_->positionFrom(model_->marked())); });
    connect(compareWith_, &QAction::triggered, this, &RecordingWindow::chooseComparison);
    connect(replayButton_, &QPushButton::toggled, replay_, &QWidget::setVisible);
    connect(replay_, &ReplayBar::log, this, &RecordingWindow::log);
}

void RecordingWindow::retranslateAnalyses()
{
    analyseButton_->setText(text3("分析(&L)", "分析(&L)", "Ana&lyse"));
    const auto texts = [this](int selected, const QString &statistics, const QString &values, const QString &plot) {
        analyses_[selected][static_cast<int>(Analysis::Statistics)]->setText(statistics);
        analyses_[selected][static_cast<int>(Analysis::Signals)]->setText(values);
        analyses_[selected][static_cast<int>(Analysis::Plot)]->setText(plot);
    };
    texts(0, text3("整个记录的统计", "整個記錄的統計", "Statistics of the whole recording"),
          text3("整个记录的信号", "整個記錄的訊號", "Signals of the whole recording"),
          text3("整个记录的曲线", "整個記錄的曲線", "Plot of the whole recording"));
    texts(1, text3("选中行的统计", "選取列的統計", "Statistics of the selected rows"),
          text3("选中行的信号", "選取列的訊號", "Signals of the selected rows"),
          text3("选中行的曲线", "選取列的曲線", "Plot of the selected rows"));
    selectFromMarked_->setText(
        text3("选中从标记行到当前行", "選取從標記列到目前列", "Select from the marked row to the current one"));
    compareWith_->setText(text3("与其他记录比较…", "與其他記錄比較…", "Compare with…"));
    replayButton_->setText(text3("重放(&R)", "重播(&R)", "&Replay"));
    replay_->retranslate();
}

// Of the recording, whatever the filter shows: the rows from the first to the last selected one.
std::pair<std::uint64_t, std::uint64_t> RecordingWindow::selectedRows() const
{
    const std::uint64_t total = model_->total();
    if (total == 0)
        return {0, 0};
    return {model_->rowOf(std::min(view_->selectionBegin(), total - 1)),
            model_->rowOf(std::min(view_->selectionEnd() - 1, total - 1)) + 1};
}

void RecordingWindow::analyse(Analysis analysis, bool selected)
{
    RecordingPart part{index_, 0, index_->rows()};
    if (selected)
        std::tie(part.first, part.end) = selectedRows();
    else if (!index_->settled())
        tell(text3("索引尚未完成：窗口只包含前%1帧", "索引尚未完成：視窗只包含前%1幀",
                   "Indexing goes on: the window has only the first %1 frames")
                 .arg(part.end));
    // Beside this window, which it may outlast.
    switch (analysis) {
    case Analysis::Statistics:
        StatisticsWindow::openRecording(part, parentWidget());
        break;
    case Analysis::Signals:
        SignalsWindow::openRecording(part, parentWidget());
        break;
    case Analysis::Plot:
        PlotWindow::openRecording(part, parentWidget());
        break;
    }
}

void RecordingWindow::chooseComparison()
{
    const QString file = QFileDialog::getOpenFileName(this, text3("与记录比较", "與記錄比較", "Compare With Recording"),
                                                      QFileInfo(index_->path()).absolutePath());
    QString error;
    if (!file.isEmpty() && !compareWith(file, &error))
        showWarning(this, warningTitle(),
                    text3("无法打开记录 %1：%2", "無法開啟記錄 %1：%2", "Cannot open recording %1: %2")
                        .arg(QDir::toNativeSeparators(file), error));
}

ComparisonWindow *RecordingWindow::compareWith(const QString &path, QString *error)
{
    auto other = std::make_shared<RecordingIndex>(path);
    if (!other->open(error))
        return nullptr;
    auto *window = new ComparisonWindow({index_, currentRow().value_or(0)}, {std::move(other), 0}, parentWidget());
    window->open();
    return window;
}

ReplayBar::Rows RecordingWindow::rowsToReplay(ReplayBar::Choice choice) const
{
    ReplayBar::Rows rows{FrameFilter(), 0, index_->rows()};
    if (choice != ReplayBar::Choice::All)
        rows.filter = shown_;
    if (choice == ReplayBar::Choice::Selected)
        std::tie(rows.first, rows.end) = selectedRows();
    return rows;
}

// Filters know the signals of the databases that the signal windows use.
void RecordingWindow::findSignals()
{
    connect(databases_.get(), &SignalDatabases::changed, this, [this] { signalNames_.reset(); });
    for (FilterLine *line : {filterLine_, searchLine_})
        line->setSignals([this] {
            databases_->start();
            if (!signalNames_)
                signalNames_ = SignalNames::of(databases_->entries(), databases_->lookup());
            return signalNames_;
        });
}
