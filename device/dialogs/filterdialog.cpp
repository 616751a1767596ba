#include "device/dialogs/filterdialog.h"

#include "device/driver/numbertext.h"
#include "device/driver/wirerecords.h"
#include "device/language.h"
#include "ui_filterdialog.h"
#include "widgets/messages.h"

#include <QKeyEvent>

namespace
{

enum FilterColumn { KindColumn, StartColumn, EndColumn, FilterColumnCount };

constexpr int kFirstExtendedIndex =
    2; // of the kind selector; its even indexes are ranges, the odd ones single identifiers

bool isRange(int selectorIndex)
{
    return selectorIndex % 2 == 0;
}

QString kindText(bool extended, unsigned code = languageCode())
{
    return extended ? text3(code, "扩展帧", "擴展幀", "Extended Frame")
                    : text3(code, "标准帧", "標準幀", "Standard Frame");
}

QString kindDigit(bool extended)
{
    return extended ? QStringLiteral("1") : QStringLiteral("0");
}

// Puts the stored digit in place of every kind text of every language.
QString withDigits(QString text)
{
    for (unsigned code = 0; code < LanguageCount; ++code)
        for (const bool extended : {false, true})
            text.replace(kindText(extended, code), kindDigit(extended));
    return text;
}

} // namespace

FilterDialog::FilterDialog(int channelNumber, const QString &rowText, QWidget *parent)
    : FormDialog(parent), ui_(std::make_unique<Ui::FilterDialog>()), channelNumber_(channelNumber), rowText_(rowText)
{
    ui_->setupUi(this);
    ui_->tableWidget->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    on_comboBox_currentIndexChanged(ui_->comboBox->currentIndex());
    fillTable();
    setLiveTexts();
    finishForm();
}

FilterDialog::~FilterDialog() = default;

void FilterDialog::fillTable()
{
    for (const QString &row : rowText_.split(QLatin1Char('|'))) {
        const QStringList fields = row.split(QLatin1Char('-'));
        if (fields.size() != FilterColumnCount)
            continue;
        for (const bool extended : {false, true})
            if (fields.at(KindColumn) == kindDigit(extended))
                appendRow(kindText(extended), fields.at(StartColumn), fields.at(EndColumn));
    }
}

void FilterDialog::appendRow(const QString &kindText, const QString &start, const QString &end)
{
    const int row = ui_->tableWidget->rowCount();
    ui_->tableWidget->insertRow(row);
    ui_->tableWidget->setItem(row, KindColumn, new QTableWidgetItem(kindText));
    ui_->tableWidget->setItem(row, StartColumn, new QTableWidgetItem(start));
    ui_->tableWidget->setItem(row, EndColumn, new QTableWidgetItem(end));
}

void FilterDialog::on_comboBox_currentIndexChanged(int index)
{
    const int maximum = int(index < kFirstExtendedIndex ? kStandardIdLimit : kExtendedIdLimit) - 1;
    ui_->spinBoxStart->setRange(0, maximum);
    ui_->spinBoxEnd->setRange(0, maximum);
    ui_->spinBoxEnd->setEnabled(isRange(index));
}

void FilterDialog::on_btnAdd_clicked()
{
    ui_->spinBoxStart->interpretText();
    ui_->spinBoxEnd->interpretText();
    const int kind = ui_->comboBox->currentIndex();
    const QString start = ui_->spinBoxStart->text().toUpper();
    const QString end = isRange(kind) ? ui_->spinBoxEnd->text().toUpper() : start;
    if (end.toUInt(nullptr, kHexBase) < start.toUInt(nullptr, kHexBase)) {
        showWarning(
            this, text3("错误", "錯誤", "error"),
            text3("结束ID不可小于起始ID", "結束ID不可小於起始ID", "The end ID cannot be less than the start ID"));
        return;
    }
    appendRow(kindText(kind >= kFirstExtendedIndex), start, end);
    ui_->tableWidget->scrollToBottom();
}

void FilterDialog::on_btnDelete_clicked()
{
    ui_->tableWidget->removeRow(ui_->tableWidget->currentRow());
}

void FilterDialog::on_btnConfirm_clicked()
{
    QString text;
    for (int row = 0; row < ui_->tableWidget->rowCount(); ++row) {
        QStringList cells;
        for (int column = 0; column < FilterColumnCount; ++column)
            cells.append(ui_->tableWidget->item(row, column)->text());
        // A plain search on purpose: a row whose text begins another one is left out as well.
        const QString rowText = cells.join(QLatin1Char('-'));
        if (!text.contains(rowText))
            text += rowText + QLatin1Char('|');
    }
    text.chop(1);
    rowText_ = withDigits(text);
    accept();
}

void FilterDialog::on_btnCancel_clicked()
{
    reject();
}

void FilterDialog::setLiveTexts()
{
    setWindowTitle(text3("通道%1滤波设置", "通道%1濾波設置", "Channel%1 filter set").arg(channelNumber_));
    for (int row = 0; row < ui_->tableWidget->rowCount(); ++row) {
        QTableWidgetItem *kind = ui_->tableWidget->item(row, KindColumn);
        kind->setText(kindText(withDigits(kind->text()) == kindDigit(true)));
    }
}

void FilterDialog::keyPressEvent(QKeyEvent *event)
{
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enter && focusWidget() != ui_->tableWidget)
        ui_->btnAdd->setFocus();
    else
        FormDialog::keyPressEvent(event);
}

void FilterDialog::retranslate()
{
    ui_->retranslateUi(this);
    setLiveTexts();
}
