#include "analysis/plotlane.h"

#include "analysis/curvestroke.h"
#include "analysis/signaltreemodel.h"

#include <QEvent>
#include <QLocale>
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

class CurveItem : public QwtPlotItem
{
public:
    CurveItem(const LaneLook *look, const PlotSignal *signal) : look_(look), signal_(signal) { setZ(10); }

    void draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap, const QRectF &canvas) const override;

private:
    void drawNumber(QPainter *painter, QPointF end, const QRectF &canvas) const;

    const LaneLook *look_;
    const PlotSignal *signal_;
    mutable std::vector<QPointF> stroke_; // kept from one drawing to the next
};

void CurveItem::draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap, const QRectF &canvas) const
{
    if (!signal_->shown || signal_->scale.isEmpty())
        return;
    TimeWindow window;
    window.from = toNanoseconds(xMap.s1());
    window.to = toNanoseconds(xMap.s2());
    window.pixels = qMax(1, int(std::ceil(xMap.pDist())));
    strokeOf(signal_->data, window, look_->stepped || signal_->isEnumeration(), stroke_);
    // Every signal by its own scale, whichever the axis shows.
    const double perPixel = (xMap.p2() - xMap.p1()) / window.pixels;
    const double perValue = (yMap.p2() - yMap.p1()) / (signal_->scale.maximum - signal_->scale.minimum);
    for (QPointF &point : stroke_) {
        point.setX(std::clamp(xMap.p1() + point.x() * perPixel, -kFarthest, kFarthest));
        if (!std::isnan(point.y()))
            point.setY(std::clamp(yMap.p1() + (point.y() - signal_->scale.minimum) * perValue, -kFarthest, kFarthest));
    }
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, false);
    painter->setPen(QPen(signal_->colour, 0));
    const auto isBreak = [](const QPointF &point) { return std::isnan(point.y()); };
    QPointF end(-1, -1);
    for (auto begin = stroke_.begin(); begin != stroke_.end();) {
        const auto stop = std::find_if(begin, stroke_.end(), isBreak);
        const int count = int(stop - begin);
        if (count > 1)
            painter->drawPolyline(&*begin, count);
        else if (count == 1)
            painter->drawPoint(*begin);
        if (count > 0)
            end = *(stop - 1);
        begin = std::find_if_not(stop, stroke_.end(), isBreak);
    }
    if (end.x() >= 0)
        drawNumber(painter, end, canvas);
    painter->restore();
}

void CurveItem::drawNumber(QPainter *painter, QPointF end, const QRectF &canvas) const
{
    const QString text = QString::number(signal_->number);
    const QFontMetricsF metrics(painter->font());
    const double x = qMin(end.x() + kNumberGap, canvas.right() - metrics.horizontalAdvance(text) - kNumberGap);
    const double y = std::clamp(end.y() - kNumberGap, canvas.top() + metrics.ascent(), canvas.bottom() - kNumberGap);
    painter->drawText(QPointF(x, y), text);
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
    for (const PlotSignal *signal : curves)
        (new CurveItem(look, signal))->attach(this);
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
    title = QwtText(fontMetrics().elidedText(title.text(), Qt::ElideRight, canvas()->height()), QwtText::PlainText);
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
