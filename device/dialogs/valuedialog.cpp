#include "device/dialogs/valuedialog.h"

#include "ui_valuedialog.h"
#include "widgets/dialogscaler.h"

#include <QEvent>
#include <QIntValidator>

#include <limits>

valueDialog::valueDialog(QWidget *parent) : QDialog(parent), ui(std::make_unique<Ui::valueDialog>())
{
    ui->setupUi(this);
    setEntry(0, windowTitle(), 0, std::numeric_limits<int>::max(), 0);
    new DialogScaler(this);
}

valueDialog::~valueDialog() = default;

void valueDialog::setEntry(int index, const QString &title, int minimum, int maximum, int present)
{
    index_ = index;
    title_ = title;
    setWindowTitle(title);
    auto *validator = new QIntValidator(minimum, maximum, this);
    QLocale plain = QLocale::c(); // no "1,000", whatever the system's habits are
    plain.setNumberOptions(QLocale::RejectGroupSeparator);
    validator->setLocale(plain);
    delete ui->valueEdit->validator();
    ui->valueEdit->setValidator(validator);
    ui->labelRange->setText(QStringLiteral("%1 ~ %2").arg(minimum).arg(maximum));
    ui->valueEdit->setText(QString::number(qBound(minimum, present, maximum)));
    on_valueEdit_textChanged();
}

void valueDialog::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    ui->valueEdit->selectAll();
    ui->valueEdit->setFocus();
}

void valueDialog::on_valueEdit_textChanged()
{
    ui->btnValueOK->setEnabled(ui->valueEdit->hasAcceptableInput());
}

void valueDialog::on_btnValueOK_clicked()
{
    emit getValue(ui->valueEdit->text(), index_);
    hide();
}

void valueDialog::on_btnValueCancel_clicked()
{
    hide();
}

void valueDialog::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange) {
        ui->retranslateUi(this);
        setWindowTitle(title_);
    }
    QDialog::changeEvent(event);
}
