// A plot as a file: PNG and PDF as it is on the screen, CSV with every point of its time window.
#pragma once

#include "analysis/plotsignal.h"

#include <QVector>

class PlotView;

// By the name's ending, PNG when it has none of the three. false: `error` says why.
bool exportPlot(const PlotView &view, const QVector<const PlotSignal *> &curves, const QString &path, QString *error);
