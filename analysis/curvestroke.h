// The line that shows a curve on so many pixels.
#pragma once

#include "analysis/curvedata.h"

#include <QPointF>

#include <vector>

struct TimeWindow {
    std::int64_t from = 0; // nanoseconds
    std::int64_t to = 0;   // after from
    int pixels = 0;
};

// x: pixels from the window's left, y: value; a y that is not a number interrupts the line. At most some points per
// pixel column, and every column's extremes are among them. stepped: a value holds until the next one. Replaces what
// `stroke` held. Whether there were so many points that every column has been reduced to some; columns then begin at
// whole numbers.
bool strokeOf(const CurveData &curve, const TimeWindow &window, bool stepped, std::vector<QPointF> &stroke);
