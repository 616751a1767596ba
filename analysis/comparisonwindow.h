// Two recordings side by side, aligned at a row of each, and below them what differs.
#pragma once

#include "analysis/analysiswindow.h"
#include "statistics/recordingcomparison.h"

class ComparisonModel;
class QBoxLayout;
class QCheckBox;
class QComboBox;
class QLabel;
class QProgressBar;
class QPushButton;
class QSplitter;
class QTableView;
class QTimer;
class RecordingModel;
class RecordingView;

class ComparisonWindow : public AnalysisWindow
{
    Q_OBJECT

public:
    // Compares from these rows on; the window goes when it is closed.
    ComparisonWindow(RecordingComparison::Side left, RecordingComparison::Side right, QWidget *parent);
    ~ComparisonWindow() override;

protected:
    void retranslate() override;
    QSize designSize() const override { return {1240, 720}; }

private:
    struct Half {
        std::shared_ptr<const RecordingIndex> index;
        std::uint64_t row = 0; // that stands beside the other one's
        QLabel *title = nullptr;
        RecordingModel *model = nullptr;
        RecordingView *view = nullptr;
        std::uint64_t shown = 0; // rows, when the table was last brought up to date
    };

    QSplitter *makeHalves();
    void makeTools(QBoxLayout *rows);
    void makeTable(QSplitter *splitter);
    void arrangeColumns();
    void look();
    void align();
    void compare();
    void follow(int moved);
    void goTo(std::uint64_t left, std::uint64_t right);
    void goToDifference(int row);
    void showStatus();

    Half halves_[2];
    std::unique_ptr<RecordingComparison> comparison_;
    bool wanted_ = true;  // a comparison, once both recordings are indexed
    bool listed_ = false; // what the comparison has found
    bool following_ = false;
    QPushButton *align_;
    QCheckBox *together_;
    QCheckBox *channels_;
    QLabel *shownLabel_;
    QComboBox *shown_;
    ComparisonModel *model_;
    QTableView *table_;
    QLabel *status_;
    QProgressBar *progress_;
    QPushButton *cancel_;
    QTimer *timer_;
};
