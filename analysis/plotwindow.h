// Signals over time: live from the bus, with cursors and export. Each plot keeps its signals and its look.
#pragma once

#include "analysis/analysiswindow.h"
#include "analysis/plotsignal.h"
#include "frames/framefeed.h"

#include <QTimer>
#include <QVector>

#include <memory>
#include <vector>

class PlotView;
class QLabel;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;
class SignalHub;

class PlotWindow : public AnalysisWindow
{
    Q_OBJECT

public:
    static constexpr int kMostSignals = 16;

    // number: from 1, which of the plots that are kept. The hub outlives the window.
    PlotWindow(SignalHub *hub, int number, QWidget *parent);
    ~PlotWindow() override;

    // A plot of a recording's part: shown, reads in the background, goes when it is closed. parent: the main window.
    static PlotWindow *openRecording(const RecordingPart &part, QWidget *parent);

    int number() const { return number_; }
    // Those that are not there yet; beyond kMostSignals they are left out, and the log says so.
    void addSignals(const QVector<SignalId> &ids);
    // Points that came since the last round, at once.
    void takePoints();

signals:
    void log(const QString &message);
    void newPlotWanted();
    void activated(); // the user is at this one

protected:
    void retranslate() override;
    QSize designSize() const override { return {860, 560}; }
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    enum Option { Follow, Stacked, CommonScale, Steps, Cursors, OptionCount };

    void createWidgets();
    void connectAll();
    void refresh();
    void describe();
    void showCurves();
    void showValues();
    void removeSelected();
    void itemChanged(QTreeWidgetItem *item);
    PlotSignal *selected() const;
    bool isOn(Option option) const;
    void optionChanged(Option option);
    void applyTimes();
    void exportFile();
    QString key(const char *what) const;
    void keep() const;
    void restore();

    SignalHub *hub_;
    const int number_;
    std::vector<std::unique_ptr<PlotSignal>> curves_;
    PlotView *view_;
    QPushButton *options_[OptionCount];
    QPushButton *fit_;
    QPushButton *export_;
    QPushButton *remove_;
    QPushButton *new_;
    QTreeWidget *list_;
    QLabel *hint_;
    QLabel *times_;
    QTimer timer_;
    int rounds_ = 0;
    std::vector<CurvePoint> points_; // room for takePoints()
    bool wanting_ = false;           // frames of the hub
};
