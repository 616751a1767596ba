// Edits the cells of the transmit list: choices as a list, texts as far as they can be meant.
#pragma once

#include "widgets/lightgrid.h"

class QComboBox;

// Makes the list of choices as wide as its texts, however narrow the box is.
void showWhole(QComboBox &combo);

class TransmitDelegate : public LightGridDelegate
{
    Q_OBJECT

public:
    using LightGridDelegate::LightGridDelegate;

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    void updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                              const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const override;
};
