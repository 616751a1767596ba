// The signals window and the plots of one source of frames, with what they share: the live bus, or a part of a
// recording.
#pragma once

#include "analysis/signalid.h"
#include "frames/framefeed.h"

#include <QObject>
#include <QPointer>
#include <QVector>

#include <memory>
#include <optional>
#include <vector>

class PlotWindow;
class QWidget;
class SignalHub;
class SignalsWindow;

class SignalWindows : public QObject
{
    Q_OBJECT

public:
    // window: the main window, parent of these. Those of a recording go when they are closed, and this with the last.
    explicit SignalWindows(QWidget *window, const std::optional<RecordingPart> &part = {});
    ~SignalWindows() override;

    SignalHub *hub() { return hub_.get(); }
    // Lets the user add and remove databases.
    void chooseDatabases(QWidget *parent);

    SignalsWindow *openSignals();
    // The plot that the user was at last, else the first.
    PlotWindow *openPlot();

signals:
    void log(const QString &message);

private:
    PlotWindow *openNewPlot();
    void setUp(QWidget *window);
    void windowGone();

    QWidget *window_;
    const std::unique_ptr<SignalHub> hub_; // outlives the windows
    QPointer<SignalsWindow> signals_;
    std::vector<QPointer<PlotWindow>> plots_; // by number; closed ones of the live bus stay
    QPointer<PlotWindow> current_;
};
