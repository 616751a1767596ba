#include "app/framecelldelegate.h"

#include "widgets/lightgrid.h"

#include <QPainter>

namespace
{
constexpr int kKeptTexts = 200;
} // namespace

void FrameCellDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const bool selected = option.state & QStyle::State_Selected;
    const bool active = option.state & QStyle::State_Active;
    const QPalette::ColorGroup group = active ? QPalette::Active : QPalette::Inactive;
    const QRect cell = lightGridRoom(option);
    if (selected)
        painter->fillRect(cell, option.palette.brush(group, QPalette::Highlight));
    painter->setPen(option.palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text));

    const QString text = index.data().toString();
    const int margin = option.fontMetrics.averageCharWidth() / 2 + 1;
    const QRect room = cell.adjusted(margin, 0, -margin, 0);
    const int top = room.top() + (room.height() - option.fontMetrics.height()) / 2;
    ascii_.setFont(option.font);
    if (ascii_.take(text)) {
        if (ascii_.width() <= room.width()) {
            ascii_.draw(painter, QPointF(room.left(), top + option.fontMetrics.ascent()));
            return;
        }
    } else if (const QStaticText &words = laidOut(text, option.font); words.size().width() <= room.width()) {
        painter->drawStaticText(room.left(), top, words);
        return;
    }
    painter->drawText(QPointF(room.left(), top + option.fontMetrics.ascent()),
                      option.fontMetrics.elidedText(text, Qt::ElideRight, room.width()));
}

const QStaticText &FrameCellDelegate::laidOut(const QString &text, const QFont &font) const
{
    if (font != othersFont_ || others_.size() >= kKeptTexts) {
        others_.clear();
        othersFont_ = font;
    }
    auto found = others_.find(text);
    if (found == others_.end()) {
        found = others_.insert(text, QStaticText(text));
        found->setTextFormat(Qt::PlainText);
        found->prepare(QTransform(), font);
    }
    return *found;
}
