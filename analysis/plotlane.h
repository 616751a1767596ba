// One pair of axes with one curve or several.
#pragma once

#include "analysis/plotsignal.h"
#include "device/driver/timeunits.h"

#include <QVector>

#include <algorithm>

#include <qwt_plot.h>

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
    void setAxisSignal(const PlotSignal *signal) { axisSignal_ = signal; }
    const PlotSignal *axisSignal() const { return axisSignal_; }
    // Takes look, signals' scales and points anew.
    void showAll();
    // Room for the value axis' labels, in pixels; lanes below each other are given the largest.
    double axisExtent() const;
    void setAxisExtent(double pixels);

protected:
    void changeEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void setFonts();
    void showAxis();

    const LaneLook *look_;
    const PlotSignal *axisSignal_;
    QwtPlotMarker *cursors_[2];
};
