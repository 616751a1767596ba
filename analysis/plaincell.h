// Cells of tables that change several times a second, drawn at the cost of their text: fixed-width, in the view's font.
#pragma once

#include "analysis/plainglyphs.h"
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
    mutable PlainGlyphs glyphs_ = PlainGlyphs::printable(); // of the view's font
};

// The system's fixed-width face in the size of the program's texts.
QFont fixedFont();
// Prepares a table of such cells: font, row height, selection by rows, no row numbers.
void makePlain(QTableView &view);
