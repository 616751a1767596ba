// The signals window and the plots, with what they share.
#pragma once

#include "analysis/signalid.h"

#include <QObject>
#include <QVector>

#include <vector>

class PlotWindow;
class QWidget;
class SignalHub;
class SignalsWindow;

class SignalWindows : public QObject
{
    Q_OBJECT

public:
    // window: the main window, parent of these.
    explicit SignalWindows(QWidget *window);
    ~SignalWindows() override;

    SignalHub *hub() { return hub_; }
    // Lets the user add and remove databases.
    void chooseDatabases(QWidget *parent);

    void openSignals();
    // The plot that the user was at last, else the first.
    PlotWindow *openPlot();

signals:
    void log(const QString &message);

private:
    PlotWindow *openNewPlot();

    QWidget *window_;
    SignalHub *hub_;
    SignalsWindow *signals_ = nullptr;
    std::vector<PlotWindow *> plots_; // by number; closed ones stay
    PlotWindow *current_ = nullptr;
};
