#include "dialogs/transmitdelegate.h"

#include "transmit/transmitmodel.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QLineEdit>
#include <QRegularExpressionValidator>
#include <QStyle>

void showWhole(QComboBox &combo)
{
    QAbstractItemView *list = combo.view();
    list->setMinimumWidth(list->sizeHintForColumn(0) + list->style()->pixelMetric(QStyle::PM_ScrollBarExtent));
}

QWidget *TransmitDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &, const QModelIndex &index) const
{
    const QStringList choices = index.data(ChoicesRole).toStringList();
    if (!choices.isEmpty()) {
        auto *combo = new QComboBox(parent);
        combo->addItems(choices);
        showWhole(*combo);
        // A choice made is a change made: no further click is needed.
        connect(combo, QOverload<int>::of(&QComboBox::activated), this, [this, combo] {
            auto *self = const_cast<TransmitDelegate *>(this);
            emit self->commitData(combo);
            emit self->closeEditor(combo);
        });
        return combo;
    }
    auto *edit = new QLineEdit(parent);
    edit->setFrame(false);
    const QString pattern = index.data(PatternRole).toString();
    if (!pattern.isEmpty())
        edit->setValidator(new QRegularExpressionValidator(QRegularExpression(pattern), edit));
    return edit;
}

void TransmitDelegate::updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                                            const QModelIndex &index) const
{
    LightGridDelegate::updateEditorGeometry(editor, option, index);
    if (qobject_cast<QComboBox *>(editor)) // the choice and the arrow
        editor->resize(qMax(editor->width(), editor->sizeHint().width()), editor->height());
}

void TransmitDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    if (auto *combo = qobject_cast<QComboBox *>(editor))
        combo->setCurrentIndex(index.data(Qt::EditRole).toInt());
    else if (auto *edit = qobject_cast<QLineEdit *>(editor))
        edit->setText(index.data(Qt::EditRole).toString());
}

void TransmitDelegate::setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const
{
    const auto *combo = qobject_cast<QComboBox *>(editor);
    const auto *edit = qobject_cast<QLineEdit *>(editor);
    const QVariant value = combo ? QVariant(combo->currentIndex()) : edit ? QVariant(edit->text()) : QVariant();
    if (value.isValid() && value != index.data(Qt::EditRole))
        model->setData(index, value);
}
