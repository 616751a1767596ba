#include "analysis/plotview.h"

#include <QDragEnterEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QVBoxLayout>

#include <cmath>
#include <qwt_plot_canvas.h>
#include <qwt_scale_engine.h>
#include <qwt_scale_map.h>

namespace
{
constexpr double kWheelZoom = 0.8;    // for one step of the wheel or key
constexpr double kWheelNotch = 120.0; // eighths of a degree
constexpr double kKeyMove = 0.1;      // of the window
constexpr double kCursorMove = 0.01;
constexpr double kShortest = 1e-6;     // seconds
constexpr double kLongest = 4e9;       // a clock set right in the middle of a recording included
constexpr double kLeastValues = 1e-12; // of a zoomed scale
constexpr double kMostValues = 1e18;
constexpr int kCursorReach = 5; // pixels
constexpr int kScaleSteps = 6;
constexpr double kStateMargin = 0.25; // of one state, above and below
} // namespace

PlotView::PlotView(QWidget *parent) : QWidget(parent), layout_(new QVBoxLayout(this))
{
    layout_->setContentsMargins(0, 0, 0, 0);
    layout_->setSpacing(0);
    setFocusPolicy(Qt::StrongFocus);
    setAcceptDrops(true);
    build();
}

void PlotView::setCurves(const QVector<PlotSignal *> &curves)
{
    curves_ = curves;
    if (!curves_.contains(const_cast<PlotSignal *>(selected_)))
        selected_ = nullptr;
    build();
    showAll();
}

void PlotView::build()
{
    qDeleteAll(lanes_);
    lanes_.clear();
    QVector<QVector<const PlotSignal *>> groups;
    QVector<const PlotSignal *> together;
    for (const PlotSignal *signal : qAsConst(curves_)) {
        if (!signal->shown)
            continue;
        if (stacked_)
            groups.append({signal});
        else
            together.append(signal);
    }
    if (groups.isEmpty())
        groups.append(together);
    for (int i = 0; i < groups.size(); ++i) {
        auto *lane = new PlotLane(&look_, groups[i], i + 1 == groups.size(), this);
        lane->canvas()->installEventFilter(this);
        connect(lane, &PlotLane::resized, this, &PlotView::alignAxes);
        layout_->addWidget(lane);
        lanes_.append(lane);
    }
    shareHeight();
    select(selected_);
}

void PlotView::setStacked(bool stacked)
{
    stacked_ = stacked;
    build();
    showAll();
}

void PlotView::setCommonScale(bool common)
{
    common_ = common;
    for (PlotSignal *signal : qAsConst(curves_))
        signal->scaleKept = false;
    showAll();
}

void PlotView::setStepped(bool stepped)
{
    look_.stepped = stepped;
    showAll();
}

void PlotView::showCursors(bool shown)
{
    look_.cursorsShown = shown;
    if (shown && !cursorsPlaced_) {
        cursorsPlaced_ = true;
        for (int i = 0; i < kCursors; ++i)
            look_.cursors[i] = look_.from + (look_.to - look_.from) * (i + 1) / (kCursors + 1);
    }
    showAll();
    emit cursorMoved();
}

void PlotView::select(const PlotSignal *signal)
{
    selected_ = signal;
    if (stacked_ || !signal || !signal->shown || !curves_.contains(const_cast<PlotSignal *>(signal)))
        return;
    lanes_.first()->setAxisSignal(signal);
    showAll();
}

void PlotView::setTimes(double from, double to)
{
    if (!(to - from >= kShortest) || to - from > kLongest)
        return;
    look_.from = from;
    look_.to = to;
}

// --- scales -------------------------------------------------------------------------------------------------------

void PlotView::scaleAll()
{
    ValueRange common;
    const QwtLinearScaleEngine engine;
    const auto rounded = [&engine](ValueRange range) {
        double lower = range.minimum;
        double upper = range.maximum;
        if (lower == upper) { // a line in the middle
            lower -= qMax(1.0, std::abs(lower) / 2);
            upper += qMax(1.0, std::abs(upper) / 2);
        }
        double step = 0;
        engine.autoScale(kScaleSteps, lower, upper, step);
        return ValueRange{lower, upper};
    };
    for (PlotSignal *signal : qAsConst(curves_)) {
        if (signal->scaleKept || !signal->shown)
            continue;
        const std::size_t begin = signal->data.firstAt(toNanoseconds(look_.from));
        const std::size_t end = signal->data.firstAt(toNanoseconds(look_.to));
        ValueRange range = signal->data.range(begin > 0 ? begin - 1 : 0, end);
        if (range.isEmpty())
            continue; // as it was
        common.add(range);
        if (signal->isEnumeration()) {
            const double margin = kStateMargin * std::abs(signal->factor);
            signal->scale = {qMin(range.minimum, signal->offset) - margin, range.maximum + margin};
        } else {
            signal->scale = rounded(range);
        }
    }
    if (!common_ || common.isEmpty())
        return;
    for (PlotSignal *signal : qAsConst(curves_))
        if (!signal->scaleKept)
            signal->scale = rounded(common);
}

void PlotView::showAll()
{
    scaleAll();
    for (PlotLane *lane : qAsConst(lanes_))
        lane->showAxes();
    alignAxes();
    for (PlotLane *lane : qAsConst(lanes_))
        lane->replot();
}

// Times stand below each other.
void PlotView::alignAxes()
{
    if (lanes_.size() < 2)
        return;
    int width = 0;
    for (const PlotLane *lane : qAsConst(lanes_))
        width = qMax(width, lane->axisWidth());
    for (PlotLane *lane : qAsConst(lanes_))
        lane->setAxisWidth(width);
}

// Evenly, what the time axis takes of the last one left aside.
void PlotView::shareHeight()
{
    const int each = qMax(1, (height() - lanes_.last()->timeAxisHeight()) / lanes_.size());
    for (int i = 0; i < lanes_.size(); ++i)
        layout_->setStretch(i, i + 1 < lanes_.size() ? each : qMax(1, height() - i * each));
    layout_->activate();
}

void PlotView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    shareHeight();
}

void PlotView::fit()
{
    std::int64_t first = std::numeric_limits<std::int64_t>::max();
    std::int64_t last = std::numeric_limits<std::int64_t>::min();
    for (PlotSignal *signal : qAsConst(curves_)) {
        signal->scaleKept = false;
        if (signal->data.isEmpty())
            continue;
        first = qMin(first, signal->data.at(0).time);
        last = qMax(last, signal->data.at(signal->data.size() - 1).time);
    }
    if (first < last)
        setTimes(double(first) / kNanosecondsPerSecond, double(last) / kNanosecondsPerSecond);
    showAll();
}

// --- mouse and keys -----------------------------------------------------------------------------------------------

void PlotView::zoomTime(double factor, double around)
{
    setTimes(around - (around - look_.from) * factor, around + (look_.to - around) * factor);
    showAll();
    emit timesChanged();
}

void PlotView::moveTime(double fraction)
{
    const double distance = (look_.to - look_.from) * fraction;
    setTimes(look_.from + distance, look_.to + distance);
    showAll();
    emit timesChanged();
}

void PlotView::zoomValues(double factor)
{
    for (PlotSignal *signal : qAsConst(curves_)) {
        if (!signal->shown || signal->scale.isEmpty() || (!common_ && selected_ && signal != selected_))
            continue;
        const double middle = (signal->scale.minimum + signal->scale.maximum) / 2;
        const double half = (signal->scale.maximum - signal->scale.minimum) / 2 * factor;
        if (half < kLeastValues || half > kMostValues)
            continue;
        signal->scale = {middle - half, middle + half};
        signal->scaleKept = true;
    }
    showAll();
}

void PlotView::moveValues(double fraction)
{
    for (PlotSignal *signal : qAsConst(curves_)) {
        if (!signal->shown || signal->scale.isEmpty() || (!common_ && selected_ && signal != selected_))
            continue;
        const double distance = (signal->scale.maximum - signal->scale.minimum) * fraction;
        signal->scale = {signal->scale.minimum + distance, signal->scale.maximum + distance};
        signal->scaleKept = true;
    }
    showAll();
}

void PlotView::moveCursor(int index, double seconds)
{
    if (!look_.cursorsShown)
        return;
    look_.cursors[index] = seconds;
    showAll();
    emit cursorMoved();
}

int PlotView::cursorNear(const PlotLane *lane, int x) const
{
    const QwtScaleMap map = lane->canvasMap(QwtPlot::xBottom);
    for (int i = 0; i < kCursors; ++i)
        if (look_.cursorsShown && std::abs(map.transform(look_.cursors[i]) - x) <= kCursorReach)
            return i;
    return -1;
}

void PlotView::press(const PlotLane *lane, QPoint place)
{
    setFocus(Qt::MouseFocusReason);
    dragging_ = true;
    dragged_ = place;
    draggedCursor_ = cursorNear(lane, place.x());
}

void PlotView::drag(const PlotLane *lane, QPoint place)
{
    const QPoint distance = place - dragged_;
    dragged_ = place;
    if (draggedCursor_ >= 0) {
        moveCursor(draggedCursor_, lane->canvasMap(QwtPlot::xBottom).invTransform(place.x()));
        return;
    }
    const bool kept = std::any_of(curves_.begin(), curves_.end(), [](const auto *it) { return it->scaleKept; });
    if (kept && distance.y() != 0)
        moveValues(double(distance.y()) / qMax(1, lane->canvas()->height()));
    if (distance.x() != 0)
        moveTime(-double(distance.x()) / qMax(1, lane->canvas()->width()));
}

bool PlotView::eventFilter(QObject *watched, QEvent *event)
{
    auto *canvas = qobject_cast<QWidget *>(watched);
    auto *lane = canvas ? qobject_cast<PlotLane *>(canvas->parentWidget()) : nullptr;
    if (!lane)
        return QWidget::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::Wheel: {
        const auto *wheel = static_cast<const QWheelEvent *>(event);
        const double factor = std::pow(kWheelZoom, wheel->angleDelta().y() / kWheelNotch);
        if (wheel->modifiers() & Qt::ControlModifier)
            zoomValues(factor);
        else
            zoomTime(factor, lane->canvasMap(QwtPlot::xBottom).invTransform(wheel->position().x()));
        return true;
    }
    case QEvent::MouseButtonPress: {
        const auto *mouse = static_cast<const QMouseEvent *>(event);
        if (mouse->button() == Qt::LeftButton)
            press(lane, mouse->pos());
        return true;
    }
    case QEvent::MouseMove:
        if (dragging_)
            drag(lane, static_cast<const QMouseEvent *>(event)->pos());
        return true;
    case QEvent::MouseButtonRelease:
        dragging_ = false;
        return true;
    case QEvent::MouseButtonDblClick:
        fit();
        emit timesChanged();
        return true;
    default:
        return QWidget::eventFilter(watched, event);
    }
}

// Left, right: move in time; + and -: zoom in time. Up, down, Ctrl with + and -: the same of values. Ctrl and Shift
// with left and right: the first and the second cursor. Home: fit; End: follow.
void PlotView::keyPressEvent(QKeyEvent *event)
{
    const bool control = event->modifiers() & Qt::ControlModifier;
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    const double middle = (look_.from + look_.to) / 2;
    const double sign = event->key() == Qt::Key_Left || event->key() == Qt::Key_Down ? -1 : 1;
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
        if (control || shift) {
            const int index = control ? 0 : 1;
            moveCursor(index, look_.cursors[index] + sign * kCursorMove * (look_.to - look_.from));
        } else {
            moveTime(sign * kKeyMove);
        }
        break;
    case Qt::Key_Up:
    case Qt::Key_Down:
        moveValues(sign * kKeyMove);
        break;
    case Qt::Key_Plus:
    case Qt::Key_Equal:
    case Qt::Key_Minus: {
        const double factor = event->key() == Qt::Key_Minus ? 1 / kWheelZoom : kWheelZoom;
        if (control)
            zoomValues(factor);
        else
            zoomTime(factor, middle);
        break;
    }
    case Qt::Key_Home:
        fit();
        emit timesChanged();
        break;
    case Qt::Key_End:
        emit followWanted();
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

void PlotView::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasFormat(QLatin1String(kSignalsMimeType)))
        event->acceptProposedAction();
}

void PlotView::dropEvent(QDropEvent *event)
{
    QVector<SignalId> ids;
    const QString text = QString::fromUtf8(event->mimeData()->data(QLatin1String(kSignalsMimeType)));
    for (const QString &line : text.split('\n')) {
        SignalId id;
        if (id.fromText(line))
            ids.append(id);
    }
    if (!ids.isEmpty()) {
        event->acceptProposedAction();
        emit signalsDropped(ids);
    }
}
