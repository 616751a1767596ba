#include "analysis/signalwindows.h"

#include "analysis/databasedialog.h"
#include "analysis/plotwindow.h"
#include "analysis/signalhub.h"
#include "analysis/signalswindow.h"

#include <algorithm>

SignalWindows::SignalWindows(QWidget *window, const std::optional<RecordingPart> &part)
    : QObject(window), window_(window), hub_(std::make_unique<SignalHub>(part))
{
    if (hub_->isLive()) // the one that tells what all have to say
        connect(hub_->databases(), &SignalDatabases::log, this, &SignalWindows::log);
}

// The windows use the hub, and the main window would delete them later.
SignalWindows::~SignalWindows()
{
    for (const QPointer<PlotWindow> &plot : plots_)
        delete plot;
    delete signals_;
}

void SignalWindows::chooseDatabases(QWidget *parent)
{
    DatabaseDialog dialog(hub_->databases(), parent);
    dialog.exec();
}

SignalsWindow *SignalWindows::openSignals()
{
    if (!signals_) {
        signals_ = new SignalsWindow(hub_.get(), window_);
        setUp(signals_);
        connect(signals_, &SignalsWindow::plotWanted, this,
                [this](const QVector<SignalId> &ids) { openPlot()->addSignals(ids); });
    }
    signals_->open();
    return signals_;
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
    const auto isFree = [](const QPointer<PlotWindow> &plot) { return !plot || !plot->isVisible(); };
    const auto at = std::find_if(plots_.begin(), plots_.end(), isFree);
    if (at != plots_.end() && *at) {
        current_ = *at;
    } else {
        const int number = int(at - plots_.begin()) + 1;
        auto *plot = new PlotWindow(hub_.get(), number, window_);
        setUp(plot);
        connect(plot, &PlotWindow::log, hub_->databases(), &SignalDatabases::log);
        connect(plot, &PlotWindow::newPlotWanted, this, [this] { openNewPlot(); });
        connect(plot, &PlotWindow::signalsWanted, this, [this] { openSignals(); });
        connect(plot, &PlotWindow::activated, this, [this, plot] { current_ = plot; });
        if (at == plots_.end())
            plots_.emplace_back(plot);
        else
            *at = plot;
        current_ = plot;
    }
    current_->open();
    return current_;
}

void SignalWindows::setUp(QWidget *window)
{
    if (hub_->isLive())
        return;
    window->setAttribute(Qt::WA_DeleteOnClose);
    // Later, when no pointer leads there any more.
    connect(window, &QObject::destroyed, this, &SignalWindows::windowGone, Qt::QueuedConnection);
}

void SignalWindows::windowGone()
{
    const bool anyPlot = std::any_of(plots_.begin(), plots_.end(), [](const auto &plot) { return plot; });
    if (!signals_ && !anyPlot)
        deleteLater();
}

SignalsWindow *SignalsWindow::openRecording(const RecordingPart &part, QWidget *parent)
{
    return (new SignalWindows(parent, part))->openSignals();
}

PlotWindow *PlotWindow::openRecording(const RecordingPart &part, QWidget *parent)
{
    return (new SignalWindows(parent, part))->openPlot();
}
