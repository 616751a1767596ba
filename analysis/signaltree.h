// The tree of the signals' values, which change several times a second: a change costs the cells that it is in, and a
// cell its text.
#pragma once

#include "widgets/asciitext.h"

#include <QRegion>
#include <QStyledItemDelegate>
#include <QTreeView>

class SignalTree : public QTreeView
{
    Q_OBJECT

public:
    explicit SignalTree(QWidget *parent = nullptr);

    // Whether something of the row, or of the cell, is painted anew at the moment.
    bool isDirty(const QRect &rect) const { return dirty_.intersects(rect); }

protected:
    void paintEvent(QPaintEvent *event) override;
    void drawRow(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    QRegion dirty_;
};

// Draws plain cells as the style would, without asking it; what is selected, marked or too long is the style's affair.
class SignalCellDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit SignalCellDelegate(SignalTree *tree) : QStyledItemDelegate(tree), tree_(tree) {}

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    const SignalTree *tree_;
    mutable AsciiText numbers_{AsciiText::Of::Numbers}; // of the view's font
};
