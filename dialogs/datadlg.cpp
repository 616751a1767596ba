#include "dialogs/datadlg.h"

#include "device/driver/numbertext.h"
#include "ui_datadlg.h"

#include <QColor>
#include <QHeaderView>
#include <QKeyEvent>
#include <QSignalBlocker>

namespace
{
enum ByteColumn { HexColumn, DecimalColumn, FirstBitColumn, LastBitColumn = FirstBitColumn + 7 };

constexpr int kDecimalBase = 10;
const QColor kBitColour(128, 128, 255);
const QColor kSetBitText(Qt::white);
const QColor kClearBitText(Qt::black);

bool isBitColumn(int column)
{
    return column >= FirstBitColumn && column <= LastBitColumn;
}

// The low eight bits of the number; no number reads as 0.
quint8 byteOf(const QString &text, int base)
{
    return static_cast<quint8>(text.toLongLong(nullptr, base));
}

QString bitText(bool set)
{
    return set ? QStringLiteral("1") : QStringLiteral("0");
}
} // namespace

DataDlg::DataDlg(const QByteArray &data, uint length, QWidget *parent)
    : FormDialog(parent), ui_(std::make_unique<Ui::DataDlg>())
{
    ui_->setupUi(this);
    ui_->lengthLabel->setText(QString::number(length));
    ui_->tableWidget->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    for (int column : {HexColumn, DecimalColumn})
        ui_->tableWidget->horizontalHeader()->setSectionResizeMode(column, QHeaderView::ResizeToContents);
    ui_->tableWidget->setRowCount(static_cast<int>(length));
    for (int row = 0; row < ui_->tableWidget->rowCount(); ++row) {
        makeRow(row);
        fillRow(row, row < data.size() ? static_cast<quint8>(data.at(row)) : 0);
    }
    ui_->tableWidget->installEventFilter(this);
    finishForm();
}

DataDlg::~DataDlg() = default;

void DataDlg::makeRow(int row)
{
    const QSignalBlocker blocker(ui_->tableWidget);
    ui_->tableWidget->setVerticalHeaderItem(row, new QTableWidgetItem(QString::number(row)));
    for (int column = HexColumn; column <= LastBitColumn; ++column) {
        auto *cell = new QTableWidgetItem;
        cell->setTextAlignment(Qt::AlignCenter);
        if (isBitColumn(column)) {
            cell->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled);
            cell->setBackground(kBitColour);
        }
        ui_->tableWidget->setItem(row, column, cell);
    }
}

void DataDlg::fillRow(int row, quint8 value)
{
    const QSignalBlocker blocker(ui_->tableWidget);
    ui_->tableWidget->item(row, HexColumn)->setText(QString::number(value, kHexBase).toUpper());
    ui_->tableWidget->item(row, DecimalColumn)->setText(QString::number(value));
    for (int column = FirstBitColumn; column <= LastBitColumn; ++column) {
        const bool set = (value >> (LastBitColumn - column) & 1) != 0;
        QTableWidgetItem *bit = ui_->tableWidget->item(row, column);
        bit->setText(bitText(set));
        bit->setForeground(set ? kSetBitText : kClearBitText);
        QFont font; // only its weight counts, the rest is the table's
        font.setBold(set);
        bit->setFont(font);
    }
}

QByteArray DataDlg::data() const
{
    QByteArray bytes;
    for (int row = 0; row < ui_->tableWidget->rowCount(); ++row)
        bytes.append(static_cast<char>(byteOf(ui_->tableWidget->item(row, HexColumn)->text(), kHexBase)));
    return bytes;
}

void DataDlg::on_tableWidget_itemChanged(QTableWidgetItem *item)
{
    if (item->column() == HexColumn)
        fillRow(item->row(), byteOf(item->text(), kHexBase));
    else if (item->column() == DecimalColumn)
        fillRow(item->row(), byteOf(item->text(), kDecimalBase));
}

// The toolkit tells a double click's second release as no click: it flips once.
void DataDlg::on_tableWidget_itemClicked(QTableWidgetItem *item)
{
    flipBit(item);
}

bool DataDlg::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == ui_->tableWidget && event->type() == QEvent::KeyPress) {
        QTableWidgetItem *item = ui_->tableWidget->currentItem();
        if (static_cast<QKeyEvent *>(event)->key() == Qt::Key_Space && item && isBitColumn(item->column())) {
            flipBit(item);
            return true;
        }
    }
    return FormDialog::eventFilter(watched, event);
}

void DataDlg::flipBit(QTableWidgetItem *item)
{
    if (!isBitColumn(item->column()))
        return;
    const QSignalBlocker blocker(ui_->tableWidget);
    item->setText(bitText(item->text() == bitText(false)));
    unsigned value = 0;
    for (int column = FirstBitColumn; column <= LastBitColumn; ++column)
        value = value << 1 | (ui_->tableWidget->item(item->row(), column)->text() == bitText(true) ? 1 : 0);
    fillRow(item->row(), static_cast<quint8>(value));
}

void DataDlg::on_pushButton_clicked()
{
    accept();
}

void DataDlg::on_pushButton_2_clicked()
{
    reject();
}

void DataDlg::retranslate()
{
    ui_->retranslateUi(this);
}
