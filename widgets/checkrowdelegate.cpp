#include "widgets/checkrowdelegate.h"

#include <QKeyEvent>
#include <QMouseEvent>

namespace
{
bool isToggle(QEvent *event, const QRect &row)
{
    switch (event->type()) {
    case QEvent::MouseButtonRelease: {
        const auto *mouse = static_cast<QMouseEvent *>(event);
        return mouse->button() == Qt::LeftButton && row.contains(mouse->pos());
    }
    case QEvent::KeyPress: {
        const int key = static_cast<QKeyEvent *>(event)->key();
        return key == Qt::Key_Space || key == Qt::Key_Select;
    }
    default:
        return false;
    }
}
} // namespace

bool CheckRowDelegate::editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                                   const QModelIndex &index)
{
    if (!isToggle(event, option.rect))
        return false;
    const bool ticked = index.data(Qt::CheckStateRole).toInt() == Qt::Checked;
    return model->setData(index, ticked ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
}
