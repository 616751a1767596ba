#include "analysis/plotcurves.h"

#include "analysis/curvestroke.h"
#include "analysis/plotlane.h"

#include <QPaintEngine>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <qwt_scale_map.h>

namespace
{
constexpr double kFarthest = 1e6; // pixels, that the painter still takes
constexpr int kNumberGap = 3;     // pixels from a curve's end to its number

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
} // namespace

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
