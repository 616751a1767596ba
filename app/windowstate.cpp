#include "app/windowstate.h"

#include "app/frametableview.h"

#include <QMainWindow>
#include <QSettings>
#include <QSplitter>

namespace
{
const QString kGeometryKey = QStringLiteral("window/geometry");
const QString kSplitterKey = QStringLiteral("window/splitter");
const QString kColumnsKey = QStringLiteral("window/columns");
const QString kDpiKey = QStringLiteral("window/dpi"); // that the columns were measured at
constexpr int kNarrowestColumn = 10;
} // namespace

WindowState::WindowState(QMainWindow &window) : window_(window)
{
    const QSettings kept;
    window_.restoreGeometry(kept.value(kGeometryKey).toByteArray());
    if (auto *splitter = window_.findChild<QSplitter *>(QStringLiteral("splitter")))
        splitter->restoreState(kept.value(kSplitterKey).toByteArray());
    window_.ensurePolished(); // no later change of the font brings the usual widths back
    restoreColumns();
}

WindowState::~WindowState()
{
    QSettings kept;
    kept.setValue(kGeometryKey, window_.saveGeometry());
    if (const auto *splitter = window_.findChild<QSplitter *>(QStringLiteral("splitter")))
        kept.setValue(kSplitterKey, splitter->saveState());
    keepColumns();
}

// The data column follows the others by itself.
void WindowState::restoreColumns()
{
    const QSettings kept;
    auto *table = window_.findChild<FrameTableView *>();
    const QVariantList widths = kept.value(kColumnsKey).toList();
    if (!table || widths.size() != DataColumn || kept.value(kDpiKey).toInt() != window_.logicalDpiX())
        return;
    table->ensurePolished();
    for (int column = 0; column < DataColumn; ++column)
        table->setColumnWidth(column, qMax(kNarrowestColumn, widths.at(column).toInt()));
}

void WindowState::keepColumns() const
{
    const auto *table = window_.findChild<FrameTableView *>();
    if (!table)
        return;
    QVariantList widths;
    for (int column = 0; column < DataColumn; ++column)
        widths.append(table->columnWidth(column));
    QSettings kept;
    kept.setValue(kColumnsKey, widths);
    kept.setValue(kDpiKey, window_.logicalDpiX());
}
