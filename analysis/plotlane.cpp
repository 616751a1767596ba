#include "analysis/plotlane.h"

#include "analysis/plotcurves.h"
#include "analysis/signaltreemodel.h"

#include <QEvent>
#include <QLocale>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <qwt_plot_canvas.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_marker.h>
#include <qwt_scale_draw.h>
#include <qwt_scale_engine.h>
#include <qwt_scale_widget.h>
#include <qwt_text.h>

namespace
{
constexpr int kLongestState = 16; // characters on an axis
constexpr int kMostStates = 12;   // on an axis
constexpr int kMajorSteps = 6;
constexpr int kMinorSteps = 4;
constexpr int kLabelDigits = 12;

// Its frame as filled rectangles: as lines, which Qt draws pixel by pixel, it costs more than the curves do.
class LaneCanvas : public QwtPlotCanvas
{
public:
    using QwtPlotCanvas::QwtPlotCanvas;

protected:
    void drawBorder(QPainter *painter) override
    {
        const QColor colour = palette().color(QPalette::WindowText);
        for (const QRect &side : QRegion(rect()) - contentsRect())
            painter->fillRect(side, colour);
    }
};

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
    auto *surface = new LaneCanvas(this);
    setCanvas(surface);
    setCanvasBackground(Qt::white);
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
