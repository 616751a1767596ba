// The grid of a table as filled rectangles, pixel for pixel as QTableView draws it. Qt draws it line by line, each
// pixel row a span of its own, which on some processors costs more than all the rest of a table; a table that is
// repainted often draws it like this instead. For left-to-right tables without spans and with a solid grid.
#pragma once

#include <QStyledItemDelegate>
#include <QTableView>

// Draws the grid over the part of the view that the event is about, after the view's own paintEvent; nothing while the
// view's own grid is on.
void paintLightGrid(QTableView &view, const QPaintEvent &event);

// What the grid leaves of a cell: a delegate's room. Qt takes the grid off only when it draws it itself.
QRect lightGridRoom(const QStyleOptionViewItem &option);

// Items drawn as usual, beside the grid.
class LightGridDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};

// QTableView, QTableWidget or a class of theirs with this grid. A delegate of another kind keeps to lightGridRoom().
template <typename View> class LightGridTable : public View
{
public:
    explicit LightGridTable(QWidget *parent = nullptr) : View(parent)
    {
        this->setShowGrid(false);
        this->setItemDelegate(new LightGridDelegate(this));
    }

protected:
    void paintEvent(QPaintEvent *event) override
    {
        View::paintEvent(event);
        paintLightGrid(*this, *event);
    }
};
