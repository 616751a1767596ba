// StatisticsWindow's widgets, how they are arranged, and their texts.
#include "analysis/bitmap.h"
#include "analysis/channelpanel.h"
#include "analysis/identifiermodel.h"
#include "analysis/plaincell.h"
#include "analysis/statisticswindow.h"
#include "analysis/supervision.h"
#include "device/driver/driver.h"
#include "device/language.h"
#include "widgets/accessibletexts.h"

#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QSettings>
#include <QShortcut>
#include <QSpinBox>
#include <QSplitter>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>

namespace
{

constexpr QSize kDesignSize(1120, 760);
constexpr int kLargestTolerance = 500; // percent
const QString kColumnsKey = QStringLiteral("analysis/statistics/columnsWithMessage");
const QString kOldColumnsKey = QStringLiteral("analysis/statistics/columns"); // without the message's name
const QString kSplitterKey = QStringLiteral("analysis/statistics/splitter");
const QString kToleranceKey = QStringLiteral("analysis/statistics/tolerance");

// Characters that each column is wide at first.
constexpr int kColumnCharacters[IdentifierModel::ColumnCount] = {8,  9,  11, 10, 7,  10, 26, 12,
                                                                 12, 12, 12, 13, 14, 30, 22};

} // namespace

QSize StatisticsWindow::designSize() const
{
    return kDesignSize;
}

void StatisticsWindow::createWidgets()
{
    splitter_ = new QSplitter(Qt::Vertical, this);
    splitter_->addWidget(makePanelRow());
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
}

QWidget *StatisticsWindow::makePanelRow()
{
    panelRow_ = new QWidget(this);
    auto *row = new QHBoxLayout(panelRow_);
    row->setContentsMargins(0, 0, 0, 0);
    makePanels(kChannelCount);
    auto *scroller = new QScrollArea(splitter_); // of a screen that is too small for all
    scroller->setWidget(panelRow_);
    scroller->setWidgetResizable(true);
    scroller->setFrameShape(QFrame::NoFrame);
    scroller->setFocusPolicy(Qt::NoFocus);
    return scroller;
}

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
    const QSettings settings;
    const QByteArray old = settings.value(kOldColumnsKey).toByteArray();
    header->restoreState(settings.value(kColumnsKey, old).toByteArray());
    if (!settings.contains(kColumnsKey))
        header->moveSection(header->visualIndex(IdentifierModel::MessageColumn),
                            header->visualIndex(IdentifierModel::IdColumn) + 1);
    view_->setSortingEnabled(true);
    if (!settings.contains(kColumnsKey) && old.isEmpty())
        view_->sortByColumn(-1, Qt::AscendingOrder); // as first seen
}

void StatisticsWindow::storeArrangement() const
{
    QSettings().setValue(kColumnsKey, view_->horizontalHeader()->saveState());
    QSettings().setValue(kSplitterKey, splitter_->saveState());
}

QString StatisticsWindow::title() const
{
    QString title = text3("总线统计", "匯流排統計", "Bus statistics");
    if (isLive())
        return title;
    QString of = title + text3("：", "：", ": ") + QFileInfo(part_->index->path()).fileName();
    if (part_->first == 0 && part_->end >= part_->index->rows())
        return of;
    return of + text3("，第%1至%2帧", "，第%1至%2幀", ", frames %1 to %2")
                    .arg(QString::number(part_->first + 1), QString::number(part_->end));
}

void StatisticsWindow::retranslate()
{
    setWindowTitle(title());
    searchLabel_->setText(text3("查找(&F)：", "尋找(&F)：", "&Find:"));
    search_->setPlaceholderText(text3("ID、通道、方向、类型、报文", "ID、通道、方向、類型、訊息",
                                      "identifier, channel, direction, kind, message"));
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
        if (!header->isSectionHidden(column))
            header->resizeSection(column, std::max(header->sectionSize(column), header->sectionSizeHint(column)));
    showChannels();
    lastLine_.clear(); // of another language
    showStatus();
}
