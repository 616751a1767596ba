#include "analysis/loadcurve.h"

#include "analysis/statisticstexts.h"

#include <QPainter>

#include <algorithm>

namespace
{

constexpr std::size_t kPointsPerMinute = 60 * static_cast<std::size_t>(ChannelStatistics::kPointsPerSecond);
constexpr std::size_t kSpans[] = {kPointsPerMinute, 5 * kPointsPerMinute, 10 * kPointsPerMinute};
constexpr int kLines = 4;       // of text that the widget is high
constexpr int kCharacters = 30; // that it is wide
constexpr QRgb kCurve = 0xFF2F7DC1;
constexpr QRgb kGrid = 0xFFD0D0D0;

} // namespace

void LoadCurve::setPoints(std::vector<float> points)
{
    points_ = std::move(points);
    update();
}

QSize LoadCurve::sizeHint() const
{
    return {fontMetrics().averageCharWidth() * kCharacters, fontMetrics().height() * kLines};
}

QSize LoadCurve::minimumSizeHint() const
{
    return sizeHint() / 2;
}

std::size_t LoadCurve::span() const
{
    for (const std::size_t span : kSpans)
        if (points_.size() <= span)
            return span;
    return *std::rbegin(kSpans);
}

void LoadCurve::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().base());
    const int bottom = height() - 1;
    for (int quarter = 0; quarter <= 4; ++quarter)
        painter.fillRect(0, bottom * quarter / 4, width(), 1, QColor::fromRgb(kGrid));
    if (points_.empty()) {
        painter.drawText(rect(), Qt::AlignCenter, unknownText());
        return;
    }
    const std::size_t shown = span();
    const auto columns = static_cast<std::size_t>(std::max(width(), 1));
    // Each pixel column shows the largest of its points, the newest at the right edge.
    std::vector<float> heights(columns, -1);
    for (std::size_t i = 0; i < points_.size(); ++i) {
        const std::size_t column = (shown - points_.size() + i) * columns / shown;
        heights[column] = std::max(heights[column], points_[i]);
    }
    QPolygon line;
    for (std::size_t column = 0; column < columns; ++column)
        if (heights[column] >= 0)
            line.append({static_cast<int>(column),
                         bottom - static_cast<int>(std::min(heights[column], 1.0F) * static_cast<float>(bottom))});
    painter.setPen(QColor::fromRgb(kCurve));
    painter.drawPolyline(line);
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(rect().adjusted(2, 0, -2, 0), Qt::AlignLeft | Qt::AlignTop, QStringLiteral("100 %"));
    painter.drawText(rect().adjusted(2, 0, -2, 0), Qt::AlignLeft | Qt::AlignBottom,
                     QStringLiteral("-%1 min").arg(shown / kPointsPerMinute));
}
