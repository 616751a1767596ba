#include "dialogs/transmittable.h"

#include "transmit/transmitmodel.h"

void TransmitTable::dataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight, const QVector<int> &roles)
{
    if (topLeft.column() != SentColumn || bottomRight.column() != LastSentColumn) {
        LightGridTable<QTableView>::dataChanged(topLeft, bottomRight, roles);
        return;
    }
    const QRect cells = visualRect(topLeft) | visualRect(bottomRight);
    viewport()->update(cells & viewport()->rect());
}
