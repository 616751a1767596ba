// A plot as a picture, as it is on the screen.
#pragma once

#include "analysis/plotsignal.h"

#include <QVector>

class PlotView;

// PDF when the name ends so, else PNG. false: `error` says why.
bool exportPlot(const PlotView &view, const QVector<const PlotSignal *> &curves, const QString &path, QString *error);
