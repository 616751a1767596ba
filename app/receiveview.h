// The middle of the main window: the frame table, the counters and the live capture. Takes what the worker threads have
// handed over, round by round; whoever owns it has the timers. GUI thread only.
#pragma once

#include "app/capturefile.h"
#include "app/framestatistics.h"
#include "frames/modelitem.h"

#include <QWidget>

#include <memory>
#include <vector>

class DisplayFilter;
class MyTableModel;

namespace Ui
{
class ReceiveView;
}

class ReceiveView : public QWidget
{
    Q_OBJECT

public:
    explicit ReceiveView(QWidget *parent = nullptr);
    ~ReceiveView() override; // closes the capture

    MyTableModel *model() const { return model_; }

    // One round: takes everything pending, numbers and counts it, captures it and shows it.
    void refresh();
    // The frames counted since the last call, as the rates; to be called once a second.
    void showRates();

    // The most rows the table keeps; at least 1. Holds from the next round on.
    void setListLimit(uint rows);
    uint listLimit() const { return listLimit_; }
    // Merged: one row per channel, identifier and direction. Switching on empties the list and clears all conditions.
    void setMerge(bool merge);
    // Takes the column titles of the current language; marks of filtered columns go, the button that ends their
    // conditions still names them.
    void setHeaderTexts();
    // Takes and writes what is still pending, then closes the file; does nothing when there is none.
    void closeCapture();
    // The rows that have the selected one's channel, identifier and direction, as CSV rows; empty without a selection.
    QString selectedFrameCsv() const;
    // Empties the list; the next frame is number 1.
    void clearList();

public slots:
    // Batches whose identifier and data texts are bare hexadecimal. channel is 0-based.
    void recvData(QList<ModelItem> modelList, uint channel);
    void sendedData(QList<ModelItem> modelList, uint channel);

signals:
    // Something for the operation log, in the current language.
    void logLine(QString line);

protected:
    void changeEvent(QEvent *event) override;

private slots:
    void on_cleanListBtn_clicked();
    void on_pushButton_clicked();
    void on_pushButton_2_clicked();
    void on_checkBox_clicked();

private:
    using Frames = std::vector<ModelItem *>;

    void runRound(bool capturing);
    int overtakenFrames(int count) const;
    void takeBatch(QList<ModelItem> &frames, FrameStatistics::Counter counter);
    void setLabelWidths();
    void showConditions();
    bool isCapturing() const;
    bool isPaused() const;
    void display(const Frames &frames);
    void showHint();
    void selectCurrentRow();
    void startCapture();

    std::unique_ptr<Ui::ReceiveView> ui_;
    MyTableModel *model_;
    DisplayFilter *filter_;
    FrameStatistics statistics_;
    CaptureFile capture_;
    uint listLimit_ = 1000;
    bool merge_ = false;
    bool selectionKept_ = false; // the user has just chosen a row
};
