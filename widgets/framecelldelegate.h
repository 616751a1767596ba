// Draws the cells of the frame table: one line of plain text, cut with an ellipsis where the column is too narrow (the
// tool tip then has the whole). Identifiers, time stamps and data have a fixed-width face.
#pragma once

#include "widgets/asciitext.h"

#include <QFontMetrics>
#include <QHash>
#include <QPair>
#include <QStaticText>
#include <QStyledItemDelegate>

class FrameCellDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    // One cell's text with its margins and grid lines; the height is the text's.
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;

private:
    // One of the table's two faces, with what is kept between cells: shaping texts anew for every cell would be most of
    // a repaint.
    struct Face {
        QFont font;
        QFontMetrics metrics{font};
        AsciiText ascii;
        QHash<QPair<QString, int>, QStaticText> laidOut; // the few that are cut or not ASCII, by room
    };
    Face &face(const QFont &tableFont, int column) const;
    static const QStaticText &laidOut(Face &face, const QString &text, int room);

    mutable Face usual_;
    mutable Face fixed_;
    mutable bool facesKnown_ = false;
};
