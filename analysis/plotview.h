// The curves of a plot on a shared time axis: below each other or over each other. Mouse: the wheel zooms in time, with
// Ctrl in values; dragging moves, or moves a cursor; a double click fits. Keys: see keyPressEvent().
#pragma once

#include "analysis/plotlane.h"

#include <QWidget>

class QVBoxLayout;

class PlotView : public QWidget
{
    Q_OBJECT

public:
    static constexpr int kCursors = 2;

    explicit PlotView(QWidget *parent = nullptr);

    // What is shown; call it again after a change of which signals there are. They outlive the view or the next call.
    void setCurves(const QVector<PlotSignal *> &curves);
    void setStacked(bool stacked);
    void setCommonScale(bool common);
    void setStepped(bool stepped);
    void showCursors(bool shown); // the first time at a third and two thirds
    // Whose scale the axis of overlaid curves shows; null: the first one's.
    void select(const PlotSignal *signal);

    double from() const { return look_.from; } // seconds
    double to() const { return look_.to; }
    void setTimes(double from, double to);
    double cursor(int index) const { return look_.cursors[index]; }
    // All points, and scales that follow again.
    void fit();
    // There are new points or settings.
    void showAll();

    const QVector<PlotLane *> &lanes() const { return lanes_; }

signals:
    void timesChanged(); // by the user
    void cursorMoved();
    void followWanted();
    void signalsDropped(const QVector<SignalId> &ids);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void build();
    void scaleAll();
    void alignAxes();
    void shareHeight();
    void zoomTime(double factor, double around);
    void moveTime(double fraction); // of the window
    void zoomValues(double factor);
    void moveValues(double fraction);
    void moveCursor(int index, double seconds);
    int cursorNear(const PlotLane *lane, int x) const; // -1: none
    void press(const PlotLane *lane, QPoint place);
    void drag(const PlotLane *lane, QPoint place);

    LaneLook look_;
    QVector<PlotSignal *> curves_;
    QVector<PlotLane *> lanes_;
    QVBoxLayout *layout_;
    const PlotSignal *selected_ = nullptr;
    bool stacked_ = true;
    bool common_ = false;
    bool cursorsPlaced_ = false;
    QPoint dragged_;         // where the mouse was last
    int draggedCursor_ = -1; // else the curves are dragged
    bool dragging_ = false;
};
