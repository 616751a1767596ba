// Faces and measures of the frame table: which face a column's texts have, how wide columns usually are and how high
// rows. All in pixels of the table's screen, from the table's font.
#pragma once

#include <QFont>

class QWidget;

namespace columnmeasures
{
// The columns whose characters stand under each other: time stamp, identifier, data.
bool isFixedWidth(int column);
// A fixed-width face of the font's size; the font's own where the machine has none.
QFont fixedWidthFont(const QFont &font);

// Of one line of text in either face, and of the room around it.
int rowHeight(const QWidget &table);
// Room for the column's title, filtered mark included, and the texts that are usual in the current language.
int usualWidth(const QWidget &table, int column);
// Room for a data text of so many characters, and never less than a classic frame needs.
int dataWidth(const QWidget &table, int characters);
} // namespace columnmeasures
