// Draws the cells of the frame table: one line of plain text, cut with an ellipsis where the column is too narrow.
#pragma once

#include "app/asciitext.h"

#include <QHash>
#include <QStaticText>
#include <QStyledItemDelegate>

class FrameCellDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    const QStaticText &laidOut(const QString &text, const QFont &font) const;

    // Kept between cells: shaping texts anew for every cell would be most of a repaint.
    mutable AsciiText ascii_;
    mutable QHash<QString, QStaticText> others_; // the few words that are not ASCII
    mutable QFont othersFont_;
};
