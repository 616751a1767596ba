#include "dialogs/signalvaluedelegate.h"

#include "dialogs/transmitdelegate.h"
#include "transmit/transmitmodel.h"

#include <QComboBox>
#include <QLineEdit>

QWidget *SignalValueDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &,
                                           const QModelIndex &index) const
{
    const QStringList texts = index.data(ChoicesRole).toStringList();
    if (texts.isEmpty()) {
        auto *edit = new QLineEdit(parent);
        edit->setFrame(false);
        return edit;
    }
    auto *combo = new QComboBox(parent);
    combo->setEditable(true);
    combo->setInsertPolicy(QComboBox::NoInsert);
    combo->addItems(texts);
    showWhole(*combo);
    // A choice made is a change made: no further click is needed.
    connect(combo, QOverload<int>::of(&QComboBox::activated), this, [this, combo] {
        auto *self = const_cast<SignalValueDelegate *>(this);
        emit self->commitData(combo);
        emit self->closeEditor(combo);
    });
    return combo;
}

void SignalValueDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    const QString text = index.data(Qt::EditRole).toString();
    if (auto *combo = qobject_cast<QComboBox *>(editor)) {
        combo->setCurrentIndex(combo->findText(text));
        combo->setEditText(text);
        combo->lineEdit()->selectAll();
    } else if (auto *edit = qobject_cast<QLineEdit *>(editor)) {
        edit->setText(text);
    }
}

void SignalValueDelegate::setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const
{
    const auto *combo = qobject_cast<QComboBox *>(editor);
    const auto *edit = qobject_cast<QLineEdit *>(editor);
    const QString text = combo ? combo->currentText() : edit ? edit->text() : QString();
    if (!text.isEmpty() && text != index.data(Qt::EditRole).toString())
        model->setData(index, text);
}
