#include "widgets/framecelldelegate.h"

#include "widgets/columnmeasures.h"
#include "widgets/lightgrid.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

namespace
{
constexpr int kKeptTexts = 200;

int margin(const QStyleOptionViewItem &option)
{
    return option.fontMetrics.averageCharWidth() / 2 + 1;
}

QRect textRoom(const QStyleOptionViewItem &option)
{
    return lightGridRoom(option).adjusted(margin(option), 0, -margin(option), 0);
}
} // namespace

void FrameCellDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const bool selected = option.state & QStyle::State_Selected;
    const bool active = option.state & QStyle::State_Active;
    const QPalette::ColorGroup group = active ? QPalette::Active : QPalette::Inactive;
    if (selected)
        painter->fillRect(lightGridRoom(option), option.palette.brush(group, QPalette::Highlight));
    painter->setPen(option.palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text));

    const QString text = index.data().toString();
    const QRect room = textRoom(option);
    Face &face = this->face(option.font, index.column());
    // Both faces stand on one base line.
    const int ascent = qMax(usual_.metrics.ascent(), fixed_.metrics.ascent());
    const int height = ascent + qMax(usual_.metrics.descent(), fixed_.metrics.descent());
    const int baseLine = room.top() + (room.height() - height) / 2 + ascent;
    if (face.ascii.take(text) && face.ascii.width() <= room.width()) {
        face.ascii.draw(painter, QPointF(room.left(), baseLine));
        return;
    }
    painter->setFont(face.font);
    painter->drawStaticText(room.left(), baseLine - face.metrics.ascent(), laidOut(face, text, room.width()));
}

FrameCellDelegate::Face &FrameCellDelegate::face(const QFont &tableFont, int column) const
{
    if (!facesKnown_ || usual_.font != tableFont) {
        facesKnown_ = true;
        usual_.font = tableFont;
        fixed_.font = columnmeasures::fixedWidthFont(tableFont);
        for (Face *face : {&usual_, &fixed_}) {
            face->metrics = QFontMetrics(face->font);
            face->ascii.setFont(face->font);
            face->laidOut.clear();
        }
    }
    return columnmeasures::isFixedWidth(column) ? fixed_ : usual_;
}

const QStaticText &FrameCellDelegate::laidOut(Face &face, const QString &text, int room)
{
    if (face.laidOut.size() >= kKeptTexts)
        face.laidOut.clear();
    const QPair<QString, int> key(text, room);
    auto found = face.laidOut.find(key);
    if (found == face.laidOut.end()) {
        found = face.laidOut.insert(key, QStaticText(face.metrics.elidedText(text, Qt::ElideRight, room)));
        found->setTextFormat(Qt::PlainText);
        found->prepare(QTransform(), face.font);
    }
    return *found;
}

QSize FrameCellDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const QFontMetrics &metrics = face(option.font, index.column()).metrics;
    const int grid = 1;
    const int width = metrics.horizontalAdvance(index.data().toString());
    return {width + 2 * margin(option) + grid, metrics.height() + grid};
}

bool FrameCellDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                                  const QModelIndex &index)
{
    const QString text = index.data().toString();
    const int width = face(option.font, index.column()).metrics.horizontalAdvance(text);
    if (event->type() != QEvent::ToolTip || width <= textRoom(option).width())
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    QToolTip::showText(event->globalPos(), text, view->viewport(), view->visualRect(index));
    return true;
}
