#include "analysis/plaincell.h"

#include "widgets/columnmeasures.h"

#include <QApplication>
#include <QHeaderView>
#include <QPainter>

#include <algorithm>

namespace
{

constexpr int kCharactersPerByte = 3; // two digits and a blank
constexpr int kMargin = 3;            // pixels beside a text
constexpr int kRowRoom = 4;           // pixels that a row is higher than its text
constexpr QRgb kMark = 0xFFE8A317;

// width: of the whole text, in which every character is as wide as every other.
void drawMarks(QPainter &painter, const QRect &room, const QByteArray &marks, int width)
{
    const int characters = std::max(marks.size() * kCharactersPerByte - 1, 1);
    QColor colour(kMark);
    for (int i = 0; i < marks.size(); ++i) {
        const auto strength = static_cast<std::uint8_t>(marks[i]);
        const int left = room.left() + i * kCharactersPerByte * width / characters;
        if (strength == 0 || left > room.right())
            continue;
        colour.setAlpha(strength);
        painter.fillRect(QRect(left, room.top(), 2 * width / characters, room.height()) & room, colour);
    }
}

} // namespace

void PlainCellDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const QRect cell = lightGridRoom(option);
    const bool selected = (option.state & QStyle::State_Selected) != 0;
    const QPalette::ColorGroup group =
        (option.state & QStyle::State_Active) != 0 ? QPalette::Active : QPalette::Inactive;
    const QVariant background = index.data(Qt::BackgroundRole);
    if (selected)
        painter->fillRect(cell, option.palette.color(group, QPalette::Highlight));
    else if (background.isValid())
        painter->fillRect(cell, background.value<QColor>());
    const QRect room = cell.adjusted(kMargin, 0, -kMargin, 0);
    const QString text = index.data(Qt::DisplayRole).toString();
    ascii_.setFont(option.font);
    const bool plain = ascii_.take(text);
    const int width = plain ? qRound(ascii_.width()) : option.fontMetrics.horizontalAdvance(text);
    const QByteArray marks = index.data(kMarksRole).toByteArray();
    if (!marks.isEmpty())
        drawMarks(*painter, room, marks, width);
    if (text.isEmpty())
        return;
    painter->setPen(option.palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text));
    const bool fits = width <= room.width();
    const Qt::Alignment alignment(index.data(Qt::TextAlignmentRole).toInt());
    const QRect place = QStyle::alignedRect(option.direction, alignment,
                                            {fits ? width : room.width(), option.fontMetrics.height()}, room);
    const QPointF baseline(place.left(), place.top() + option.fontMetrics.ascent());
    if (plain && fits)
        ascii_.draw(painter, baseline);
    else
        painter->drawText(baseline, fits ? text : option.fontMetrics.elidedText(text, Qt::ElideRight, room.width()));
    if ((option.state & QStyle::State_HasFocus) != 0) {
        painter->setPen(QPen(option.palette.color(group, QPalette::Text), 1, Qt::DotLine));
        painter->drawRect(cell.adjusted(0, 0, -1, -1));
    }
}

void makePlain(QTableView &view)
{
    view.setItemDelegate(new PlainCellDelegate(&view));
    view.setFont(columnmeasures::fixedWidthFont(QApplication::font()));
    view.horizontalHeader()->setFont(QApplication::font());
    view.verticalHeader()->setFont(QApplication::font());
    view.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    view.verticalHeader()->setMinimumSectionSize(1);
    view.verticalHeader()->setDefaultSectionSize(QFontMetrics(QApplication::font()).height() + kRowRoom);
    view.setSelectionBehavior(QAbstractItemView::SelectRows);
    view.setEditTriggers(QAbstractItemView::NoEditTriggers);
    view.setWordWrap(false);
    view.setTabKeyNavigation(false);
    view.horizontalHeader()->setHighlightSections(false);
}
