// Signals over time: live from the bus, with cursors and export. Each plot keeps its signals and its look.
#pragma once

#include "analysis/analysiswindow.h"
#include "analysis/csvexport.h"
#include "analysis/plotsignal.h"
#include "frames/framefeed.h"

#include <QTimer>
#include <QVector>

#include <memory>
#include <vector>

class PlotView;
class QLabel;
class QProgressBar;
class QPushButton;
class QSplitter;
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
    void signalsWanted(); // the window of signals
    void activated();     // the user is at this one

protected:
    void retranslate() override;
    QSize designSize() const override { return {860, 560}; }
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    enum Option { Follow, Stacked, CommonScale, Steps, Cursors, OptionCount };
    static constexpr const char *kOptionNames[OptionCount] = {"follow", "stacked", "commonScale", "steps", "cursors"};
    enum Column { Name, Last, First, Second, Difference, ColumnCount };

    void createWidgets();
    void connectAll();
    void refresh();
    void databasesChanged();
    void showCurves();
    void tellChannels();
    void showValues();
    void feed(const std::vector<PlotSignal *> &curves);
    void removeSelected();
    void itemChanged(QTreeWidgetItem *item);
    PlotSignal *selected() const;
    bool isOn(Option option) const;
    void optionChanged(Option option);
    void applyTimes();
    void showWhole();
    double lookAtReading(); // how far, 0..1
    void exportFile();
    void lookAtExport();
    void setExportText();
    void tellExported(const QString &path, const QString &error); // error: the reason, else empty
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
    QPushButton *signals_;
    QPushButton *new_;
    QTreeWidget *list_;
    QSplitter *splitter_;
    QLabel *hint_;
    QLabel *times_;
    QProgressBar *progress_;
    QTimer timer_;
    std::unique_ptr<CsvExport> csv_; // while a table is written
    int rounds_ = 0;
    std::vector<CurvePoint> points_; // room for takePoints()
    bool wanting_ = false;           // live frames of the hub
    bool reading_ = false;           // a recording
    bool whole_ = false;             // a recording's time is shown from end to end, however far it has been read
};
