// All curves of a lane: those with few points as lines, the others, on a screen, as one picture.
#pragma once

#include "analysis/columnpicture.h"
#include "analysis/plotsignal.h"

#include <QVector>

#include <vector>

#include <qwt_plot_item.h>

struct LaneLook;

class CurvesItem : public QwtPlotItem
{
public:
    // Look and signals outlive it.
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
