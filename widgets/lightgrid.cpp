#include "widgets/lightgrid.h"

#include <QHeaderView>
#include <QPaintEvent>
#include <QPainter>

namespace
{
QColor gridColour(const QTableView &view)
{
    QStyleOptionViewItem option;
    option.initFrom(&view);
    const int colour = view.style()->styleHint(QStyle::SH_Table_GridLineColor, &option, &view);
    return QColor::fromRgba(static_cast<QRgb>(colour));
}

// Calls with the last pixel of every section seen between the two pixels.
template <typename Draw> void forEachEdge(const QHeaderView &header, int from, int to, Draw draw)
{
    const int last = header.visualIndexAt(to);
    for (int visual = header.visualIndexAt(from); visual >= 0 && visual <= last; ++visual) {
        const int section = header.logicalIndex(visual);
        if (header.isSectionHidden(section))
            continue;
        const int edge = header.sectionViewportPosition(section) + header.sectionSize(section) - 1;
        if (edge <= to)
            draw(edge);
    }
}
} // namespace

void paintLightGrid(QTableView &view, const QPaintEvent &event)
{
    if (view.showGrid())
        return;
    const QHeaderView &columns = *view.horizontalHeader();
    const QHeaderView &rows = *view.verticalHeader();
    const QRect cells(0, 0, columns.length() - columns.offset(), rows.length() - rows.offset());
    const QColor colour = gridColour(view);
    QPainter painter(view.viewport());
    for (const QRect &dirty : event.region()) {
        const QRect area = dirty & cells;
        if (area.isEmpty())
            continue;
        forEachEdge(rows, area.top(), area.bottom(),
                    [&](int y) { painter.fillRect(area.left(), y, area.width(), 1, colour); });
        forEachEdge(columns, area.left(), area.right(),
                    [&](int x) { painter.fillRect(x, area.top(), 1, area.height(), colour); });
    }
}

QRect lightGridRoom(const QStyleOptionViewItem &option)
{
    const auto *view = qobject_cast<const QTableView *>(option.widget);
    return view && !view->showGrid() ? option.rect.adjusted(0, 0, -1, -1) : option.rect;
}

void LightGridDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QStyleOptionViewItem beside(option);
    beside.rect = lightGridRoom(option);
    QStyledItemDelegate::paint(painter, beside, index);
}
