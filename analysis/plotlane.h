// One pair of axes with one curve or several.
#pragma once

#include "analysis/plotsignal.h"
#include "device/driver/timeunits.h"

#include <QVector>

#include <algorithm>

#include <qwt_plot.h>

class QwtPlotGrid;
class QwtPlotMarker;

// What the lanes of a view have in common.
struct LaneLook {
    double from = 0; // seconds
    double to = 1;
    bool stepped = false; // enumerations always are
    bool cursorsShown = false;
    double cursors[2] = {0, 0}; // seconds
};

constexpr double kMostNs = 9.2e18; // that 64 bits hold
inline std::int64_t toNanoseconds(double seconds)
{
    return std::int64_t(std::clamp(seconds * kNanosecondsPerSecond, -kMostNs, kMostNs));
}

class PlotLane : public QwtPlot
{
    Q_OBJECT

public:
    // The look and the signals outlive the lane. bottom: it has the time axis.
    PlotLane(const LaneLook *look, const QVector<const PlotSignal *> &curves, bool bottom, QWidget *parent);

    // Whose scale the value axis shows; one of the lane's.
    void setAxisSignal(const PlotSignal *signal);
    const PlotSignal *axisSignal() const { return axisSignal_; }
    // Takes look and signals' scales anew, for the axes.
    void showAxes();
    // What the value axis takes, in pixels; lanes below each other are given the largest.
    int axisWidth() const { return axisWidth_; }
    void setAxisWidth(int pixels); // at least axisWidth()
    int timeAxisHeight() const;    // 0: has none
    // Draws look, scales and points anew.
    void replot() override;

signals:
    void resized(); // axisWidth() may be another

protected:
    void changeEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    static constexpr int kNoHeight = -1;

    void setFonts();
    void showTitle();
    QwtScaleDiv valueDivision() const;
    bool setDivision(int axis, const QwtScaleDiv &division); // whether labels may be others now
    void makeRoomForLabels(int axis);

    const LaneLook *look_;
    const PlotSignal *axisSignal_;
    QwtPlotGrid *grid_;
    QwtPlotMarker *cursors_[2];
    double scaleLength_[axisCnt] = {}; // for which there is room for labels
    int titleHeight_ = kNoHeight;      // of the canvas that the title was made for
    double labelWidth_ = 0;
    int axisWidth_ = 0;
};
