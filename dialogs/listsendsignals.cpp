// The transmit list and the signal databases: messages taken from them, data edited as signals.
#include "dialogs/listsenddlg.h"
#include "dialogs/messagedlg.h"
#include "dialogs/signalvaluedelegate.h"
#include "ui_listsenddlg.h"
#include "widgets/dialogscaler.h"

#include <QHeaderView>
#include <QScrollBar>

namespace
{

// Columns in pixels at 96 DPI.
constexpr int kFieldWidths[SignalFieldColumnCount] = {180, 130, 70, 110, 80, 110, 240};
} // namespace

void listSendDlg::addFields()
{
    ui_->fieldView->setModel(&fields_);
    ui_->fieldView->setItemDelegate(new SignalValueDelegate(this));
    ui_->fieldView->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    ui_->fieldView->verticalHeader()->hide();
    for (int column = 0; column < SignalFieldColumnCount; ++column)
        ui_->fieldView->setColumnWidth(column, kFieldWidths[column] * logicalDpiX() / kDesignDpi);
    ui_->fieldPane->hide();
    connect(&fields_, &SignalFields::told, this, &listSendDlg::hint);
    connect(&fields_, &SignalFields::edited, this, [this](const TransmitEntryPointer &edited) {
        TransmitList list = document_.list();
        for (TransmitEntryPointer &entry : list)
            if (entry->serial == edited->serial)
                entry = edited;
        document_.change(list);
    });
    connect(ui_->tableView->selectionModel(), &QItemSelectionModel::currentRowChanged, this, &listSendDlg::showFields);
    connect(document_.model(), &QAbstractItemModel::modelReset, this, &listSendDlg::showFields);
}

void listSendDlg::setDatabases(DatabaseAccess databases)
{
    databases_ = std::move(databases);
    showFields();
}

// Those of the current row.
void listSendDlg::showFields()
{
    const int row = ui_->tableView->currentIndex().row();
    const TransmitEntryPointer entry =
        row >= 0 && row < document_.list().size() ? document_.list().at(row) : TransmitEntryPointer();
    fields_.show(entry, databases_.lookup ? databases_.lookup() : nullptr);
    ui_->messageLabel->setText(
        entry && fields_.isKnown()
            ? text3("第%1行：%2", "第%1列：%2", "Row %1: %2").arg(row + 1).arg(fields_.messageName())
            : QString());
    const bool appears = fields_.isKnown() && !ui_->fieldPane->isVisible();
    ui_->fieldPane->setVisible(fields_.isKnown());
    if (appears) { // the pane must not cover the row that it belongs to
        ui_->splitter->refresh();
        QScrollBar *columns = ui_->tableView->horizontalScrollBar();
        const int left = columns->value();
        ui_->tableView->scrollTo(ui_->tableView->currentIndex());
        columns->setValue(left);
    }
}

void listSendDlg::editSignals()
{
    if (!fields_.isKnown()) {
        hint(text3("没有数据库认识当前行的帧", "沒有資料庫認識目前列的幀",
                   "No signal database knows the frame of the current row"));
        return;
    }
    hint({});
    const int row = qMax(0, ui_->fieldView->currentIndex().row());
    ui_->fieldView->setCurrentIndex(fields_.index(row, FieldValueColumn));
    ui_->fieldView->setFocus();
}

void listSendDlg::takeMessages()
{
    if (!databases_.entries)
        return;
    MessageDlg dialog(databases_, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const TransmitList entries = dialog.entries();
    if (!entries.isEmpty())
        insertEntries(entries);
}
