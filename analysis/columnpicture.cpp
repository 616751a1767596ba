#include "analysis/columnpicture.h"

#include <QPainter>
#include <QPointF>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace
{
constexpr int kBlock = 32; // pixels a side that are turned at once, within the processor's first cache
constexpr int kMostColours = 255;
} // namespace

void ColumnPicture::begin(QSize size)
{
    size_ = size.expandedTo({0, 0});
    pixels_.assign(std::size_t(size_.width()) * std::size_t(size_.height()), 0);
    colours_ = {0};
}

void ColumnPicture::fill(int column, double from, double to)
{
    if (column < 0 || column >= size_.width())
        return;
    const double last = size_.height() - 1;
    const double top = std::round(std::min(from, to));
    const double bottom = std::round(std::max(from, to));
    if (bottom < 0 || top > last)
        return;
    const auto first = std::size_t(std::max(top, 0.0));
    const auto end = std::size_t(std::min(bottom, last)) + 1;
    std::uint8_t *pixels = pixels_.data() + std::size_t(column) * std::size_t(size_.height());
    std::memset(pixels + first, colours_.size() - 1, end - first);
}

void ColumnPicture::add(const std::vector<QPointF> &line, QRgb colour)
{
    if (colours_.size() > kMostColours)
        return;
    colours_.append(qPremultiply(colour));
    bool open = false; // a column is under way
    int column = 0;
    double low = 0;
    double high = 0;
    QPointF before;
    for (const QPointF &point : line) {
        if (std::isnan(point.y())) {
            if (open)
                fill(column, low, high);
            open = false;
            continue;
        }
        const int at = int(std::floor(point.x()));
        if (open && at != column) {
            fill(column, low, high);
            // On to the point's column, through those between.
            const double rise = (point.y() - before.y()) / std::max(1, at - column);
            const int begin = std::max(column + 1, 0);
            double y = before.y() + rise * (begin - column - 1);
            for (int between = begin; between < std::min(at, size_.width()); ++between, y += rise)
                fill(between, y, y + rise);
            low = high = at > column ? point.y() - rise : point.y();
        } else if (!open) {
            low = high = point.y();
        }
        low = std::min(low, point.y());
        high = std::max(high, point.y());
        open = true;
        column = at;
        before = point;
    }
    if (open)
        fill(column, low, high);
}

void ColumnPicture::draw(QPainter *painter, QPoint place)
{
    if (size_.isEmpty())
        return;
    if (image_.size() != size_)
        image_ = QImage(size_, QImage::Format_ARGB32_Premultiplied);
    const int width = size_.width();
    const int height = size_.height();
    auto *target = reinterpret_cast<QRgb *>(image_.bits());
    const QRgb *colours = colours_.constData();
    const int perLine = image_.bytesPerLine() / int(sizeof(QRgb));
    for (int left = 0; left < width; left += kBlock)
        for (int top = 0; top < height; top += kBlock) {
            const int right = std::min(left + kBlock, width);
            const int bottom = std::min(top + kBlock, height);
            for (int y = top; y < bottom; ++y)
                for (int x = left; x < right; ++x)
                    target[std::ptrdiff_t(y) * perLine + x] =
                        colours[pixels_[std::size_t(x) * std::size_t(height) + std::size_t(y)]];
        }
    painter->drawImage(place, image_);
}
