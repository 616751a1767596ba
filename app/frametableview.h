// The frame table. It follows its model's notifications itself: what a QTableView does per removed row or per reset
// grows with the number of rows, so inside a round the notifications are only noted and shown together at its end.
// Rows that fail the display filter are hidden, and stay so through removals and merges.
#pragma once

#include "app/tablehint.h"
#include "frames/mytablemodel.h"
#include "widgets/lightgrid.h"

#include <deque>

class RowHeader;

class FrameTableView : public LightGridTable<QTableView>
{
    Q_OBJECT

public:
    // While one lives the model may change at will; its end brings the view up to date. In between the view must not
    // be asked where rows are. Rounds do not nest.
    class Round
    {
    public:
        explicit Round(FrameTableView &view);
        ~Round();
        Round(const Round &) = delete;
        Round &operator=(const Round &) = delete;

    private:
        FrameTableView &view_;
    };

    explicit FrameTableView(QWidget *parent = nullptr);

    // The view takes no ownership. The model has its titles already: it tells nobody when they change.
    void setFrameModel(MyTableModel *model);
    // The model's filter conditions have changed, and with them its titles.
    void filterChanged();
    // The model has titles of another language. Columns may widen; they never narrow, as rows keep their language.
    void languageChanged();

    // The current row, -1 for none; also right inside a round.
    int currentRow() const;
    // No current row and no selection.
    void clearCurrent();

    // On: rows that come keep the end in sight, as long as it is in sight before. Off, or scrolled away from the end:
    // the rows in sight stay there, as long as the model has them.
    void setFollowsEnd(bool on);
    // Shown in the middle while there are no rows.
    void setHint(TableHint hint);

protected:
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    void takeOverNotifications();
    void rowsAppeared(int first, int last);
    void rowsGone(int first, int last);
    void changed();
    void sync();
    bool standsAtFollowedEnd() const;

    void testRows();
    void hideFailingRows();

    void rememberCurrent();
    void restoreCurrent();

    void titlesChanged();
    void setMeasures();
    void setLongestData(int characters);
    void fitDataColumn();

    MyTableModel *frames_ = nullptr;
    RowHeader *rows_;
    bool inRound_ = false;
    bool pending_ = false; // notifications that the view does not show yet
    bool pendingReset_ = false;

    bool filtering_ = false;
    std::deque<bool> failing_; // per row of the model, while filtering
    bool anyHidden_ = false;

    // The current cell, kept here while removals and resets are outstanding.
    bool remembering_ = false;
    bool rememberedSelected_ = false;
    int rememberedRow_ = -1;
    int rememberedColumn_ = 0;

    bool followsEnd_ = true;
    qint64 heightGone_ = 0; // pixels of the rows removed at the top that the view still shows
    TableHint hint_ = TableHint::None;

    int longestData_ = 0; // characters of the longest data text since the table was last empty
};
