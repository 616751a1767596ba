#include "analysis/signaltree.h"

#include <QPaintEvent>
#include <QPainter>

SignalTree::SignalTree(QWidget *parent) : QTreeView(parent)
{
    setItemDelegate(new SignalCellDelegate(this));
}

// In one pass, not in one for each rectangle; the painter is clipped, and what lies between them is left out.
void SignalTree::paintEvent(QPaintEvent *event)
{
    dirty_ = event->region();
    QPaintEvent whole(dirty_.boundingRect());
    QTreeView::paintEvent(&whole);
    dirty_ = {};
}

void SignalTree::drawRow(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    if (isDirty(option.rect))
        QTreeView::drawRow(painter, option, index);
}

void SignalCellDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    if (!tree_->isDirty(option.rect))
        return;
    constexpr QStyle::State kMarked = QStyle::State_Selected | QStyle::State_HasFocus | QStyle::State_MouseOver;
    const QString text = index.data(Qt::DisplayRole).toString();
    const QStyle *style = tree_->style();
    const int margin = style->pixelMetric(QStyle::PM_FocusFrameHMargin, &option, tree_) + 1;
    const QRect room = option.rect.adjusted(margin, 0, -margin, 0);
    const qreal width = QFontMetricsF(option.font).horizontalAdvance(text);
    if ((option.state & kMarked) || width > room.width() || text.contains('\n') ||
        option.direction != Qt::LeftToRight) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    if (text.isEmpty())
        return;
    const QVariant colour = index.data(Qt::ForegroundRole);
    const bool active = option.state & QStyle::State_Active;
    painter->setPen(colour.isValid()
                        ? colour.value<QBrush>().color()
                        : option.palette.color(active ? QPalette::Active : QPalette::Inactive, QPalette::Text));
    const bool right = index.data(Qt::TextAlignmentRole).toInt() & Qt::AlignRight;
    const int height = option.fontMetrics.height();
    painter->drawText(QPointF(room.left() + (right ? room.width() - width : 0),
                              room.top() + (room.height() - height) / 2 + option.fontMetrics.ascent()),
                      text);
}
