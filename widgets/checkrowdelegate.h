// Rows that behave like check boxes: a click anywhere on the row toggles it, and so does the space bar.
#pragma once

#include <QStyledItemDelegate>

class CheckRowDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    bool editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                     const QModelIndex &index) override;
};
