#include "analysis/curvestroke.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr std::size_t kPointsPerPixel = 2; // up to which every point is drawn

void addPoint(std::vector<QPointF> &stroke, double x, double value, bool stepped)
{
    if (stepped && !stroke.empty() && !std::isnan(stroke.back().y()))
        stroke.emplace_back(x, stroke.back().y());
    stroke.emplace_back(x, value);
}
} // namespace

bool strokeOf(const CurveData &curve, const TimeWindow &window, bool stepped, std::vector<QPointF> &stroke)
{
    stroke.clear();
    if (curve.isEmpty() || window.to <= window.from || window.pixels < 1)
        return false;
    const double span = double(window.to) - double(window.from);
    std::size_t begin = curve.firstAt(window.from);
    const std::size_t end = curve.firstAt(window.to);
    // The lines that come in at the left and go out at the right.
    const std::size_t before = begin > 0 ? begin - 1 : begin;
    const std::size_t after = std::min(end + 1, curve.size());
    const auto pixel = [&](std::size_t index) {
        return (double(curve.at(index).time) - double(window.from)) * window.pixels / span;
    };
    if (end - begin <= kPointsPerPixel * std::size_t(window.pixels)) {
        for (std::size_t index = before; index < after; ++index)
            addPoint(stroke, pixel(index), curve.at(index).value, stepped);
        return false;
    }
    if (before < begin)
        addPoint(stroke, pixel(before), curve.at(before).value, stepped);
    std::size_t inColumn = 0;
    for (int column = 0; column < window.pixels; ++column) {
        const double until = double(window.from) + span * (column + 1) / window.pixels;
        const std::size_t next = column + 1 == window.pixels
                                     ? end
                                     : std::clamp(curve.firstAt(std::int64_t(until), begin + inColumn), begin, end);
        if (next == begin)
            continue;
        inColumn = next - begin;
        const ValueRange range = curve.range(begin, next);
        const double first = curve.at(begin).value;
        const double last = curve.at(next - 1).value;
        addPoint(stroke, column, first, stepped);
        if (!range.isEmpty()) {
            stroke.emplace_back(column, range.minimum);
            stroke.emplace_back(column, range.maximum);
        }
        stroke.emplace_back(column, last);
        begin = next;
    }
    if (end < after)
        addPoint(stroke, pixel(end), curve.at(end).value, stepped);
    return true;
}
