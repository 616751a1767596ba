#include "analysis/plotwindow.h"

#include "analysis/plotview.h"
#include "analysis/signalhub.h"
#include "device/language.h"
#include "signals/valuetext.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
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
constexpr int kPictureMs = 50;
constexpr int kRoundsPerValues = 5; // the numbers beside the pictures change more slowly
constexpr double kFirstSpan = 10;   // seconds
constexpr double kMomentsSpan = 1;  // seconds, around a recording of one moment
constexpr bool kOptionDefaults[] = {true, true, false, false, false};
} // namespace

PlotWindow::PlotWindow(SignalHub *hub, int number, QWidget *parent)
    : AnalysisWindow((hub->isLive() ? QStringLiteral("plot-%1") : QStringLiteral("recorded-plot-%1")).arg(number),
                     parent),
      hub_(hub),
      number_(number),
      whole_(!hub->isLive())
{
    createWidgets();
    connectAll();
    timer_.setInterval(kPictureMs);
    hub_->start();
    restore();
    PlotWindow::retranslate();
}

PlotWindow::~PlotWindow()
{
    for (const auto &signal : curves_)
        signal->reading->store().endFeed(signal->feed);
    if (wanting_ && hub_->isLive())
        hub_->unwant();
}

// --- which signals ------------------------------------------------------------------------------------------------

void PlotWindow::addSignals(const QVector<SignalId> &ids)
{
    int left = 0;
    std::vector<PlotSignal *> added;
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
        added.push_back(signal.get());
        curves_.push_back(std::move(signal));
    }
    feed(added);
    if (left > 0)
        emit log(text3("一个曲线窗口最多显示%1个信号，%2个未加入", "一個曲線視窗最多顯示%1個訊號，%2個未加入",
                       "A plot shows at most %1 signals; %2 were left out")
                     .arg(kMostSignals)
                     .arg(left));
    keep();
    showCurves();
}

// Their points from now on, or the recording's from its beginning.
void PlotWindow::feed(const std::vector<PlotSignal *> &curves)
{
    if (curves.empty())
        return;
    const std::shared_ptr<SignalReading> reading = hub_->curveReading();
    for (PlotSignal *curve : curves) {
        if (curve->reading)
            curve->reading->store().endFeed(curve->feed);
        curve->reading = reading;
        curve->feed = reading->store().feed(curve->id);
        curve->data.clear();
    }
    reading_ = !hub_->isLive();
    if (reading_)
        reading->start();
}

void PlotWindow::removeSelected()
{
    const PlotSignal *gone = selected();
    if (!gone)
        return;
    const auto at = std::find_if(curves_.begin(), curves_.end(), [gone](const auto &it) { return it.get() == gone; });
    const std::unique_ptr<PlotSignal> kept = std::move(*at); // until the view has forgotten it
    curves_.erase(at);
    kept->reading->store().endFeed(kept->feed);
    keep();
    showCurves();
}

void PlotWindow::databasesChanged()
{
    std::vector<PlotSignal *> again; // points of a recording mean something else now
    for (const auto &signal : curves_) {
        signal->describe(*hub_->lookup());
        if (!hub_->isLive())
            again.push_back(signal.get());
    }
    feed(again);
    showCurves();
}

// Where names alone would not tell them apart.
void PlotWindow::tellChannels()
{
    QStringList names;
    for (const auto &signal : curves_) {
        signal->tellsChannel = false;
        names.append(signal->name());
    }
    for (const auto &signal : curves_)
        signal->tellsChannel = names.count(signal->name()) > 1;
}

void PlotWindow::showCurves()
{
    tellChannels();
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
    keep();
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
        signal->reading->store().take(*signal->feed, &points_);
        for (const CurvePoint &point : points_)
            signal->data.append(point);
    }
}

void PlotWindow::refresh()
{
    const bool wasReading = reading_;
    const double progress = lookAtReading(); // before the points: after the last look there are none
    takePoints();
    lookAtExport();
    progress_->setVisible(reading_ || csv_);
    progress_->setValue(int((csv_ ? csv_->progress() : progress) * kProgressSteps));
    if (isMinimized())
        return;
    if (reading_ || wasReading) {
        if (whole_)
            showWhole();
        view_->showAll();
    } else if (hub_->isLive() && isOn(Follow)) {
        applyTimes();
        view_->showAll();
    }
    if (++rounds_ % kRoundsPerValues == 0)
        showValues();
}

void PlotWindow::applyTimes()
{
    const double span = view_->to() - view_->from();
    const double now = double(hub_->store().now()) / kNanosecondsPerSecond;
    view_->setTimes(now - span, now);
}

// A recording from end to end; its time may be longer than its rows say, when the adapter's clock began anew in it.
void PlotWindow::showWhole()
{
    const auto times = hub_->times();
    if (!times)
        return;
    std::int64_t end = times->second;
    for (const auto &signal : curves_)
        end = std::max(end, signal->reading->store().now());
    if (end > times->first)
        view_->setTimes(double(times->first) / kNanosecondsPerSecond, double(end) / kNanosecondsPerSecond);
    else
        view_->setTimes(double(end) / kNanosecondsPerSecond - kMomentsSpan / 2,
                        double(end) / kNanosecondsPerSecond + kMomentsSpan / 2);
}

double PlotWindow::lookAtReading()
{
    reading_ = false;
    double progress = 1;
    for (const auto &signal : curves_) {
        reading_ = reading_ || signal->reading->isReading();
        progress = std::min(progress, signal->reading->progress());
    }
    return progress;
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
    const auto cutShort = [](const auto &signal) { return signal->reading->isCutShort(); };
    if (!hub_->isLive() && std::any_of(curves_.begin(), curves_.end(), cutShort))
        line += QStringLiteral("   ") + fileChangedText();
    std::size_t dropped = 0;
    for (const auto &signal : curves_)
        dropped += signal->data.dropped();
    if (dropped > 0)
        line += text3("　已舍弃最早的%1个点", "　已捨棄最早的%1個點", "   %1 oldest points dropped").arg(dropped);
    if (hub_->store().lost() > 0)
        line += text3("　丢失%1帧", "　遺失%1幀", "   %1 frames lost").arg(hub_->store().lost());
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
    return (hub_->isLive() ? QStringLiteral("plots/%1/%2") : QStringLiteral("recordedPlots/%1/%2"))
        .arg(number_)
        .arg(QLatin1String(what));
}

void PlotWindow::keep() const
{
    QSettings kept;
    QStringList texts;
    QStringList hidden;
    for (const auto &signal : curves_) {
        texts.append(signal->id.toText());
        if (!signal->shown)
            hidden.append(signal->id.toText());
    }
    kept.setValue(key("signals"), texts);
    kept.setValue(key("hidden"), hidden);
    kept.setValue(key("splitter"), splitter_->saveState());
    for (int option = 0; option < OptionCount; ++option)
        if (option != Follow && option != Cursors) // of the moment
            kept.setValue(key(kOptionNames[option]), options_[option]->isChecked());
}

void PlotWindow::restore()
{
    const QSettings kept;
    const QStringList texts = kept.value(key("signals")).toStringList();
    const QStringList hidden = kept.value(key("hidden")).toStringList();
    splitter_->restoreState(kept.value(key("splitter")).toByteArray());
    view_->setTimes(-kFirstSpan, 0);
    if (!hub_->isLive())
        showWhole();
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
    for (const auto &signal : curves_)
        signal->shown = !hidden.contains(signal->id.toText());
    keep();
    showCurves();
}

void PlotWindow::showEvent(QShowEvent *event)
{
    AnalysisWindow::showEvent(event);
    if (!wanting_ && !event->spontaneous()) {
        wanting_ = true;
        if (hub_->isLive())
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
        if (hub_->isLive())
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
