#include "analysis/plotlane.h"

#include "analysis/plotcurves.h"
#include "signals/valuetext.h"

#include <QCoreApplication>
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
constexpr int kCanvasMargin = 4; // pixels, of Qwt's layouts
constexpr int kRoomRounds = 3;
constexpr int kLabelSlack = 1; // pixels; positions are rounded

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

// Labels of a signal's values: the states' texts where it has them. Those that do not fit are left out.
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

    void draw(QPainter *painter, const QPalette &palette) const override
    {
        // Wherever it is drawn, the axis reaches that far beyond the scale.
        const QwtScaleWidget *axis = lane_->axisWidget(QwtPlot::yLeft);
        const double top = pos().y() - axis->endBorderDist();
        double bottom = pos().y() + length() + axis->startBorderDist();
        fitting_.clear();
        for (const double value : scaleDiv().ticks(QwtScaleDiv::MajorTick)) { // from the bottom up
            const QRect place = boundingLabelRect(painter->font(), value);
            if (place.isEmpty() || place.top() < top - kLabelSlack || place.bottom() > bottom + kLabelSlack)
                continue;
            fitting_.append(value);
            bottom = place.top();
        }
        QwtScaleDraw::draw(painter, palette);
    }

    void forgetLabels() { invalidateCache(); }

protected:
    void drawLabel(QPainter *painter, double value) const override
    {
        if (fitting_.contains(value))
            QwtScaleDraw::drawLabel(painter, value);
    }

private:
    const PlotLane *lane_;
    mutable QVector<double> fitting_; // values whose labels are drawn
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
    surface->setPaintAttribute(QwtPlotCanvas::BackingStore, false); // nothing is laid over it but what a replot draws
    surface->setFocusPolicy(Qt::NoFocus);
    surface->setCursor(Qt::ArrowCursor);
    setAxisScaleDraw(yLeft, new ValueScaleDraw(this));
    setAxisScaleDraw(xBottom, new TimeScaleDraw);
    enableAxis(xBottom, bottom);
    grid_ = new QwtPlotGrid;
    grid_->setMajorPen(QPen(QColor(0xDD, 0xDD, 0xDD), 0));
    grid_->attach(this);
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
    for (int axis : {int(yLeft), int(xBottom)})
        makeRoomForLabels(axis);
    titleHeight_ = kNoHeight;
}

void PlotLane::changeEvent(QEvent *event)
{
    QwtPlot::changeEvent(event);
    if (event->type() != QEvent::FontChange)
        return;
    setFonts();
    showAxes();
    emit resized();
}

void PlotLane::setAxisSignal(const PlotSignal *signal)
{
    if (signal == axisSignal_)
        return;
    axisSignal_ = signal;
    static_cast<ValueScaleDraw *>(axisScaleDraw(yLeft))->forgetLabels();
    axisWidget(yLeft)->update();
    titleHeight_ = kNoHeight;
}

void PlotLane::resizeEvent(QResizeEvent *event)
{
    QwtPlot::resizeEvent(event);
    showAxes(); // as many labels as there is room for
    emit resized();
}

void PlotLane::showTitle()
{
    QString title;
    QPalette palette = axisWidget(yLeft)->palette();
    if (axisSignal_) {
        title =
            axisSignal_->unit.isEmpty()
                ? QStringLiteral("%1  %2").arg(axisSignal_->number).arg(axisSignal_->id.signal)
                : QStringLiteral("%1  %2 [%3]").arg(axisSignal_->number).arg(axisSignal_->id.signal, axisSignal_->unit);
        palette.setColor(QPalette::Text, axisSignal_->colour);
        palette.setColor(QPalette::WindowText, axisSignal_->colour);
    }
    // As much of it as there is room for; the number, which is in the list too, comes first.
    const int room = canvas()->height() - fontMetrics().height(); // the scale is that much shorter, at most
    QwtText text(fontMetrics().elidedText(title, Qt::ElideRight, room), QwtText::PlainText);
    text.setFont(font());
    if (text.text() != axisTitle(yLeft).text())
        setAxisTitle(yLeft, text);
    if (palette != axisWidget(yLeft)->palette())
        axisWidget(yLeft)->setPalette(palette);
}

QwtScaleDiv PlotLane::valueDivision() const
{
    if (!axisSignal_ || axisSignal_->scale.isEmpty())
        return axisScaleEngine(yLeft)->divideScale(0, 1, axisMaxMajor(yLeft), axisMaxMinor(yLeft));
    const ValueRange &scale = axisSignal_->scale;
    const double states = (scale.maximum - scale.minimum) / std::abs(axisSignal_->factor);
    const QwtLinearScaleEngine engine;
    if (axisSignal_->isEnumeration() && states <= kMostStates) {
        const double room = std::max(1.0, double(canvas()->height()) / fontMetrics().height());
        const double step = std::abs(axisSignal_->factor) * std::max(1.0, std::ceil(states / room));
        return engine.divideScale(scale.minimum, scale.maximum, kMostStates, 0, step);
    }
    const bool low = canvas()->height() < kMajorSteps * 2 * fontMetrics().height();
    return engine.divideScale(scale.minimum, scale.maximum, low ? kMajorSteps / 2 : kMajorSteps, low ? 0 : kMinorSteps);
}

// Measuring labels is what is dear, so it is done for the axes that are seen, when something of them is new.
bool PlotLane::setDivision(int axis, const QwtScaleDiv &division)
{
    const bool same = axisScaleDiv(axis) == division;
    if (!same) {
        setAxisScaleDiv(axis, division);
        grid_->updateScaleDiv(axisScaleDiv(xBottom), axisScaleDiv(yLeft));
    }
    if (!axisEnabled(axis) || (same && axisScaleDraw(axis)->length() == scaleLength_[axis]))
        return false;
    axisWidget(axis)->setScaleDiv(division);
    makeRoomForLabels(axis);
    scaleLength_[axis] = axisScaleDraw(axis)->length();
    return true;
}

// A shorter scale has its outermost labels nearer to its ends, where they ask for more room. In a lane that is hardly
// higher than a label the room that the last height left behind would stay, so this begins with the longest scale.
void PlotLane::makeRoomForLabels(int axis)
{
    QwtScaleWidget *widget = axisWidget(axis);
    int start = 0;
    int end = 0;
    if (axis == xBottom) {
        widget->getBorderDistHint(start, end);
        widget->setBorderDist(start, end);
        return;
    }
    // The canvas has that much room beyond the scale by itself.
    const int margin = kCanvasMargin + static_cast<LaneCanvas *>(canvas())->frameWidth();
    const int longest = canvas()->height() - 2 * margin;
    for (int round = 0; round < kRoomRounds; ++round) {
        axisScaleDraw(axis)->setLength(qMax(1, longest - qMax(0, start - margin) - qMax(0, end - margin)));
        widget->getBorderDistHint(start, end);
    }
    widget->setBorderDist(start, end);
    updateLayout();
    const QRect area = widget->contentsRect();
    axisScaleDraw(axis)->move(axisScaleDraw(axis)->pos().x(), area.top() + end);
    axisScaleDraw(axis)->setLength(qMax(1, area.height() - start - end));
}

void PlotLane::showAxes()
{
    setDivision(xBottom, axisScaleEngine(xBottom)->divideScale(look_->from, look_->to, axisMaxMajor(xBottom),
                                                               axisMaxMinor(xBottom)));
    const bool sameScale = !setDivision(yLeft, valueDivision());
    if (sameScale && titleHeight_ == canvas()->height())
        return;
    titleHeight_ = canvas()->height();
    showTitle();
    auto *labels = axisScaleDraw(yLeft);
    const double kept = labels->minimumExtent();
    labels->setMinimumExtent(0);
    labelWidth_ = labels->extent(axisFont(yLeft));
    axisWidth_ = axisWidget(yLeft)->dimForLength(canvas()->height(), axisFont(yLeft));
    labels->setMinimumExtent(kept);
}

void PlotLane::setAxisWidth(int pixels)
{
    const double extent = labelWidth_ + pixels - axisWidth_;
    if (axisScaleDraw(yLeft)->minimumExtent() == extent)
        return;
    axisScaleDraw(yLeft)->setMinimumExtent(extent);
    updateLayout();
}

int PlotLane::timeAxisHeight() const
{
    return axisEnabled(xBottom) ? axisWidget(xBottom)->dimForLength(width(), axisFont(xBottom)) : 0;
}

void PlotLane::replot()
{
    showAxes();
    for (int i = 0; i < 2; ++i) {
        cursors_[i]->setVisible(look_->cursorsShown);
        cursors_[i]->setXValue(look_->cursors[i]);
    }
    QCoreApplication::sendPostedEvents(this, QEvent::LayoutRequest); // what new labels ask for
    static_cast<LaneCanvas *>(canvas())->replot();
}
