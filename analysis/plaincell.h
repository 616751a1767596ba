// Cells of tables that change several times a second, drawn at the cost of their text: fixed-width, in the view's font.
#pragma once

#include "widgets/asciitext.h"
#include "widgets/lightgrid.h"

class PlainCellDelegate : public LightGridDelegate
{
    Q_OBJECT

public:
    // A model's answer: for each three characters of the text, how strongly they are marked, 0..255 (QByteArray).
    static constexpr int kMarksRole = Qt::UserRole + 1;

    using LightGridDelegate::LightGridDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    mutable AsciiText ascii_; // of the view's font
};

// Prepares a table of such cells: font, row height, selection by rows, no row numbers.
void makePlain(QTableView &view);
