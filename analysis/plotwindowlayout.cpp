// PlotWindow's widgets, their texts and what they do.
#include "analysis/plotview.h"
#include "analysis/plotwindow.h"
#include "analysis/signalhub.h"
#include "device/language.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QShortcut>
#include <QSplitter>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace
{
constexpr int kColumnChars[] = {32, 16, 16, 16, 16}; // widths in average characters
constexpr int kListRows = 3;
} // namespace

void PlotWindow::createWidgets()
{
    const auto button = [](const QString &name) {
        auto *made = new QPushButton;
        made->setObjectName(name + QStringLiteral("Button"));
        made->setAutoDefault(true);
        return made;
    };
    auto *row = new QHBoxLayout;
    for (int option = 0; option < OptionCount; ++option) {
        options_[option] = button(QLatin1String(kOptionNames[option]));
        options_[option]->setCheckable(true);
        row->addWidget(options_[option]);
    }
    fit_ = button(QStringLiteral("fit"));
    export_ = button(QStringLiteral("export"));
    remove_ = button(QStringLiteral("remove"));
    signals_ = button(QStringLiteral("signals"));
    new_ = button(QStringLiteral("newPlot"));
    options_[Follow]->setVisible(hub_->isLive());
    row->addWidget(fit_);
    row->addStretch();
    for (QPushButton *made : {signals_, remove_, export_, new_})
        row->addWidget(made);
    view_ = new PlotView;
    view_->setObjectName(QStringLiteral("plotView"));
    list_ = new QTreeWidget;
    list_->setObjectName(QStringLiteral("curveList"));
    list_->setRootIsDecorated(false);
    list_->setUniformRowHeights(true);
    list_->setColumnCount(ColumnCount);
    for (int column = 0; column < ColumnCount; ++column)
        list_->setColumnWidth(column, kColumnChars[column] * list_->fontMetrics().averageCharWidth());
    hint_ = new QLabel;
    hint_->setWordWrap(true);
    hint_->setAlignment(Qt::AlignCenter);
    times_ = new QLabel;
    times_->setObjectName(QStringLiteral("timesLabel"));
    progress_ = new QProgressBar;
    progress_->setObjectName(QStringLiteral("progressBar"));
    progress_->setRange(0, kProgressSteps);
    progress_->hide();
    splitter_ = new QSplitter(Qt::Vertical);
    splitter_->addWidget(view_);
    splitter_->addWidget(list_);
    splitter_->setStretchFactor(0, 1);
    splitter_->setStretchFactor(1, 0);
    splitter_->setChildrenCollapsible(false);
    const int listHeight = (kListRows + 1) * (list_->fontMetrics().height() * 3 / 2);
    splitter_->setSizes({designSize().height() - listHeight, listHeight});
    auto *all = new QVBoxLayout(this);
    all->addLayout(row);
    all->addWidget(hint_);
    all->addWidget(splitter_, 1);
    all->addWidget(times_);
    all->addWidget(progress_);
}

void PlotWindow::connectAll()
{
    for (int option = 0; option < OptionCount; ++option)
        connect(options_[option], &QPushButton::toggled, this, [this, option] { optionChanged(Option(option)); });
    connect(fit_, &QPushButton::clicked, this, [this] {
        options_[Follow]->setChecked(false);
        view_->fit();
        whole_ = !hub_->isLive();
        if (whole_) {
            showWhole();
            view_->showAll();
        }
    });
    connect(export_, &QPushButton::clicked, this, &PlotWindow::exportFile);
    connect(remove_, &QPushButton::clicked, this, &PlotWindow::removeSelected);
    connect(signals_, &QPushButton::clicked, this, &PlotWindow::signalsWanted);
    connect(new_, &QPushButton::clicked, this, &PlotWindow::newPlotWanted);
    auto *removeKey = new QShortcut(QKeySequence::Delete, list_, nullptr, nullptr, Qt::WidgetShortcut);
    connect(removeKey, &QShortcut::activated, this, &PlotWindow::removeSelected);
    connect(view_, &PlotView::timesChanged, this, [this] {
        options_[Follow]->setChecked(false);
        whole_ = false;
        showValues();
    });
    if (hub_->isLive())
        connect(view_, &PlotView::followWanted, this, [this] { options_[Follow]->setChecked(true); });
    connect(view_, &PlotView::cursorMoved, this, &PlotWindow::showValues);
    connect(view_, &PlotView::signalsDropped, this, &PlotWindow::addSignals);
    connect(splitter_, &QSplitter::splitterMoved, this, &PlotWindow::keep);
    connect(list_, &QTreeWidget::itemChanged, this, &PlotWindow::itemChanged);
    connect(list_, &QTreeWidget::currentItemChanged, this, [this] { view_->select(selected()); });
    connect(&timer_, &QTimer::timeout, this, &PlotWindow::refresh);
    connect(hub_, &SignalHub::databasesChanged, this, &PlotWindow::databasesChanged);
}

void PlotWindow::retranslate()
{
    setWindowTitle(text3("曲线 %1", "曲線 %1", "Plot %1").arg(number_) + hub_->titleEnd());
    options_[Follow]->setText(text3("跟随(&F)", "跟隨(&F)", "&Follow"));
    options_[Stacked]->setText(text3("分栏(&S)", "分欄(&S)", "&Stacked"));
    options_[CommonScale]->setText(text3("共用刻度(&C)", "共用刻度(&C)", "&Common scale"));
    options_[Steps]->setText(text3("阶梯(&T)", "階梯(&T)", "S&teps"));
    options_[Cursors]->setText(text3("游标(&U)", "游標(&U)", "C&ursors"));
    fit_->setText(text3("全部(&A)", "全部(&A)", "Fit &all"));
    setExportText();
    remove_->setText(text3("移除(&R)", "移除(&R)", "&Remove"));
    signals_->setText(text3("信号(&G)…", "訊號(&G)…", "Si&gnals…"));
    new_->setText(text3("新曲线窗口(&N)", "新曲線視窗(&N)", "&New plot"));
    list_->setHeaderLabels({text3("信号", "訊號", "Signal"), text3("最新值", "最新值", "Last"),
                            text3("游标1", "游標1", "Cursor 1"), text3("游标2", "游標2", "Cursor 2"),
                            text3("差值", "差值", "Difference")});
    hint_->setText(text3("在“信号”窗口中双击信号，或将其拖到此处", "在「訊號」視窗中雙擊訊號，或將其拖曳到此處",
                         "Double-click a signal in the Signals window, or drag it here"));
    showValues();
}
