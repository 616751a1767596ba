// The table of a recording with the frame list's looks and a scroll bar of its own over all rows, whatever their
// number.
#pragma once

#include "widgets/lightgrid.h"

#include <cstdint>

class QScrollBar;
class RecordingModel;

class RecordingView : public LightGridTable<QTableView>
{
    Q_OBJECT

public:
    // The scroll bar stands beside the view; whoever lays them out owns both.
    RecordingView(RecordingModel *model, QScrollBar *bar, QWidget *parent = nullptr);

    // Positions count what the model shows.
    std::uint64_t current() const { return current_; }
    void setCurrent(std::uint64_t position, bool extend = false);
    // The selected positions, first and the one behind the last.
    std::uint64_t selectionBegin() const { return qMin(anchor_, current_); }
    std::uint64_t selectionEnd() const { return qMax(anchor_, current_) + 1; }
    // From there to the current position.
    void selectFrom(std::uint64_t position);
    bool isAtEnd() const;
    void scrollToEnd();
    // The model shows more rows, others, or has other titles.
    void rowsChanged();
    void fitColumns();
    void setLongTimes(bool on); // the time stamps are dates

signals:
    void currentChangedTo(quint64 position);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    int pageRows() const;
    std::uint64_t lastTop() const;
    void setTop(std::uint64_t position);
    void showBar();
    void showSelection();
    void moveBy(std::int64_t rows, bool extend);

    RecordingModel *model_;
    QScrollBar *bar_;
    std::uint64_t current_ = 0;
    std::uint64_t anchor_ = 0;
    int longestData_ = 0; // characters that the data column has room for
    bool longTimes_ = false;
    int wheelRest_ = 0;
};
