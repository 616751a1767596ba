// The commands of the transmit list's window.
#include "dialogs/datadlg.h"
#include "dialogs/listsenddlg.h"
#include "transmit/csventries.h"
#include "ui_listsenddlg.h"
#include "widgets/messages.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QItemSelectionModel>
#include <QMessageBox>
#include <QToolBar>

#include <algorithm>
#include <set>

namespace
{
const QString kListSuffix = QStringLiteral("json");

QString fileFilter()
{
    return text3("发送列表 (*.json)", "發送列表 (*.json)", "Transmit lists (*.json)");
}

TransmitEntryPointer copyOf(const TransmitEntry &entry)
{
    auto copy = std::make_shared<TransmitEntry>(entry);
    copy->serial = newTransmitSerial();
    return copy;
}
} // namespace

void listSendDlg::addCommands()
{
    auto *file = new QToolBar(this);
    file->setObjectName(QStringLiteral("fileBar"));
    auto *edit = new QToolBar(this);
    edit->setObjectName(QStringLiteral("editBar"));
    for (QToolBar *bar : {file, edit})
        ui_->toolLayout->addWidget(bar);

    addCommand(file, "actionNew", QKeySequence::New, {"新建", "新增列表", "New"}, &listSendDlg::newList);
    addCommand(file, "actionOpen", QKeySequence::Open, {"打开...", "開啟...", "Open..."}, &listSendDlg::openList);
    addCommand(file, "actionSave", QKeySequence::Save, {"保存", "儲存", "Save"}, &listSendDlg::saveList);
    addCommand(file, "actionSaveAs", Qt::CTRL + Qt::SHIFT + Qt::Key_S, {"另存为...", "另存新檔...", "Save as..."},
               &listSendDlg::saveListAs);
    file->addSeparator();
    addCommand(file, "actionUndo", QKeySequence::Undo, {"撤销", "復原", "Undo"}, &listSendDlg::undo);
    addCommand(file, "actionRedo", Qt::CTRL + Qt::Key_Y, {"重做", "重做", "Redo"}, &listSendDlg::redo);
    file->addSeparator();
    addCommand(file, "actionTakeRows", Qt::CTRL + Qt::Key_T, {"取自接收列表", "取自接收列表", "From frame list"},
               &listSendDlg::takeTableRows);
    addCommand(file, "actionPaste", QKeySequence::Paste, {"粘贴CSV行", "貼上CSV列", "Paste CSV rows"},
               &listSendDlg::pasteRows);
    addCommand(file, "actionMessages", Qt::CTRL + Qt::Key_M, {"取自数据库...", "取自資料庫...", "From database..."},
               &listSendDlg::takeMessages);
    addCommand(edit, "actionAdd", Qt::Key_Insert, {"添加", "新增", "Add"}, &listSendDlg::addEntry);
    addCommand(edit, "actionCopy", Qt::CTRL + Qt::Key_D, {"复制", "複製", "Copy"}, &listSendDlg::copyEntries);
    addCommand(edit, "actionRemove", QKeySequence::Delete, {"删除", "刪除", "Remove"}, &listSendDlg::removeEntries);
    addCommand(edit, "actionUp", Qt::ALT + Qt::Key_Up, {"上移", "上移", "Up"}, &listSendDlg::moveUp);
    addCommand(edit, "actionDown", Qt::ALT + Qt::Key_Down, {"下移", "下移", "Down"}, &listSendDlg::moveDown);
    edit->addSeparator();
    addCommand(edit, "actionSwitch", Qt::CTRL + Qt::Key_Space, {"启用/停用", "啟用/停用", "On/off"},
               &listSendDlg::switchEntries);
    addCommand(edit, "actionFill", Qt::CTRL + Qt::Key_R, {"应用到所选行", "套用到所選列", "Same in all selected"},
               &listSendDlg::fillCells);
    addCommand(edit, "actionBytes", Qt::CTRL + Qt::Key_B, {"编辑数据...", "編輯數據...", "Edit bytes..."},
               &listSendDlg::editBytes);
    addCommand(edit, "actionSignals", Qt::CTRL + Qt::Key_E, {"编辑信号", "編輯訊號", "Edit signals"},
               &listSendDlg::editSignals);
    edit->addSeparator();
    addCommand(edit, "actionSendOnce", Qt::CTRL + Qt::Key_Return, {"发送一次", "發送一次", "Send once"},
               &listSendDlg::sendOnce);
}

void listSendDlg::addCommand(QToolBar *bar, const char *name, const QKeySequence &key, const LogText &text,
                             void (listSendDlg::*slot)())
{
    auto *action = new QAction(this);
    action->setObjectName(QLatin1String(name));
    action->setShortcut(key);
    connect(action, &QAction::triggered, this, slot);
    bar->addAction(action);
    commands_.push_back({action, text});
}

// --- file -------------------------------------------------------------------------------------------------------

// Whether what is not saved may go.
bool listSendDlg::isDiscarding()
{
    if (!document_.isModified())
        return true;
    return QMessageBox::question(this, tipTitle(),
                                 text3("列表有未保存的更改，是否放弃？", "列表有未儲存的變更，是否放棄？",
                                       "The list has changes that are not saved. Give them up?"),
                                 QMessageBox::Yes | QMessageBox::No, QMessageBox::No) == QMessageBox::Yes;
}

void listSendDlg::newList()
{
    if (isDiscarding())
        document_.clear();
}

void listSendDlg::openList()
{
    if (!isDiscarding())
        return;
    const QString path = QFileDialog::getOpenFileName(this, {}, document_.path(), fileFilter());
    if (path.isEmpty())
        return;
    const QString problem = document_.open(path);
    if (!problem.isEmpty())
        showWarning(this, warningTitle(), problem);
}

void listSendDlg::saveList()
{
    if (document_.path().isEmpty())
        return saveListAs();
    const QString problem = document_.save(document_.path());
    if (!problem.isEmpty())
        showWarning(this, warningTitle(), problem);
}

void listSendDlg::saveListAs()
{
    QFileDialog dialog(this, {}, document_.path(), fileFilter());
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(kListSuffix);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return;
    const QString problem = document_.save(dialog.selectedFiles().constFirst());
    if (!problem.isEmpty())
        showWarning(this, warningTitle(), problem);
}

void listSendDlg::undo()
{
    document_.undoStack()->undo();
}

void listSendDlg::redo()
{
    document_.undoStack()->redo();
}

// --- entries ----------------------------------------------------------------------------------------------------

// In the table's order.
QVector<int> listSendDlg::selectedRows() const
{
    QVector<int> rows;
    for (const QModelIndex &index : ui_->tableView->selectionModel()->selectedRows())
        rows << index.row();
    std::sort(rows.begin(), rows.end());
    return rows;
}

void listSendDlg::select(const TransmitList &entries)
{
    std::set<unsigned> serials;
    for (const TransmitEntryPointer &entry : entries)
        serials.insert(entry->serial);
    QItemSelection rows;
    QModelIndex first;
    for (int row = 0; row < document_.list().size(); ++row) {
        if (serials.count(document_.list().at(row)->serial) == 0)
            continue;
        const QModelIndex index = document_.model()->index(row, NameColumn);
        first = first.isValid() ? first : index;
        rows.select(index, index);
    }
    if (!first.isValid())
        return;
    ui_->tableView->setCurrentIndex(first);
    ui_->tableView->selectionModel()->select(rows, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

// Behind the selection, else at the end.
void listSendDlg::insertEntries(const TransmitList &entries)
{
    const QVector<int> rows = selectedRows();
    TransmitList list = document_.list();
    int place = rows.isEmpty() ? list.size() : rows.constLast() + 1;
    for (const TransmitEntryPointer &entry : entries)
        list.insert(place++, entry);
    document_.change(list);
    select(entries);
}

void listSendDlg::addEntry()
{
    auto entry = std::make_shared<TransmitEntry>();
    entry->serial = newTransmitSerial();
    entry->frame.id = 1;
    entry->frame.length = kClassicDataBytes;
    insertEntries({entry});
}

void listSendDlg::copyEntries()
{
    TransmitList copies;
    for (const int row : selectedRows())
        copies << copyOf(*document_.list().at(row));
    if (!copies.isEmpty())
        insertEntries(copies);
}

void listSendDlg::removeEntries()
{
    const QVector<int> rows = selectedRows();
    if (rows.isEmpty())
        return;
    TransmitList list;
    for (int row = 0; row < document_.list().size(); ++row)
        if (!std::binary_search(rows.begin(), rows.end(), row))
            list << document_.list().at(row);
    document_.change(list);
    if (!list.isEmpty())
        select({list.at(std::min(rows.constFirst(), list.size() - 1))});
}

void listSendDlg::moveRows(int step)
{
    QVector<int> rows = selectedRows();
    TransmitList list = document_.list();
    if (rows.isEmpty() || (step < 0 ? rows.constFirst() == 0 : rows.constLast() == list.size() - 1))
        return;
    if (step > 0)
        std::reverse(rows.begin(), rows.end());
    TransmitList moved;
    for (const int row : rows) {
        moved << list.at(row);
        list.swapItemsAt(row, row + step);
    }
    document_.change(list);
    select(moved);
}

// On when some are off.
void listSendDlg::switchEntries()
{
    const QVector<int> rows = selectedRows();
    const bool on = std::any_of(rows.begin(), rows.end(), [this](int row) { return !document_.list().at(row)->on; });
    if (!rows.isEmpty())
        document_.model()->setCells(rows, OnColumn, on);
}

void listSendDlg::fillCells()
{
    const QModelIndex current = ui_->tableView->currentIndex();
    if (current.isValid() && !selectedRows().isEmpty())
        document_.model()->setCells(selectedRows(), current.column(), current.data(Qt::EditRole));
}

void listSendDlg::editBytes()
{
    const QModelIndex current = ui_->tableView->currentIndex();
    if (!current.isValid() || document_.list().at(current.row())->frame.remote)
        return;
    const TransmitEntryPointer entry = document_.list().at(current.row());
    const RawFrame &frame = entry->frame;
    DataDlg dialog(QByteArray(reinterpret_cast<const char *>(frame.data), frame.length), frame.length, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const int row = document_.list().indexOf(entry); // a key may have changed the list meanwhile
    if (row >= 0)
        document_.model()->setData(document_.model()->index(row, EntryDataColumn),
                                   QString::fromLatin1(dialog.data().toHex(' ')));
}

void listSendDlg::takeRows(const QString &csv)
{
    const CsvEntries taken = entriesFromCsv(csv);
    if (taken.entries.isEmpty()) {
        hint(text3("没有可用的帧行", "沒有可用的幀列", "There are no rows that are frames"));
        return;
    }
    hint({});
    insertEntries(taken.entries);
}

void listSendDlg::takeTableRows()
{
    takeRows(rowSource_ ? rowSource_() : QString());
}

void listSendDlg::pasteRows()
{
    takeRows(QApplication::clipboard()->text());
}

void listSendDlg::sendOnce()
{
    for (const int row : selectedRows())
        engine_.request(document_.list().at(row)->serial);
}
