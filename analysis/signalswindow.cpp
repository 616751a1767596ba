#include "analysis/signalswindow.h"

#include "analysis/databasedialog.h"
#include "analysis/signalfilter.h"
#include "analysis/signaltree.h"
#include "analysis/signaltreemodel.h"
#include "device/language.h"

#include <QAction>
#include <QCheckBox>
#include <QClipboard>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QShortcut>
#include <QShowEvent>
#include <QVBoxLayout>

namespace
{
constexpr int kRefreshMs = 250;
constexpr int kRowsBridged = 2;    // unchanged ones between two changed that are painted together
constexpr int kMostExpanded = 400; // messages that a search opens
// Widths in average characters.
constexpr int kColumnChars[SignalTreeModel::ColumnCount] = {29, 17, 8, 16, 17, 13, 13, 15};
} // namespace

SignalsWindow::SignalsWindow(SignalHub *hub, QWidget *parent)
    : AnalysisWindow(hub->isLive() ? QStringLiteral("signals") : QStringLiteral("recorded-signals"), parent),
      hub_(hub),
      model_(new SignalTreeModel(hub, this)),
      filter_(new SignalFilter(this))
{
    filter_->setSourceModel(model_);
    createWidgets();
    createActions();
    refreshTimer_.setInterval(kRefreshMs);
    connect(&refreshTimer_, &QTimer::timeout, this, &SignalsWindow::refresh);
    connect(hub_, &SignalHub::databasesChanged, this, &SignalsWindow::showDatabases);
    SignalsWindow::retranslate();
    showDatabases();
}

SignalsWindow::~SignalsWindow()
{
    if (wanting_)
        hub_->unwant();
}

void SignalsWindow::createWidgets()
{
    search_ = new QLineEdit;
    search_->setObjectName(QStringLiteral("searchEdit"));
    search_->setClearButtonEnabled(true);
    freeze_ = new QCheckBox;
    freeze_->setObjectName(QStringLiteral("freezeBox"));
    const auto button = [](const char *name) {
        auto *made = new QPushButton;
        made->setObjectName(QLatin1String(name));
        made->setAutoDefault(true);
        return made;
    };
    reset_ = button("resetButton");
    plot_ = button("plotButton");
    databases_ = button("databasesButton");
    vehicle_ = button("vehicleButton");
    tree_ = new SignalTree;
    tree_->setObjectName(QStringLiteral("signalTree"));
    tree_->setModel(filter_);
    tree_->setUniformRowHeights(true);
    tree_->setAlternatingRowColors(true);
    tree_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    tree_->setDragDropMode(QAbstractItemView::DragOnly);
    tree_->setExpandsOnDoubleClick(true);
    for (int column = 0; column < SignalTreeModel::ColumnCount; ++column)
        tree_->setColumnWidth(column, kColumnChars[column] * tree_->fontMetrics().averageCharWidth());
    state_ = new QLabel;
    state_->setObjectName(QStringLiteral("stateLabel"));
    state_->setWordWrap(true);
    progress_ = new QProgressBar;
    progress_->setObjectName(QStringLiteral("progressBar"));
    progress_->setRange(0, kProgressSteps);
    progress_->hide();
    freeze_->setVisible(hub_->isLive()); // a recording's values stand still
    reset_->setVisible(hub_->isLive());

    auto *row = new QHBoxLayout;
    row->addWidget(search_, 1);
    for (QWidget *widget : {static_cast<QWidget *>(freeze_), static_cast<QWidget *>(reset_),
                            static_cast<QWidget *>(plot_), static_cast<QWidget *>(databases_)})
        row->addWidget(widget);
    auto *stateRow = new QHBoxLayout;
    stateRow->addWidget(state_, 1);
    stateRow->addWidget(vehicle_);
    auto *all = new QVBoxLayout(this);
    all->addLayout(row);
    all->addLayout(stateRow);
    all->addWidget(tree_, 1);
    all->addWidget(progress_);
}

void SignalsWindow::createActions()
{
    connect(search_, &QLineEdit::textChanged, this, &SignalsWindow::search);
    connect(freeze_, &QCheckBox::toggled, this, &SignalsWindow::setFrozen);
    connect(reset_, &QPushButton::clicked, this, [this] {
        hub_->store().resetRanges();
        if (!freeze_->isChecked())
            refreshAll();
    });
    connect(plot_, &QPushButton::clicked, this, &SignalsWindow::plotSelected);
    connect(databases_, &QPushButton::clicked, this, [this] { DatabaseDialog(hub_->databases(), this).exec(); });
    connect(vehicle_, &QPushButton::clicked, this, [databases = hub_->databases()] {
        databases->add(databases->unusedVehicleDatabase(), DatabaseChannels::Both);
    });
    connect(tree_, &QTreeView::activated, this, &SignalsWindow::plotSelected); // double click or Enter

    copy_ = new QAction(this);
    copy_->setObjectName(QStringLiteral("copyAction"));
    copy_->setShortcut(QKeySequence::Copy);
    copy_->setShortcutContext(Qt::WidgetShortcut);
    connect(copy_, &QAction::triggered, this, &SignalsWindow::copySelected);
    tree_->addAction(copy_);
    tree_->setContextMenuPolicy(Qt::ActionsContextMenu);
    auto *find = new QShortcut(QKeySequence::Find, this);
    connect(find, &QShortcut::activated, search_, [this] {
        search_->setFocus(Qt::ShortcutFocusReason);
        search_->selectAll();
    });
}

void SignalsWindow::retranslate()
{
    setWindowTitle(text3("信号", "訊號", "Signals") + hub_->titleEnd());
    search_->setPlaceholderText(
        text3("查找报文或信号 (Ctrl+F)", "尋找訊息或訊號 (Ctrl+F)", "Find message or signal (Ctrl+F)"));
    freeze_->setText(text3("冻结(&Z)", "凍結(&Z)", "Free&ze"));
    reset_->setText(text3("重置极值(&R)", "重設極值(&R)", "&Reset min/max"));
    plot_->setText(text3("曲线(&P)", "曲線(&P)", "&Plot"));
    databases_->setText(text3("数据库(&D)…", "資料庫(&D)…", "&Databases…"));
    vehicle_->setText(text3("使用内置车辆(&V)", "使用內建車輛(&V)", "Use the built-in &vehicle"));
    copy_->setText(text3("复制", "複製", "Copy"));
    model_->languageChanged();
    showState();
}

void SignalsWindow::showEvent(QShowEvent *event)
{
    AnalysisWindow::showEvent(event);
    if (!wanting_ && !event->spontaneous()) {
        wanting_ = true;
        hub_->start(); // databases first: a recording is read once
        hub_->want();
        refreshTimer_.start();
        (model_->isEmpty() ? static_cast<QWidget *>(vehicle_) : tree_)->setFocus();
    }
}

void SignalsWindow::hideEvent(QHideEvent *event)
{
    if (wanting_ && !event->spontaneous()) {
        wanting_ = false;
        refreshTimer_.stop();
        hub_->unwant();
    }
    AnalysisWindow::hideEvent(event);
}

void SignalsWindow::showDatabases()
{
    for (int channel = 0; channel < filter_->rowCount(); ++channel)
        tree_->expand(filter_->index(channel, 0));
    showState();
    refreshAll();
}

void SignalsWindow::showState()
{
    const bool empty = model_->isEmpty();
    const bool cutShort = hub_->values().isCutShort();
    vehicle_->setVisible(empty && !hub_->databases()->unusedVehicleDatabase().isEmpty());
    state_->setVisible(empty || cutShort);
    state_->setText(
        !empty ? fileChangedText()
               : text3("没有信号数据库：请添加DBC文件，模拟适配器可使用内置车辆的数据库",
                       "沒有訊號資料庫：請新增DBC檔案，模擬轉接器可使用內建車輛的資料庫",
                       "No signal database: add a DBC file, or the built-in vehicle's for the simulated adapter"));
}

void SignalsWindow::search(const QString &text)
{
    filter_->search(text);
    int expanded = 0;
    for (int channel = 0; channel < filter_->rowCount(); ++channel) {
        const QModelIndex parent = filter_->index(channel, 0);
        tree_->expand(parent);
        if (text.trimmed().isEmpty())
            continue;
        for (int row = 0; row < filter_->rowCount(parent) && expanded < kMostExpanded; ++row, ++expanded)
            tree_->expand(filter_->index(row, 0, parent));
    }
}

void SignalsWindow::showProgress()
{
    const SignalReading &values = hub_->values();
    progress_->setVisible(values.isReading());
    progress_->setValue(int(values.progress() * kProgressSteps));
    if (values.isCutShort() && !state_->isVisible())
        showState();
}

// Only the rows on the screen, and of them only the cells that show something else now.
void SignalsWindow::refresh()
{
    showProgress();
    if (freeze_->isChecked() || isMinimized())
        return;
    QModelIndex message;
    const std::vector<unsigned> *changed = nullptr;
    QRect runs[SignalTreeModel::ColumnCount]; // cells below each other
    QRegion area;
    const QRect screen = tree_->viewport()->rect();
    for (QModelIndex index = tree_->indexAt(screen.topLeft()); index.isValid(); index = tree_->indexBelow(index)) {
        const QRect row = tree_->visualRect(index);
        if (row.top() > screen.bottom())
            break;
        const QModelIndex source = filter_->mapToSource(index);
        const bool isSignal = source.parent().parent().isValid();
        const QModelIndex owner = isSignal ? source.parent() : source;
        if (!changed || owner != message) {
            message = owner;
            changed = &model_->refresh(owner);
        }
        const std::size_t place = isSignal ? std::size_t(source.row()) + 1 : 0;
        const unsigned columns = place < changed->size() ? (*changed)[place] : 0;
        for (int column = 0; column < SignalTreeModel::ColumnCount; ++column) {
            if (!(columns >> column & 1))
                continue;
            QRect &run = runs[column];
            const QRect cell(tree_->columnViewportPosition(column), row.top(), tree_->columnWidth(column),
                             row.height());
            if (row.top() > run.bottom() + row.height() * kRowsBridged + 1) {
                area += run;
                run = cell;
            } else {
                run |= cell;
            }
        }
    }
    for (const QRect &run : runs)
        area += run;
    if (!area.isEmpty())
        tree_->viewport()->update(area);
}

void SignalsWindow::refreshAll()
{
    for (int channel = 0; channel < model_->rowCount(); ++channel) {
        const QModelIndex parent = model_->index(channel, 0);
        for (int row = 0; row < model_->rowCount(parent); ++row)
            model_->refresh(model_->index(row, 0, parent));
    }
    tree_->viewport()->update();
}

void SignalsWindow::setFrozen(bool frozen)
{
    if (frozen)
        refreshAll(); // rows that are scrolled to later are of the same moment
    else
        refresh();
}

void SignalsWindow::plotSelected()
{
    QVector<SignalId> ids;
    SignalId id;
    for (const QModelIndex &index : tree_->selectionModel()->selectedRows())
        if (model_->signalAt(filter_->mapToSource(index), &id))
            ids.append(id);
    if (!ids.isEmpty())
        emit plotWanted(ids);
}

void SignalsWindow::copySelected()
{
    QModelIndexList rows = tree_->selectionModel()->selectedRows();
    if (rows.isEmpty())
        return;
    const auto depthFirst = [this](const QModelIndex &a, const QModelIndex &b) {
        return tree_->visualRect(a).top() < tree_->visualRect(b).top();
    };
    std::sort(rows.begin(), rows.end(), depthFirst);
    QStringList lines;
    QModelIndex refreshed;
    for (const QModelIndex &row : qAsConst(rows)) {
        // Rows that were not on the screen show what was when they were.
        const QModelIndex source = filter_->mapToSource(row);
        const QModelIndex owner = source.parent().parent().isValid() ? source.parent() : source;
        if (owner != refreshed && !freeze_->isChecked())
            model_->refresh(owner);
        refreshed = owner;
        QStringList texts;
        for (int column = 0; column < SignalTreeModel::ColumnCount; ++column)
            texts.append(row.sibling(row.row(), column).data().toString());
        lines.append(texts.join('\t'));
    }
    tree_->viewport()->update();
    QGuiApplication::clipboard()->setText(lines.join('\n'));
}
