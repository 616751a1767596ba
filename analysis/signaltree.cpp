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
    const int margin = tree_->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, &option, tree_) + 1;
    const QRect room = option.rect.adjusted(margin, 0, -margin, 0);
    numbers_.setFont(option.font);
    const bool number = numbers_.take(text);
    const qreal width = number ? numbers_.width() : QFontMetricsF(option.font).horizontalAdvance(text);
    if ((option.state & kMarked) || width > room.width() || text.contains('\n') ||
        option.direction != Qt::LeftToRight) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    if (text.isEmpty())
        return;
    const QVariant brush = index.data(Qt::ForegroundRole);
    const auto group = option.state & QStyle::State_Active ? QPalette::Active : QPalette::Inactive;
    const QColor colour = brush.isValid() ? brush.value<QBrush>().color() : option.palette.color(group, QPalette::Text);
    if (painter->pen().color() != colour)
        painter->setPen(colour);
    const bool right = index.data(Qt::TextAlignmentRole).toInt() & Qt::AlignRight;
    const int top =
        room.top() + (room.height() - option.fontMetrics.height()) / 2; // a whole pixel, as the style has it
    const QPointF baseline(room.left() + (right ? room.width() - width : 0), top + option.fontMetrics.ascent());
    if (number)
        numbers_.draw(painter, baseline);
    else
        painter->drawText(baseline, text);
}
