// The signals of the bus and what they are at the moment.
#pragma once

#include "analysis/analysiswindow.h"
#include "analysis/signalid.h"
#include "frames/framefeed.h"

#include <QTimer>
#include <QVector>

class QCheckBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class SignalFilter;
class SignalHub;
class SignalTree;
class SignalTreeModel;

class SignalsWindow : public AnalysisWindow
{
    Q_OBJECT

public:
    // The hub outlives the window.
    SignalsWindow(SignalHub *hub, QWidget *parent);
    ~SignalsWindow() override;

    // The signals of a recording's part, with plots of their own: shown, reads in the background, goes when it is
    // closed. parent: the main window.
    static SignalsWindow *openRecording(const RecordingPart &part, QWidget *parent);

signals:
    void plotWanted(const QVector<SignalId> &ids);

protected:
    void retranslate() override;
    QSize designSize() const override { return {970, 520}; }
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void createWidgets();
    void createActions();
    void refresh();
    void refreshAll();
    void setFrozen(bool frozen);
    void plotSelected();
    void copySelected();
    void search(const QString &text);
    void showDatabases();
    void showState();
    void showProgress();

    SignalHub *hub_;
    SignalTreeModel *model_;
    SignalFilter *filter_;
    QLineEdit *search_;
    QCheckBox *freeze_;
    QPushButton *reset_;
    QPushButton *plot_;
    QPushButton *databases_;
    QPushButton *vehicle_;
    SignalTree *tree_;
    QLabel *state_;
    QProgressBar *progress_;
    QAction *copy_;
    QTimer refreshTimer_;
    bool wanting_ = false; // frames of the hub
};
