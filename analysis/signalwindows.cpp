#include "analysis/signalwindows.h"

#include "analysis/databasedialog.h"
#include "analysis/plotwindow.h"
#include "analysis/signalhub.h"
#include "analysis/signalswindow.h"

SignalWindows::SignalWindows(QWidget *window) : QObject(window), window_(window), hub_(new SignalHub(this))
{
    connect(hub_, &SignalHub::log, this, &SignalWindows::log);
}

// The windows use the hub, and the main window would delete them later.
SignalWindows::~SignalWindows()
{
    for (PlotWindow *plot : plots_)
        delete plot;
    delete signals_;
}

void SignalWindows::chooseDatabases(QWidget *parent)
{
    DatabaseDialog dialog(hub_, parent);
    dialog.exec();
}

void SignalWindows::openSignals()
{
    if (!signals_) {
        signals_ = new SignalsWindow(hub_, window_);
        connect(signals_, &SignalsWindow::plotWanted, this,
                [this](const QVector<SignalId> &ids) { openPlot()->addSignals(ids); });
    }
    signals_->open();
}

PlotWindow *SignalWindows::openPlot()
{
    if (!current_)
        return openNewPlot();
    current_->open();
    return current_;
}

// A closed one comes first: each number's plot is remembered.
PlotWindow *SignalWindows::openNewPlot()
{
    for (PlotWindow *plot : plots_)
        if (!plot->isVisible()) {
            current_ = plot;
            plot->open();
            return plot;
        }
    auto *plot = new PlotWindow(hub_, int(plots_.size()) + 1, window_);
    plots_.push_back(plot);
    connect(plot, &PlotWindow::log, this, &SignalWindows::log);
    connect(plot, &PlotWindow::newPlotWanted, this, [this] { openNewPlot(); });
    connect(plot, &PlotWindow::activated, this, [this, plot] { current_ = plot; });
    current_ = plot;
    plot->open();
    return plot;
}
