#include "analysis/plotlane.h"

#include "analysis/columnpicture.h"
#include "analysis/curvestroke.h"
#include "analysis/signaltreemodel.h"

#include <QEvent>
#include <QLocale>
#include <QPaintEngine>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <qwt_plot_canvas.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_item.h>
#include <qwt_plot_marker.h>
#include <qwt_scale_draw.h>
#include <qwt_scale_engine.h>
#include <qwt_scale_map.h>
#include <qwt_scale_widget.h>
#include <qwt_text.h>

namespace
{
constexpr double kFarthest = 1e6; // pixels, that the painter still takes
constexpr int kNumberGap = 3;     // pixels from a curve's end to its number
constexpr int kLongestState = 16; // characters on an axis
constexpr int kMostStates = 12;   // on an axis
constexpr int kMajorSteps = 6;
constexpr int kMinorSteps = 4;
constexpr int kLabelDigits = 12;

// All curves of a lane: those with few points as lines, the others, on a screen, as one picture.
class CurvesItem : public QwtPlotItem
{
public:
    CurvesItem(const LaneLook *look, const QVector<const PlotSignal *> &curves) : look_(look), curves_(curves)
    {
        setZ(10);
    }

    void draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap, const QRectF &canvas) const override;

private:
    const LaneLook *look_;
    const QVector<const PlotSignal *> curves_;
    // Kept from one drawing to the next:
    mutable std::vector<QPointF> stroke_;
    mutable ColumnPicture picture_;
};

// A printer and a document get lines, which stay lines at every scale.
bool isScreen(const QPainter &painter)
{
    return painter.paintEngine()->type() == QPaintEngine::Raster &&
           painter.deviceTransform().type() <= QTransform::TxTranslate;
}

void drawLines(QPainter *painter, const std::vector<QPointF> &stroke)
{
    const auto isBreak = [](const QPointF &point) { return std::isnan(point.y()); };
    for (auto begin = stroke.begin(); begin != stroke.end();) {
        const auto stop = std::find_if(begin, stroke.end(), isBreak);
        const int count = int(stop - begin);
        if (count > 1)
            painter->drawPolyline(&*begin, count);
        else if (count == 1)
            painter->drawPoint(*begin);
        begin = std::find_if_not(stop, stroke.end(), isBreak);
    }
}

void drawNumber(QPainter *painter, const PlotSignal &signal, QPointF end, const QRectF &canvas)
{
    const QString text = QString::number(signal.number);
    const QFontMetricsF metrics(painter->font());
    const double x = qMin(end.x() + kNumberGap, canvas.right() - metrics.horizontalAdvance(text) - kNumberGap);
    const double y = std::clamp(end.y() - kNumberGap, canvas.top() + metrics.ascent(), canvas.bottom() - kNumberGap);
    painter->setPen(signal.colour);
    painter->drawText(QPointF(x, y), text);
}

void CurvesItem::draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap, const QRectF &canvas) const
{
    TimeWindow window;
    window.from = toNanoseconds(xMap.s1());
    window.to = toNanoseconds(xMap.s2());
    window.pixels = qMax(1, int(std::ceil(xMap.pDist())));
    const double perPixel = (xMap.p2() - xMap.p1()) / window.pixels;
    const bool screen = isScreen(*painter);
    const QRect area = canvas.toAlignedRect();
    if (screen)
        picture_.begin(area.size());
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, false);
    QVector<QPair<const PlotSignal *, QPointF>> ends;
    for (const PlotSignal *signal : curves_) {
        if (!signal->shown || signal->scale.isEmpty())
            continue;
        const bool full = strokeOf(signal->data, window, look_->stepped || signal->isEnumeration(), stroke_);
        // Every signal by its own scale, whichever the axis shows.
        const double perValue = (yMap.p2() - yMap.p1()) / (signal->scale.maximum - signal->scale.minimum);
        const QPointF origin = screen && full ? area.topLeft() : QPointF();
        const QPointF *end = nullptr;
        for (QPointF &point : stroke_) {
            const double x = xMap.p1() + point.x() * perPixel - origin.x();
            point.setX(std::clamp(x, -kFarthest, kFarthest));
            if (std::isnan(point.y()))
                continue;
            const double y = yMap.p1() + (point.y() - signal->scale.minimum) * perValue - origin.y();
            point.setY(std::clamp(y, -kFarthest, kFarthest));
            end = &point;
        }
        if (end && end->x() + origin.x() >= 0)
            ends.append({signal, *end + origin});
        if (screen && full) {
            picture_.add(stroke_, signal->colour.rgba());
        } else {
            painter->setPen(QPen(signal->colour, 0));
            drawLines(painter, stroke_);
        }
    }
    if (screen && !picture_.isEmpty())
        picture_.draw(painter, area.topLeft());
    for (const auto &[signal, end] : qAsConst(ends))
        drawNumber(painter, *signal, end, canvas);
    painter->restore();
}

// Labels of a signal's values: the states' texts where it has them.
class ValueScaleDraw : public QwtScaleDraw
{
public:
    explicit ValueScaleDraw(const PlotLane *lane) : lane_(lane) {}

    QwtText label(double value) const override
    {
        const PlotSignal *signal = lane_->axisSignal();
        const QString state = signal ? signal->stateText(value) : QString();
        QwtText text(state.isEmpty() ? valueText(value) : state.left(kLongestState), QwtText::PlainText);
        return text;
    }

private:
    const PlotLane *lane_;
};

class TimeScaleDraw : public QwtScaleDraw
{
public:
    QwtText label(double value) const override
    {
        return QwtText(QString::number(value, 'g', kLabelDigits), QwtText::PlainText);
    }
};
} // namespace

PlotLane::PlotLane(const LaneLook *look, const QVector<const PlotSignal *> &curves, bool bottom, QWidget *parent)
    : QwtPlot(parent), look_(look), axisSignal_(curves.isEmpty() ? nullptr : curves.first())
{
    setAutoReplot(false);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored); // lanes share the height evenly, however many there are
    setCanvasBackground(Qt::white);
    auto *surface = static_cast<QwtPlotCanvas *>(canvas());
    surface->setFrameStyle(QFrame::Box | QFrame::Plain);
    surface->setLineWidth(1);
    surface->setFocusPolicy(Qt::NoFocus);
    surface->setCursor(Qt::ArrowCursor);
    setAxisScaleDraw(yLeft, new ValueScaleDraw(this));
    setAxisScaleDraw(xBottom, new TimeScaleDraw);
    enableAxis(xBottom, bottom);
    auto *grid = new QwtPlotGrid;
    grid->setMajorPen(QPen(QColor(0xDD, 0xDD, 0xDD), 0));
    grid->attach(this);
    (new CurvesItem(look, curves))->attach(this);
    const Qt::PenStyle styles[] = {Qt::SolidLine, Qt::DashLine};
    for (int i = 0; i < 2; ++i) {
        cursors_[i] = new QwtPlotMarker;
        cursors_[i]->setLineStyle(QwtPlotMarker::VLine);
        cursors_[i]->setLinePen(QPen(QColor(0x40, 0x40, 0x40), 0, styles[i]));
        cursors_[i]->setZ(20);
        cursors_[i]->attach(this);
    }
    setFonts();
}

void PlotLane::setFonts()
{
    for (int axis : {int(yLeft), int(xBottom)}) {
        setAxisFont(axis, font());
        QwtText title = axisTitle(axis);
        title.setFont(font());
        title.setRenderFlags(Qt::AlignHCenter);
        setAxisTitle(axis, title);
    }
}

void PlotLane::changeEvent(QEvent *event)
{
    QwtPlot::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        setFonts();
}

void PlotLane::resizeEvent(QResizeEvent *event)
{
    QwtPlot::resizeEvent(event);
    showAxis(); // as many labels as there is room for
}

void PlotLane::showAxis()
{
    QwtText title;
    QPalette palette = axisWidget(yLeft)->palette();
    if (axisSignal_) {
        title = QwtText(
            axisSignal_->unit.isEmpty()
                ? QStringLiteral("%1  %2").arg(axisSignal_->number).arg(axisSignal_->id.signal)
                : QStringLiteral("%1  %2 [%3]").arg(axisSignal_->number).arg(axisSignal_->id.signal, axisSignal_->unit),
            QwtText::PlainText);
        palette.setColor(QPalette::Text, axisSignal_->colour);
        palette.setColor(QPalette::WindowText, axisSignal_->colour);
    }
    // As much of it as there is room for; the number, which is in the list too, comes first.
    const int room = canvas()->height() - fontMetrics().height(); // the scale is that much shorter, at most
    title = QwtText(fontMetrics().elidedText(title.text(), Qt::ElideRight, room), QwtText::PlainText);
    title.setFont(font());
    if (title.text() != axisTitle(yLeft).text())
        setAxisTitle(yLeft, title);
    if (palette != axisWidget(yLeft)->palette())
        axisWidget(yLeft)->setPalette(palette);
    if (!axisSignal_ || axisSignal_->scale.isEmpty()) {
        setAxisScale(yLeft, 0, 1);
        return;
    }
    const ValueRange &scale = axisSignal_->scale;
    const double states = (scale.maximum - scale.minimum) / std::abs(axisSignal_->factor);
    QwtScaleDiv division;
    const QwtLinearScaleEngine engine;
    if (axisSignal_->isEnumeration() && states <= kMostStates) {
        const double room = std::max(1.0, double(canvas()->height()) / fontMetrics().height());
        const double step = std::abs(axisSignal_->factor) * std::max(1.0, std::ceil(states / room));
        division = engine.divideScale(scale.minimum, scale.maximum, kMostStates, 0, step);
    } else {
        const bool low = canvas()->height() < kMajorSteps * 2 * fontMetrics().height();
        division = engine.divideScale(scale.minimum, scale.maximum, low ? kMajorSteps / 2 : kMajorSteps,
                                      low ? 0 : kMinorSteps);
    }
    setAxisScaleDiv(yLeft, division);
}

void PlotLane::showAll()
{
    setAxisScale(xBottom, look_->from, look_->to);
    showAxis();
    for (int i = 0; i < 2; ++i) {
        cursors_[i]->setVisible(look_->cursorsShown);
        cursors_[i]->setXValue(look_->cursors[i]);
    }
    replot();
}

double PlotLane::axisExtent() const
{
    return axisScaleDraw(yLeft)->extent(axisFont(yLeft));
}

void PlotLane::setAxisExtent(double pixels)
{
    axisScaleDraw(yLeft)->setMinimumExtent(pixels);
}
