#include "analysis/plotwindow.h"

#include "analysis/plotview.h"
#include "analysis/signalhub.h"
#include "analysis/signaltreemodel.h"
#include "device/language.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QShortcut>
#include <QShowEvent>
#include <QSplitter>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace
{
enum Column { Name, Last, First, Second, Difference, ColumnCount };
constexpr int kPictureMs = 50;
constexpr int kRoundsPerValues = 5;                             // the numbers beside the pictures change more slowly
constexpr double kFirstSpan = 10;                               // seconds
constexpr int kColumnChars[ColumnCount] = {32, 16, 16, 16, 16}; // widths in average characters
constexpr int kListRows = 3;
const char *const kOptionNames[] = {"follow", "stacked", "commonScale", "steps", "cursors"};
constexpr bool kOptionDefaults[] = {true, true, false, false, false};
} // namespace

PlotWindow::PlotWindow(SignalHub *hub, int number, QWidget *parent)
    : AnalysisWindow(QStringLiteral("plot-%1").arg(number), parent), hub_(hub), number_(number)
{
    createWidgets();
    connectAll();
    timer_.setInterval(kPictureMs);
    hub_->start();
    restore();
    retranslate();
}

PlotWindow::~PlotWindow()
{
    for (const auto &signal : curves_)
        hub_->store().endFeed(signal->feed);
    if (wanting_)
        hub_->unwant();
}

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
    new_ = button(QStringLiteral("newPlot"));
    row->addWidget(fit_);
    row->addStretch();
    for (QPushButton *made : {remove_, export_, new_})
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
    auto *splitter = new QSplitter(Qt::Vertical);
    splitter->addWidget(view_);
    splitter->addWidget(list_);
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 0);
    splitter->setChildrenCollapsible(false);
    const int listHeight = (kListRows + 1) * (list_->fontMetrics().height() * 3 / 2);
    splitter->setSizes({designSize().height() - listHeight, listHeight});
    auto *all = new QVBoxLayout(this);
    all->addLayout(row);
    all->addWidget(hint_);
    all->addWidget(splitter, 1);
    all->addWidget(times_);
}

void PlotWindow::connectAll()
{
    for (int option = 0; option < OptionCount; ++option)
        connect(options_[option], &QPushButton::toggled, this, [this, option] { optionChanged(Option(option)); });
    connect(fit_, &QPushButton::clicked, this, [this] {
        options_[Follow]->setChecked(false);
        view_->fit();
    });
    connect(export_, &QPushButton::clicked, this, &PlotWindow::exportFile);
    connect(remove_, &QPushButton::clicked, this, &PlotWindow::removeSelected);
    connect(new_, &QPushButton::clicked, this, &PlotWindow::newPlotWanted);
    auto *removeKey = new QShortcut(QKeySequence::Delete, list_, nullptr, nullptr, Qt::WidgetShortcut);
    connect(removeKey, &QShortcut::activated, this, &PlotWindow::removeSelected);
    connect(view_, &PlotView::timesChanged, this, [this] {
        options_[Follow]->setChecked(false);
        showValues();
    });
    connect(view_, &PlotView::followWanted, this, [this] { options_[Follow]->setChecked(true); });
    connect(view_, &PlotView::cursorMoved, this, &PlotWindow::showValues);
    connect(view_, &PlotView::signalsDropped, this, &PlotWindow::addSignals);
    connect(list_, &QTreeWidget::itemChanged, this, &PlotWindow::itemChanged);
    connect(list_, &QTreeWidget::currentItemChanged, this, [this] { view_->select(selected()); });
    connect(&timer_, &QTimer::timeout, this, &PlotWindow::refresh);
    connect(hub_, &SignalHub::databasesChanged, this, &PlotWindow::describe);
}

void PlotWindow::retranslate()
{
    setWindowTitle(text3("曲线 %1", "曲線 %1", "Plot %1").arg(number_));
    options_[Follow]->setText(text3("跟随(&F)", "跟隨(&F)", "&Follow"));
    options_[Stacked]->setText(text3("分栏(&S)", "分欄(&S)", "&Stacked"));
    options_[CommonScale]->setText(text3("共用刻度(&C)", "共用刻度(&C)", "&Common scale"));
    options_[Steps]->setText(text3("阶梯(&T)", "階梯(&T)", "S&teps"));
    options_[Cursors]->setText(text3("游标(&U)", "游標(&U)", "C&ursors"));
    fit_->setText(text3("全部(&A)", "全部(&A)", "Fit &all"));
    export_->setText(text3("导出(&E)…", "匯出(&E)…", "&Export…"));
    remove_->setText(text3("移除(&R)", "移除(&R)", "&Remove"));
    new_->setText(text3("新曲线窗口(&N)", "新曲線視窗(&N)", "&New plot"));
    list_->setHeaderLabels({text3("信号", "訊號", "Signal"), text3("最新值", "最新值", "Last"),
                            text3("游标1", "游標1", "Cursor 1"), text3("游标2", "游標2", "Cursor 2"),
                            text3("差值", "差值", "Difference")});
    hint_->setText(text3("在“信号”窗口中双击信号，或将其拖到此处", "在「訊號」視窗中雙擊訊號，或將其拖曳到此處",
                         "Double-click a signal in the Signals window, or drag it here"));
    showValues();
}

// --- which signals ------------------------------------------------------------------------------------------------

void PlotWindow::addSignals(const QVector<SignalId> &ids)
{
    int left = 0;
    for (const SignalId &id : ids) {
        const auto same = [&id](const auto &signal) { return signal->id == id; };
        if (std::any_of(curves_.begin(), curves_.end(), same))
            continue;
        if (curves_.size() >= kMostSignals) {
            ++left;
            continue;
        }
        auto signal = std::make_unique<PlotSignal>();
        signal->id = id;
        signal->describe(*hub_->lookup());
        signal->feed = hub_->store().feed(id);
        curves_.push_back(std::move(signal));
    }
    if (left > 0)
        emit log(text3("一个曲线窗口最多显示%1个信号，%2个未加入", "一個曲線視窗最多顯示%1個訊號，%2個未加入",
                       "A plot shows at most %1 signals; %2 were left out")
                     .arg(kMostSignals)
                     .arg(left));
    keep();
    showCurves();
}

void PlotWindow::removeSelected()
{
    const PlotSignal *gone = selected();
    if (!gone)
        return;
    const auto at = std::find_if(curves_.begin(), curves_.end(), [gone](const auto &it) { return it.get() == gone; });
    const std::unique_ptr<PlotSignal> kept = std::move(*at); // until the view has forgotten it
    curves_.erase(at);
    hub_->store().endFeed(kept->feed);
    keep();
    showCurves();
}

void PlotWindow::describe()
{
    for (const auto &signal : curves_)
        signal->describe(*hub_->lookup());
    showCurves();
}

void PlotWindow::showCurves()
{
    const int row = list_->indexOfTopLevelItem(list_->currentItem());
    QVector<PlotSignal *> shown;
    {
        const QSignalBlocker blocker(list_);
        list_->clear();
        for (const auto &signal : curves_) {
            signal->number = shown.size() + 1;
            signal->colour = plotColour(signal->number);
            shown.append(signal.get());
            auto *item = new QTreeWidgetItem(list_);
            item->setText(Name, QStringLiteral("%1  %2").arg(signal->number).arg(signal->name()));
            item->setForeground(Name, signal->colour);
            item->setToolTip(Name, text3("通道%1", "通道%1", "Channel %1").arg(signal->id.channel));
            item->setCheckState(Name, signal->shown ? Qt::Checked : Qt::Unchecked);
        }
        list_->setCurrentItem(list_->topLevelItem(qBound(0, row, shown.size() - 1)));
    }
    view_->setCurves(shown);
    view_->select(selected());
    hint_->setVisible(curves_.empty());
    showValues();
}

void PlotWindow::itemChanged(QTreeWidgetItem *item)
{
    const int row = list_->indexOfTopLevelItem(item);
    PlotSignal &signal = *curves_[std::size_t(row)];
    const bool shown = item->checkState(Name) == Qt::Checked;
    if (shown == signal.shown)
        return;
    signal.shown = shown;
    QVector<PlotSignal *> all;
    for (const auto &curve : curves_)
        all.append(curve.get());
    view_->setCurves(all);
}

PlotSignal *PlotWindow::selected() const
{
    const int row = list_->indexOfTopLevelItem(list_->currentItem());
    return row >= 0 && row < int(curves_.size()) ? curves_[std::size_t(row)].get() : nullptr;
}

// --- pictures -----------------------------------------------------------------------------------------------------

void PlotWindow::takePoints()
{
    for (const auto &signal : curves_) {
        hub_->store().take(*signal->feed, &points_);
        for (const CurvePoint &point : points_)
            signal->data.append(point);
    }
}

void PlotWindow::refresh()
{
    takePoints();
    if (isMinimized())
        return;
    if (isOn(Follow)) {
        applyTimes();
        view_->showAll();
    }
    if (++rounds_ % kRoundsPerValues == 0)
        showValues();
}

void PlotWindow::applyTimes()
{
    const double span = view_->to() - view_->from();
    const double now = double(hub_->store().now()) / kNsPerSecond;
    view_->setTimes(now - span, now);
}

void PlotWindow::showValues()
{
    const bool cursors = isOn(Cursors);
    const QSignalBlocker blocker(list_);
    for (int row = 0; row < int(curves_.size()); ++row) {
        const PlotSignal &signal = *curves_[std::size_t(row)];
        QTreeWidgetItem *item = list_->topLevelItem(row);
        const auto text = [&signal](double value) {
            if (std::isnan(value))
                return QString();
            const QString state = signal.stateText(value);
            const QString plain = signal.unit.isEmpty() ? valueText(value) : valueText(value) + ' ' + signal.unit;
            return state.isEmpty() ? plain : QStringLiteral("%1 (%2)").arg(plain, state);
        };
        const bool empty = signal.data.isEmpty();
        item->setText(Last, empty ? QString() : text(signal.data.at(signal.data.size() - 1).value));
        const double first = signal.valueAt(toNanoseconds(view_->cursor(0)));
        const double second = signal.valueAt(toNanoseconds(view_->cursor(1)));
        item->setText(First, cursors ? text(first) : QString());
        item->setText(Second, cursors ? text(second) : QString());
        const bool both = cursors && !std::isnan(first) && !std::isnan(second);
        item->setText(Difference, both ? valueText(second - first) : QString());
    }
    const double distance = view_->cursor(1) - view_->cursor(0);
    QString line = text3("时间(秒)：%1 - %2", "時間(秒)：%1 - %2", "Time (s): %1 - %2")
                       .arg(view_->from(), 0, 'f', 3)
                       .arg(view_->to(), 0, 'f', 3);
    if (cursors)
        line += text3("　游标1：%1　游标2：%2　差：%3", "　游標1：%1　游標2：%2　差：%3",
                      "   Cursor 1: %1   Cursor 2: %2   Difference: %3")
                    .arg(view_->cursor(0), 0, 'f', 6)
                    .arg(view_->cursor(1), 0, 'f', 6)
                    .arg(distance, 0, 'f', 6);
    if (hub_->store().lost() > 0)
        line += text3("　丢失%1帧", "　遺失%1個訊框", "   %1 frames lost").arg(hub_->store().lost());
    times_->setText(line);
}

bool PlotWindow::isOn(Option option) const
{
    return options_[option]->isChecked();
}

void PlotWindow::optionChanged(Option option)
{
    switch (option) {
    case Follow:
        if (isOn(Follow))
            applyTimes();
        break;
    case Stacked:
        view_->setStacked(isOn(Stacked));
        break;
    case CommonScale:
        view_->setCommonScale(isOn(CommonScale));
        break;
    case Steps:
        view_->setStepped(isOn(Steps));
        break;
    case Cursors:
        if (isOn(Cursors))
            options_[Follow]->setChecked(false); // they stand still
        view_->showCursors(isOn(Cursors));
        break;
    case OptionCount:
        break;
    }
    keep();
    showValues();
}

// --- what is kept -------------------------------------------------------------------------------------------------

QString PlotWindow::key(const char *what) const
{
    return QStringLiteral("plots/%1/%2").arg(number_).arg(QLatin1String(what));
}

void PlotWindow::keep() const
{
    QSettings kept;
    QStringList texts;
    for (const auto &signal : curves_)
        texts.append(signal->id.toText());
    kept.setValue(key("signals"), texts);
    for (int option = 0; option < OptionCount; ++option)
        if (option != Follow && option != Cursors) // of the moment
            kept.setValue(key(kOptionNames[option]), options_[option]->isChecked());
}

void PlotWindow::restore()
{
    const QSettings kept;
    const QStringList texts = kept.value(key("signals")).toStringList();
    view_->setTimes(-kFirstSpan, 0);
    for (int option = 0; option < OptionCount; ++option) {
        const QSignalBlocker blocker(options_[option]);
        options_[option]->setChecked(option == Follow || option == Cursors
                                         ? kOptionDefaults[option]
                                         : kept.value(key(kOptionNames[option]), kOptionDefaults[option]).toBool());
    }
    view_->setStacked(isOn(Stacked));
    view_->setCommonScale(isOn(CommonScale));
    view_->setStepped(isOn(Steps));
    QVector<SignalId> ids;
    for (const QString &text : texts) {
        SignalId id;
        if (id.fromText(text))
            ids.append(id);
    }
    addSignals(ids);
}

void PlotWindow::showEvent(QShowEvent *event)
{
    AnalysisWindow::showEvent(event);
    if (!wanting_ && !event->spontaneous()) {
        wanting_ = true;
        hub_->want();
        timer_.start();
        view_->setFocus();
    }
}

void PlotWindow::hideEvent(QHideEvent *event)
{
    if (wanting_ && !event->spontaneous()) {
        wanting_ = false;
        timer_.stop();
        hub_->unwant();
    }
    AnalysisWindow::hideEvent(event);
}

void PlotWindow::changeEvent(QEvent *event)
{
    AnalysisWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        emit activated();
}
