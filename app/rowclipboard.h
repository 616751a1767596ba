// Rows of the frame list on the clipboard, as a CSV file holds them.
#pragma once

#include <QString>

class FrameTableView;
class MyTableModel;

// Ctrl+C copies the selected row, Ctrl+Shift+C the titles and every row that is shown, while the focus is in the table.
void addCopyKeys(FrameTableView *table, const MyTableModel *model);

// The selected row as a CSV row; empty when there is none.
QString selectedRowCsv(const FrameTableView &table, const MyTableModel &model);
// The titles and the rows that the display filter lets through.
QString shownRowsCsv(const FrameTableView &table, const MyTableModel &model);
// Every row that has the selected one's channel, identifier and direction.
QString sameFrameRowsCsv(const FrameTableView &table, const MyTableModel &model);
