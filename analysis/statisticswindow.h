// "Bus statistics": what both channels carry, what every identifier does, and what supervision finds. Counting begins
// when the window is shown and ends when it is closed.
#pragma once

#include "analysis/analysiswindow.h"
#include "statistics/livestatistics.h"

#include <memory>

class BitMap;
class ChannelPanel;
class IdentifierModel;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;
class QSplitter;
class QTableView;
class QTimer;
class Supervision;

class StatisticsWindow : public AnalysisWindow
{
    Q_OBJECT

public:
    static constexpr int kRefreshMs = 250;

    explicit StatisticsWindow(QWidget *parent);
    ~StatisticsWindow() override;

    Supervision &supervision() { return *supervision_; }
    // Shows what is counted by now; the timer's work, nothing while frozen.
    void refresh();
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
    QWidget *makeBar();
    QWidget *makeTables();
    void arrangeColumns();
    void showRates();
    void showChannels();
    void showSelected();
    void showStatus();
    void copySelected() const;
    void askExport();
    void reset();

    LiveStatistics live_;
    std::unique_ptr<LiveSource> source_; // while the window is open
    StatisticsSnapshot spare_;           // refreshed turn about with what is shown
    std::vector<ChannelPanel *> panels_;
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
    QSplitter *splitter_;
    Supervision *supervision_;
    QTimer *timer_;
};
