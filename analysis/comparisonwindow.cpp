#include "analysis/comparisonwindow.h"

#include "analysis/comparisonmodel.h"
#include "analysis/plaincell.h"
#include "analysis/recordingmodel.h"
#include "analysis/recordingview.h"
#include "device/language.h"
#include "widgets/namedwidget.h"

#include <QFileInfo>
#include <QScopedValueRollback>
#include <QTimer>

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>
#include <QSplitter>
#include <QVBoxLayout>

namespace
{
constexpr int kProgressMs = 80;
constexpr int kColumnCharacters[ComparisonModel::ColumnCount] = {4, 10, 12, 12, 9, 9, 12, 12, 34, 24, 24};
const char *const kNames[2] = {"comparedLeft", "comparedRight"};

} // namespace

ComparisonWindow::ComparisonWindow(RecordingComparison::Side left, RecordingComparison::Side right, QWidget *parent)
    : AnalysisWindow(QStringLiteral("comparison"), parent)
{
    setAttribute(Qt::WA_DeleteOnClose);
    halves_[0].index = std::move(left.index);
    halves_[0].row = left.row;
    halves_[1].index = std::move(right.index);
    halves_[1].row = right.row;
    auto *rows = new QVBoxLayout(this);
    makeTools(rows);
    auto *splitter = new QSplitter(Qt::Vertical, this);
    splitter->addWidget(makeHalves());
    makeTable(splitter);
    splitter->setChildrenCollapsible(false);
    rows->addWidget(splitter, 1);
    auto *line = new QHBoxLayout;
    status_ = named(new QLabel(this), "comparisonStatus");
    status_->setMinimumWidth(1);
    progress_ = new QProgressBar(this);
    progress_->setTextVisible(false);
    progress_->setRange(0, kProgressSteps);
    cancel_ = named(new QPushButton(this), "comparisonCancel");
    line->addWidget(status_, 1);
    line->addWidget(progress_);
    line->addWidget(cancel_);
    rows->addLayout(line);
    connect(cancel_, &QPushButton::clicked, this, [this] {
        if (comparison_)
            comparison_->cancel();
    });
    timer_ = new QTimer(this);
    connect(timer_, &QTimer::timeout, this, &ComparisonWindow::look);
    timer_->start(kProgressMs);
    halves_[0].view->setFocus();
}

ComparisonWindow::~ComparisonWindow()
{
    timer_->stop();
}

void ComparisonWindow::makeTools(QBoxLayout *rows)
{
    auto *tools = new QHBoxLayout;
    together_ = named(new QCheckBox(this), "comparisonTogether");
    together_->setChecked(true);
    align_ = named(new QPushButton(this), "comparisonAlign");
    channels_ = named(new QCheckBox(this), "comparisonChannels");
    channels_->setChecked(true);
    shownLabel_ = new QLabel(this);
    shown_ = named(new QComboBox(this), "comparisonShown");
    shown_->addItems({QString(), QString(), QString()});
    shown_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    shownLabel_->setBuddy(shown_);
    for (QWidget *widget : std::initializer_list<QWidget *>{together_, align_, channels_})
        tools->addWidget(widget);
    tools->addStretch(1);
    tools->addWidget(shownLabel_);
    tools->addWidget(shown_);
    rows->addLayout(tools);
    connect(align_, &QPushButton::clicked, this, &ComparisonWindow::align);
    connect(channels_, &QCheckBox::toggled, this, &ComparisonWindow::compare);
    connect(shown_, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            [this](int choice) { model_->setShown(static_cast<ComparisonModel::Shown>(choice)); });
}

QSplitter *ComparisonWindow::makeHalves()
{
    auto *splitter = new QSplitter(this);
    splitter->setChildrenCollapsible(false);
    for (const int side : {0, 1}) {
        Half &half = halves_[side];
        auto *part = new QWidget(splitter);
        auto *rows = new QVBoxLayout(part);
        rows->setContentsMargins(0, 0, 0, 0);
        half.title = new QLabel(part);
        half.title->setMinimumWidth(1);
        half.model = new RecordingModel(*half.index, part);
        half.model->setTimes(RecordingTimes::SinceMarked);
        half.model->setMarked(half.row);
        auto *bar = new QScrollBar(Qt::Vertical, part);
        half.view = named(new RecordingView(half.model, bar, part), kNames[side]);
        for (const int column : {SystemTimeColumn, FormatColumn, TypeColumn, ProtocolColumn})
            half.view->setColumnHidden(column, true);
        auto *table = new QHBoxLayout;
        table->setSpacing(0);
        table->addWidget(half.view);
        table->addWidget(bar);
        rows->addWidget(half.title);
        rows->addLayout(table, 1);
        connect(half.view, &RecordingView::currentChangedTo, this, [this, side] { follow(side); });
    }
    return splitter;
}

void ComparisonWindow::makeTable(QSplitter *splitter)
{
    model_ = new ComparisonModel(this);
    table_ = named(new LightGridTable<QTableView>(splitter), "comparisonTable");
    table_->setModel(model_);
    makePlain(*table_);
    table_->verticalHeader()->hide();
    table_->setSortingEnabled(true);
    table_->horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
    table_->horizontalHeader()->setStretchLastSection(true);
    connect(table_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex &current) { goToDifference(current.row()); });
}

void ComparisonWindow::look()
{
    for (Half &half : halves_)
        if (half.model->total() != half.shown) {
            half.shown = half.model->total();
            half.view->rowsChanged();
        }
    const bool indexed = halves_[0].index->settled() && halves_[1].index->settled();
    if (wanted_ && indexed) {
        goTo(halves_[0].row, halves_[1].row);
        compare();
    }
    if (comparison_ && comparison_->state().finished && !listed_) {
        listed_ = true;
        model_->setResult(comparison_->result());
    }
    showStatus();
}

// The rows that are selected stand beside each other from now on.
void ComparisonWindow::align()
{
    for (Half &half : halves_) {
        half.row = half.view->current();
        half.model->setMarked(half.row);
    }
    compare();
}

void ComparisonWindow::compare()
{
    wanted_ = false;
    listed_ = false;
    comparison_.reset();
    comparison_ = std::make_unique<RecordingComparison>(RecordingComparison::Side{halves_[0].index, halves_[0].row},
                                                        RecordingComparison::Side{halves_[1].index, halves_[1].row},
                                                        channels_->isChecked());
    showStatus();
}

// The other recording's row of the same moment.
void ComparisonWindow::follow(int moved)
{
    if (following_ || wanted_ || !together_->isChecked())
        return;
    const QScopedValueRollback<bool> quiet(following_, true);
    const Half &from = halves_[moved];
    const Half &to = halves_[1 - moved];
    const auto here = from.model->frameAt(from.view->current());
    const auto base = from.model->frameAt(from.row);
    const auto otherBase = to.model->frameAt(to.row);
    if (here && base && otherBase)
        to.view->setCurrent(to.index->rowAtTime(otherBase->time + (here->time - base->time)));
}

void ComparisonWindow::goTo(std::uint64_t left, std::uint64_t right)
{
    const QScopedValueRollback<bool> quiet(following_, true);
    halves_[0].view->setCurrent(left);
    halves_[1].view->setCurrent(right);
}

void ComparisonWindow::goToDifference(int row)
{
    if (row < 0 || row >= model_->rowCount())
        return;
    const ComparedIdentifier &identifier = model_->identifier(row);
    if (identifier.difference > 0)
        goTo(identifier.sides[0].row, identifier.sides[1].row);
}

void ComparisonWindow::showStatus()
{
    const RecordingComparison::State state = comparison_ ? comparison_->state() : RecordingComparison::State();
    const bool busy = !state.finished;
    progress_->setVisible(busy);
    cancel_->setVisible(busy && comparison_);
    align_->setEnabled(!wanted_);
    if (busy) {
        const double part =
            static_cast<double>(state.done) / static_cast<double>(std::max<std::uint64_t>(state.total, 1));
        progress_->setValue(static_cast<int>(part * kProgressSteps));
        status_->setText(comparison_ ? text3("正在比较…", "正在比較…", "Comparing…")
                                     : text3("正在建立索引…", "正在建立索引…", "Indexing…"));
        return;
    }
    int counts[4] = {};
    for (const ComparedIdentifier &identifier : model_->all())
        ++counts[static_cast<int>(ComparisonModel::findingOf(identifier))];
    QString text = text3("共 %1 个 ID：仅左侧 %2，仅右侧 %3，数据不同 %4，数据相同 %5",
                         "共 %1 個 ID：僅左側 %2，僅右側 %3，數據不同 %4，數據相同 %5",
                         "%1 identifiers: %2 only left, %3 only right, %4 with different data, %5 with the same data")
                       .arg(model_->all().size())
                       .arg(counts[static_cast<int>(ComparisonModel::Finding::OnlyLeft)])
                       .arg(counts[static_cast<int>(ComparisonModel::Finding::OnlyRight)])
                       .arg(counts[static_cast<int>(ComparisonModel::Finding::DataDiffer)])
                       .arg(counts[static_cast<int>(ComparisonModel::Finding::Same)]);
    if (state.unreadable)
        text += text3("；有文件无法继续读取", "；有檔案無法繼續讀取", "; a file cannot be read on");
    if (state.done < state.total && !state.unreadable)
        text += text3("；已取消，结果不完整", "；已取消，結果不完整", "; cancelled, not complete");
    if (state.beyondCeiling > 0)
        text +=
            text3("；%1 帧的 ID 过多未比较", "；%1 幀的 ID 過多未比較", "; %1 frames of too many identifiers left out")
                .arg(state.beyondCeiling);
    status_->setText(text);
}

void ComparisonWindow::retranslate()
{
    const QString names[2] = {QFileInfo(halves_[0].index->path()).fileName(),
                              QFileInfo(halves_[1].index->path()).fileName()};
    setWindowTitle(
        text3("比较记录 - %1 / %2", "比較記錄 - %1 / %2", "Recordings compared - %1 / %2").arg(names[0], names[1]));
    halves_[0].title->setText(text3("左侧：%1", "左側：%1", "Left: %1").arg(names[0]));
    halves_[1].title->setText(text3("右侧：%1", "右側：%1", "Right: %1").arg(names[1]));
    align_->setText(text3("对齐选中的两行(&A)", "對齊選取的兩列(&A)", "&Align the selected rows"));
    align_->setToolTip(text3("从选中的两行起比较；时间从它们算起", "從選取的兩列起比較；時間從它們算起",
                             "Compares from the selected rows on; times count from them"));
    together_->setText(text3("同步移动(&T)", "同步移動(&T)", "Move &together"));
    channels_->setText(text3("区分通道(&C)", "區分通道(&C)", "Tell &channels apart"));
    shownLabel_->setText(text3("显示(&S)：", "顯示(&S)：", "&Show:"));
    const QStringList choices = {text3("全部", "全部", "Everything"),
                                 text3("仅一侧有的", "僅一側有的", "Only in one recording"),
                                 text3("数据不同的", "數據不同的", "Different data")};
    for (int i = 0; i < choices.size(); ++i)
        shown_->setItemText(i, choices.at(i));
    cancel_->setText(text3("取消", "取消", "Cancel"));
    for (Half &half : halves_) {
        half.view->fitColumns();
        half.model->refresh();
        emit half.model->headerDataChanged(Qt::Horizontal, 0, FrameColumnCount - 1);
    }
    model_->setTexts();
    arrangeColumns();
    look();
}

// Room for the titles, which differ with the language, and for the usual texts.
void ComparisonWindow::arrangeColumns()
{
    const QFontMetrics metrics = table_->fontMetrics();
    const QFontMetrics titles = table_->horizontalHeader()->fontMetrics();
    const int margin = 2 * metrics.averageCharWidth();
    for (int column = 0; column < ComparisonModel::ColumnCount; ++column) {
        const QString title = model_->headerData(column, Qt::Horizontal).toString();
        const int texts = kColumnCharacters[column] * metrics.averageCharWidth();
        table_->setColumnWidth(column, qMax(titles.horizontalAdvance(title) + 2 * margin, texts + margin));
    }
}
