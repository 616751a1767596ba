#include "analysis/statisticswindow.h"

#include "analysis/bitmap.h"
#include "analysis/channelpanel.h"
#include "analysis/identifiermodel.h"
#include "analysis/plaincell.h"
#include "analysis/statisticstexts.h"
#include "analysis/supervision.h"
#include "device/channelrates.h"
#include "device/driver/driver.h"
#include "device/language.h"
#include "frames/buswatch.h"
#include "widgets/accessibletexts.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QProgressBar>
#include <QPushButton>
#include <QSaveFile>
#include <QScrollArea>
#include <QSettings>
#include <QShortcut>
#include <QSpinBox>
#include <QSplitter>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace
{

constexpr QSize kDesignSize(1120, 760);
constexpr int kLargestTolerance = 500; // percent
constexpr unsigned kMostPanels = 8;    // of a recording with more channels the first ones
const QString kColumnsKey = QStringLiteral("analysis/statistics/columns");
const QString kSplitterKey = QStringLiteral("analysis/statistics/splitter");
const QString kToleranceKey = QStringLiteral("analysis/statistics/tolerance");

// Characters that each column is wide at first.
constexpr int kColumnCharacters[IdentifierModel::ColumnCount] = {8, 9, 11, 10, 7, 10, 26, 12, 12, 12, 12, 13, 14, 30};

} // namespace

StatisticsWindow::StatisticsWindow(QWidget *parent) : StatisticsWindow(std::nullopt, parent) {}

StatisticsWindow *StatisticsWindow::openRecording(RecordingPart part, QWidget *parent)
{
    auto *window = new StatisticsWindow(std::move(part), parent);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->open();
    return window;
}

StatisticsWindow::StatisticsWindow(std::optional<RecordingPart> part, QWidget *parent)
    : AnalysisWindow(part ? QStringLiteral("recordingStatistics") : QStringLiteral("statistics"), parent),
      part_(std::move(part)),
      live_(isLive()),
      model_(new IdentifierModel(this)),
      supervision_(new Supervision(live_, this)),
      timer_(new QTimer(this))
{
    splitter_ = new QSplitter(Qt::Vertical, this);
    panelRow_ = new QWidget(this);
    auto *row = new QHBoxLayout(panelRow_);
    row->setContentsMargins(0, 0, 0, 0);
    makePanels(kChannelCount);
    auto *scroller = new QScrollArea(splitter_); // of a screen that is too small for all
    scroller->setWidget(panelRow_);
    scroller->setWidgetResizable(true);
    scroller->setFrameShape(QFrame::NoFrame);
    scroller->setFocusPolicy(Qt::NoFocus);
    splitter_->addWidget(scroller);
    splitter_->addWidget(makeTables());
    splitter_->setStretchFactor(1, 1);
    splitter_->setChildrenCollapsible(false);
    splitter_->restoreState(QSettings().value(kSplitterKey).toByteArray());
    status_ = new QLabel(this);
    status_->setObjectName(QStringLiteral("statusLabel"));
    status_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(makeBar());
    layout->addWidget(splitter_, 1);
    progress_ = new QProgressBar(this);
    progress_->setRange(0, kProgressSteps);
    progress_->hide();
    auto *lowest = new QHBoxLayout;
    lowest->addWidget(status_, 1);
    lowest->addWidget(progress_);
    layout->addLayout(lowest);
    freeze_->setVisible(isLive());
    connect(supervision_, &Supervision::log, this, &StatisticsWindow::log);
    if (!isLive()) // the operation log is another window's affair
        connect(this, &StatisticsWindow::log, status_, [this](const QString &line) {
            lastLine_ = line;
            showStatus();
        });
    connect(supervision_, &Supervision::changed, this, &StatisticsWindow::baselineChanged);
    connect(timer_, &QTimer::timeout, this, &StatisticsWindow::refresh);
    timer_->setInterval(kRefreshMs);
    view_->setFocus();
}

StatisticsWindow::~StatisticsWindow() = default;

QSize StatisticsWindow::designSize() const
{
    return kDesignSize;
}

QString StatisticsWindow::title() const
{
    const QString title = text3("总线统计", "匯流排統計", "Bus statistics");
    if (isLive())
        return title;
    const QString of = title + text3("：", "：", ": ") + QFileInfo(part_->index->path()).fileName();
    if (part_->first == 0 && part_->end >= part_->index->rows())
        return of;
    return of + text3("，第%1至%2帧", "，第%1至%2幀", ", frames %1 to %2")
                    .arg(QString::number(part_->first + 1), QString::number(part_->end));
}

// --- arrangement --------------------------------------------------------------------------------------------------

// So many, when there are fewer.
void StatisticsWindow::makePanels(unsigned channels)
{
    for (auto channel = static_cast<unsigned>(panels_.size()); channel < channels; ++channel) {
        panels_.push_back(new ChannelPanel(channel, panelRow_));
        panels_.back()->setTexts();
        panelRow_->layout()->addWidget(panels_.back());
    }
}

QWidget *StatisticsWindow::makeBar()
{
    auto *bar = new QWidget(this);
    auto *row = new QHBoxLayout(bar);
    row->setContentsMargins(0, 0, 0, 0);
    const auto button = [&](const char *name) {
        auto *made = new QPushButton(bar);
        made->setObjectName(QLatin1String(name));
        row->addWidget(made);
        return made;
    };
    searchLabel_ = new QLabel(bar);
    row->addWidget(searchLabel_);
    search_ = new QLineEdit(bar);
    search_->setObjectName(QStringLiteral("searchEdit"));
    search_->setClearButtonEnabled(true);
    searchLabel_->setBuddy(search_);
    row->addWidget(search_, 1);
    connect(search_, &QLineEdit::textChanged, model_, &IdentifierModel::setSearch);
    auto *find = new QShortcut(QKeySequence::Find, this);
    connect(find, &QShortcut::activated, search_, [this] {
        search_->setFocus();
        search_->selectAll();
    });
    freeze_ = button("freezeBtn");
    freeze_->setCheckable(true);
    connect(freeze_, &QPushButton::toggled, this, &StatisticsWindow::refresh);
    reset_ = button("resetBtn");
    connect(reset_, &QPushButton::clicked, this, &StatisticsWindow::reset);
    export_ = button("exportBtn");
    connect(export_, &QPushButton::clicked, this, &StatisticsWindow::askExport);
    supervise_ = button("superviseBtn");
    auto *menu = new QMenu(supervise_);
    supervision_->fill(menu);
    supervise_->setMenu(menu);
    toleranceLabel_ = new QLabel(bar);
    row->addWidget(toleranceLabel_);
    tolerance_ = new QSpinBox(bar);
    tolerance_->setObjectName(QStringLiteral("toleranceSpin"));
    tolerance_->setRange(0, kLargestTolerance);
    tolerance_->setSuffix(QStringLiteral(" %"));
    tolerance_->setValue(
        QSettings().value(kToleranceKey, static_cast<int>(Supervisor::kDefaultTolerance * 100)).toInt());
    toleranceLabel_->setBuddy(tolerance_);
    row->addWidget(tolerance_);
    supervision_->setTolerance(tolerance_->value());
    connect(tolerance_, QOverload<int>::of(&QSpinBox::valueChanged), supervision_, [this](int percent) {
        QSettings().setValue(kToleranceKey, percent);
        supervision_->setTolerance(percent);
    });
    return bar;
}

QWidget *StatisticsWindow::makeTables()
{
    auto *lower = new QWidget(splitter_);
    auto *row = new QHBoxLayout(lower);
    row->setContentsMargins(0, 0, 0, 0);
    view_ = new LightGridTable<QTableView>(lower);
    view_->setObjectName(QStringLiteral("identifierTable"));
    view_->setModel(model_);
    makePlain(*view_);
    view_->verticalHeader()->hide();
    arrangeColumns();
    view_->installEventFilter(this);
    connect(view_->selectionModel(), &QItemSelectionModel::currentRowChanged, this, &StatisticsWindow::showSelected);
    connect(model_, &QAbstractItemModel::modelReset, this, &StatisticsWindow::showSelected);
    row->addWidget(view_, 1);
    auto *side = new QVBoxLayout;
    bitsTitle_ = new QLabel(lower);
    bits_ = new BitMap(lower);
    bits_->setObjectName(QStringLiteral("bitMap"));
    side->addWidget(bitsTitle_);
    side->addWidget(bits_);
    side->addStretch(1);
    row->addLayout(side);
    return lower;
}

void StatisticsWindow::arrangeColumns()
{
    QHeaderView *header = view_->horizontalHeader();
    const int character = view_->fontMetrics().averageCharWidth();
    for (int column = 0; column < IdentifierModel::ColumnCount; ++column)
        header->resizeSection(column, kColumnCharacters[column] * character);
    header->setSectionsMovable(true);
    header->restoreState(QSettings().value(kColumnsKey).toByteArray());
    view_->setSortingEnabled(true);
    if (QSettings().value(kColumnsKey).isNull())
        view_->sortByColumn(-1, Qt::AscendingOrder); // as first seen
}

void StatisticsWindow::retranslate()
{
    setWindowTitle(title());
    searchLabel_->setText(text3("查找(&F)：", "尋找(&F)：", "&Find:"));
    search_->setPlaceholderText(
        text3("ID、通道、方向、类型", "ID、通道、方向、類型", "identifier, channel, direction, kind"));
    freeze_->setText(text3("冻结(&Z)", "凍結(&Z)", "Free&ze"));
    reset_->setText(isLive() ? text3("清零(&R)", "歸零(&R)", "&Reset")
                             : text3("重新读取(&R)", "重新讀取(&R)", "&Read again"));
    export_->setText(text3("导出(&E)…", "匯出(&E)…", "&Export…"));
    supervise_->setText(text3("周期监视(&S)", "週期監視(&S)", "&Supervision"));
    toleranceLabel_->setText(text3("容差(&T)：", "容差(&T)：", "&Tolerance:"));
    bitsTitle_->setText(text3("变化过的位", "變化過的位元", "Bits that moved"));
    tellName(view_, text3("每个ID的统计", "每個ID的統計", "Statistics by identifier"));
    tellName(bits_, bitsTitle_->text());
    supervision_->setTexts();
    model_->setTexts();
    for (ChannelPanel *panel : panels_)
        panel->setTexts();
    QHeaderView *header = view_->horizontalHeader();
    for (int column = 0; column < IdentifierModel::ColumnCount; ++column)
        header->resizeSection(column, std::max(header->sectionSize(column), header->sectionSizeHint(column)));
    showChannels();
    lastLine_.clear(); // of another language
    showStatus();
}

void StatisticsWindow::showEvent(QShowEvent *event)
{
    AnalysisWindow::showEvent(event);
    if (!feed_)
        begin();
}

void StatisticsWindow::begin()
{
    feed_.reset();
    showRates();
    live_.clear();
    feed_ = std::make_unique<FrameFeed>(live_, part_);
    timer_->start();
    freeze_->setChecked(false);
    refresh();
}

// A recording that was read is read again to be held against it.
void StatisticsWindow::baselineChanged()
{
    if (!isLive() && feed_)
        begin();
    else
        refresh();
}

void StatisticsWindow::closeEvent(QCloseEvent *event)
{
    AnalysisWindow::closeEvent(event);
    timer_->stop();
    feed_.reset();
    QSettings().setValue(kColumnsKey, view_->horizontalHeader()->saveState());
    QSettings().setValue(kSplitterKey, splitter_->saveState());
}

// --- what is counted ----------------------------------------------------------------------------------------------

void StatisticsWindow::refresh()
{
    const bool readAll = hasReadAll(); // before the last look
    if (isLive())
        showRates();
    else if (readAll)
        timer_->stop();
    progress_->setVisible(!isLive() && feed_ && !readAll);
    progress_->setValue(feed_ ? static_cast<int>(feed_->progress() * kProgressSteps) : 0);
    supervision_->tell();
    if (freeze_->isChecked())
        return;
    live_.snapshot(&spare_);
    model_->show(spare_);
    showChannels();
    showSelected();
    showStatus();
}

void StatisticsWindow::showChannels()
{
    const StatisticsSnapshot &shown = model_->shown();
    for (const auto &[number, statistics] : shown.channels)
        if (statistics.hasTime())
            makePanels(std::min(number, kMostPanels));
    for (unsigned channel = 0; channel < panels_.size(); ++channel) {
        const auto found = shown.channels.find(channel + 1);
        const BusReport report = isLive() ? lastBusReport(channel) : BusReport();
        panels_[channel]->show(found == shown.channels.end() ? nullptr : &found->second, isLive() ? &report : nullptr);
    }
}

void StatisticsWindow::showRates()
{
    for (unsigned channel = 0; channel < (isLive() ? kChannelCount : kMostPanels); ++channel) {
        const BusReport report = isLive() ? lastBusReport(channel) : BusReport();
        const ChannelRates stored = channelRates(channel < kChannelCount ? channel : 0);
        live_.setRates(channel + 1, report.arbitrationRate != 0 ? BusRates{report.arbitrationRate, report.dataRate}
                                                                : BusRates{stored.arbitration, stored.data});
    }
}

void StatisticsWindow::showSelected()
{
    const int row = view_->currentIndex().row();
    bits_->show(row >= 0 && row < model_->rowCount() ? model_->entry(row) : nullptr);
}

void StatisticsWindow::showStatus()
{
    const StatisticsSnapshot &shown = model_->shown();
    QString text = text3("ID数：%1", "ID數：%1", "Identifiers: %1").arg(shown.identifiers.size());
    if (shown.beyondCeiling > 0)
        text += text3("　超出上限的帧：%1", "　超出上限的幀：%1", "   Frames of identifiers beyond the ceiling: %1")
                    .arg(shown.beyondCeiling);
    if (shown.lost > 0)
        text +=
            text3("　来不及统计的帧：%1", "　來不及統計的幀：%1", "   Frames lost on the way here: %1").arg(shown.lost);
    if (supervision_->isOn())
        text += text3("　监视：%1条报文，%2条有违例", "　監視：%1個訊息，%2個有違例",
                      "   Supervision: %1 messages, %2 with violations")
                    .arg(QString::number(supervision_->messages()), QString::number(shown.marks.size()));
    if (freeze_->isChecked())
        text += text3("　（显示已冻结）", "　（顯示已凍結）", "   (frozen)");
    if (!lastLine_.isEmpty())
        text += text3("　", "　", "   ") + lastLine_;
    if (text != status_->text())
        status_->setText(text);
}

void StatisticsWindow::reset()
{
    if (!isLive())
        return begin();
    live_.clear();
    freeze_->setChecked(false);
    refresh();
}

// --- out of the window --------------------------------------------------------------------------------------------

// The table itself would copy one cell.
bool StatisticsWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress || !static_cast<QKeyEvent *>(event)->matches(QKeySequence::Copy))
        return AnalysisWindow::eventFilter(watched, event);
    copySelected();
    return true;
}

void StatisticsWindow::copySelected() const
{
    QList<int> rows;
    const QModelIndexList selected = view_->selectionModel()->selectedRows();
    for (const QModelIndex &index : selected)
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    QString text;
    for (const int row : qAsConst(rows)) {
        QStringList cells;
        for (int column = 0; column < IdentifierModel::ColumnCount; ++column)
            cells.append(model_->text(row, column));
        text += cells.join(QLatin1Char('\t')) + QLatin1Char('\n');
    }
    if (!text.isEmpty())
        QApplication::clipboard()->setText(text);
}

void StatisticsWindow::askExport()
{
    const QString path = QFileDialog::getSaveFileName(this, text3("导出统计", "匯出統計", "Export the statistics"),
                                                      QStringLiteral("statistics.csv"), QStringLiteral("CSV (*.csv)"));
    if (!path.isEmpty())
        exportCsv(path);
}

bool StatisticsWindow::exportCsv(const QString &path)
{
    QSaveFile file(path);
    const QByteArray text = model_->csv();
    const bool written = file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.commit();
    emit log(
        written
            ? text3("统计已导出：%1", "統計已匯出：%1", "Statistics exported: %1").arg(QDir::toNativeSeparators(path))
            : text3("无法写入%1：%2", "無法寫入%1：%2", "Cannot write %1: %2")
                  .arg(QDir::toNativeSeparators(path), file.errorString()));
    return written;
}
