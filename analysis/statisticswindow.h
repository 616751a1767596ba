// "Bus statistics": what the channels carry, what every identifier does, and what supervision finds. Live, counting
// begins when the window is shown and ends when it is closed; of a recording a window of its own shows a part.
#pragma once

#include "analysis/analysiswindow.h"
#include "frames/framefeed.h"
#include "statistics/livestatistics.h"

#include <memory>

class BitMap;
class ChannelPanel;
class IdentifierModel;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QSpinBox;
class QSplitter;
class QTableView;
class QTimer;
class SignalDatabases;
class Supervision;

class StatisticsWindow : public AnalysisWindow
{
    Q_OBJECT

public:
    static constexpr int kRefreshMs = 250;

    explicit StatisticsWindow(QWidget *parent); // live
    // Of a part of a recording, by the bit rates that the channels are set to (channel 1's for those above 2). The
    // window goes when it is closed.
    static StatisticsWindow *openRecording(RecordingPart part, QWidget *parent);
    ~StatisticsWindow() override;

    Supervision &supervision() { return *supervision_; }
    // Shows what is counted by now; the timer's work, nothing while frozen.
    void refresh();
    // Whether a recording was read to its end; live: never.
    bool hasReadAll() const { return feed_ && feed_->finished(); }
    // false, told in the log, when the file cannot be written.
    bool exportCsv(const QString &path);

signals:
    void log(const QString &line);

protected:
    void retranslate() override;
    QSize designSize() const override;
    void showEvent(QShowEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    StatisticsWindow(std::optional<RecordingPart> part, QWidget *parent);
    bool isLive() const { return !part_; }
    void begin();
    void baselineChanged();
    void databasesChanged(); // the names of the messages
    void createWidgets();    // like what follows in statisticswindowlayout.cpp
    QWidget *makePanelRow();
    void makePanels(unsigned channels);
    QWidget *makeBar();
    QWidget *makeTables();
    void arrangeColumns();
    void storeArrangement() const;
    QString title() const;

    void showRates();
    void showChannels();
    void showSelected();
    void showStatus();
    void copySelected() const;
    void askExport();
    void reset();

    const std::optional<RecordingPart> part_;
    LiveStatistics live_;
    std::unique_ptr<FrameFeed> feed_; // while the window is open
    StatisticsSnapshot spare_;        // refreshed turn about with what is shown
    std::vector<ChannelPanel *> panels_;
    std::shared_ptr<SignalDatabases> databases_;
    IdentifierModel *model_;
    QTableView *view_;
    BitMap *bits_;
    QLabel *bitsTitle_;
    QLineEdit *search_;
    QLabel *searchLabel_;
    QPushButton *freeze_;
    QPushButton *reset_;
    QPushButton *export_;
    QPushButton *supervise_;
    QLabel *toleranceLabel_;
    QSpinBox *tolerance_;
    QLabel *status_;
    QString lastLine_; // told about a recording
    QProgressBar *progress_;
    QWidget *panelRow_;
    QSplitter *splitter_;
    Supervision *supervision_;
    QTimer *timer_;
};
