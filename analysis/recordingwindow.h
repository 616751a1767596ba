// A recording of any size in a window of its own, read-only: the frame list's columns, filter, search, bookmarks,
// export.
#pragma once

#include "analysis/analysiswindow.h"
#include "analysis/recordingbookmarks.h"
#include "analysis/recordingmodel.h"
#include "analysis/replaybar.h"
#include "traces/recordingsearch.h"

#include <memory>

class ComparisonWindow;
class FilterLine;
class QAction;
class QBoxLayout;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class QProgressBar;
class QPushButton;
class QTimer;
class QToolButton;
class RecordingExporter;
class RecordingView;
class SignalDatabases;

class RecordingWindow : public AnalysisWindow
{
    Q_OBJECT

public:
    // Null with the reason in *error when the file cannot be opened. The window goes when it is closed.
    static RecordingWindow *openFile(const QString &path, QWidget *parent, QString *error);
    ~RecordingWindow() override;

    const RecordingIndex &index() const { return *index_; }
    // Compares it with another one, from the row that is selected here and the other's first row on; null with the
    // reason in *error when that cannot be opened.
    ComparisonWindow *compareWith(const QString &path, QString *error);

signals:
    void log(const QString &line); // for the operation log

protected:
    void retranslate() override;
    QSize designSize() const override { return {1180, 640}; }

private:
    enum class Analysis { Statistics, Signals, Plot };

    RecordingWindow(std::unique_ptr<RecordingIndex> index, QWidget *parent);
    void makeTools(QBoxLayout *rows);
    void makeAnalyses(QBoxLayout *tools);
    void makeLines(QBoxLayout *rows);
    void makeStatus(QBoxLayout *rows);
    void makeKeys();

    void look();
    void showProgress();
    QString stateText() const;
    void showState();
    void cancel();
    void applyFilter();
    void search(bool backwards);
    void goTo();
    void goToRow(std::uint64_t row);
    std::optional<std::uint64_t> currentRow() const; // of the recording
    void setTimes(int times);
    void markRow();
    void toggleBookmark();
    void fillBookmarks();
    void exportRows(bool selected);
    void analyse(Analysis analysis, bool selected);
    void chooseComparison();
    std::pair<std::uint64_t, std::uint64_t> selectedRows() const; // the first, and the one behind the last
    ReplayBar::Rows rowsToReplay(ReplayBar::Choice choice) const;
    void findSignals();
    void retranslateAnalyses();
    void copyRows(); // the selected ones
    void tell(const QString &message);

    const std::shared_ptr<RecordingIndex> index_; // windows that work on a part of it keep it too
    std::unique_ptr<RecordingFilter> filter_;
    FrameFilter shown_; // what filter_ lets through
    std::unique_ptr<RecordingSearch> search_;
    RecordingBookmarks bookmarks_;
    RecordingModel *model_;
    RecordingView *view_;
    RecordingExporter *exporter_;

    QLabel *timesLabel_;
    QComboBox *times_;
    QPushButton *mark_;
    QLabel *goToLabel_;
    QLineEdit *goTo_;
    QCheckBox *follow_;
    QToolButton *bookmarkButton_;
    QMenu *bookmarkMenu_;
    QToolButton *exportButton_;
    QAction *exportShown_;
    QAction *exportSelected_;
    QToolButton *analyseButton_;
    QAction *analyses_[2][3]; // of everything, of the selected rows; by Analysis
    QAction *selectFromMarked_;
    QAction *compareWith_;
    QPushButton *replayButton_;
    ReplayBar *replay_;
    const std::shared_ptr<SignalDatabases> databases_;
    std::shared_ptr<const SignalSource> signalNames_; // of the databases, once a filter has asked
    QAction *copySelected_;
    QLabel *filterLabel_;
    FilterLine *filterLine_;
    QLabel *searchLabel_;
    FilterLine *searchLine_;
    QPushButton *previous_;
    QPushButton *next_;
    QLabel *status_;
    QLabel *message_;
    QProgressBar *progress_;
    QPushButton *cancel_;
    QTimer *timer_;
    std::uint64_t totalShown_ = 0; // when the table was last brought up to date
    std::uint64_t rowToKeep_ = 0;  // of the recording, while a filter finds its way there
    bool keeping_ = false;
};
