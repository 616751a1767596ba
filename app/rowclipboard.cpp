#include "app/rowclipboard.h"

#include "app/frametableview.h"
#include "frames/csvrow.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QShortcut>

#include <functional>

namespace
{
// An empty text leaves the clipboard alone.
void addKey(FrameTableView *table, const QKeySequence &key, const std::function<QString()> &text)
{
    auto *shortcut = new QShortcut(key, table);
    shortcut->setContext(Qt::WidgetWithChildrenShortcut);
    QObject::connect(shortcut, &QShortcut::activated, table, [text] {
        const QString rows = text();
        if (!rows.isEmpty())
            QGuiApplication::clipboard()->setText(rows);
    });
}
} // namespace

void addCopyKeys(FrameTableView *table, const MyTableModel *model)
{
    addKey(table, QKeySequence::Copy, [table, model] { return selectedRowCsv(*table, *model); });
    addKey(table, QKeySequence(Qt::CTRL + Qt::SHIFT + Qt::Key_C),
           [table, model] { return shownRowsCsv(*table, *model); });
}

QString selectedRowCsv(const FrameTableView &table, const MyTableModel &model)
{
    QString rows;
    const QModelIndexList selected = table.selectionModel()->selectedRows();
    if (!selected.isEmpty())
        appendCsvRow(rows, model.row(selected.first().row()));
    return rows;
}

QString shownRowsCsv(const FrameTableView &table, const MyTableModel &model)
{
    QString rows = csvHeaderLine(model.header());
    for (int row = 0; row < model.rowCount(); ++row)
        if (!table.isRowHidden(row))
            appendCsvRow(rows, model.row(row));
    return rows;
}

QString sameFrameRowsCsv(const FrameTableView &table, const MyTableModel &model)
{
    QString rows;
    const QModelIndexList selected = table.selectionModel()->selectedRows();
    if (selected.isEmpty())
        return rows;
    const FrameRow &wanted = model.row(selected.first().row());
    for (int number = 0; number < model.rowCount(); ++number) {
        const FrameRow &row = model.row(number);
        if (row[ChannelColumn] == wanted[ChannelColumn] && row[DirectionColumn] == wanted[DirectionColumn] &&
            row[IdColumn] == wanted[IdColumn] && row[FormatColumn] == wanted[FormatColumn])
            appendCsvRow(rows, row);
    }
    return rows;
}
