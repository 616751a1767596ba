#include "device/dialogs/valuedialog.h"

#include "ui_valuedialog.h"

#include <QIntValidator>

#include <limits>

valueDialog::valueDialog(QWidget *parent) : FormDialog(parent), ui_(std::make_unique<Ui::valueDialog>())
{
    ui_->setupUi(this);
    setEntry(0, windowTitle(), 0, std::numeric_limits<int>::max(), 0);
    finishForm();
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
    delete ui_->valueEdit->validator();
    ui_->valueEdit->setValidator(validator);
    ui_->labelRange->setText(QStringLiteral("%1 ~ %2").arg(minimum).arg(maximum));
    ui_->valueEdit->setText(QString::number(qBound(minimum, present, maximum)));
    on_valueEdit_textChanged();
}

void valueDialog::showEvent(QShowEvent *event)
{
    FormDialog::showEvent(event);
    ui_->valueEdit->selectAll();
    ui_->valueEdit->setFocus();
}

void valueDialog::on_valueEdit_textChanged()
{
    ui_->btnValueOK->setEnabled(ui_->valueEdit->hasAcceptableInput());
}

void valueDialog::on_btnValueOK_clicked()
{
    emit getValue(ui_->valueEdit->text(), index_);
    hide();
}

void valueDialog::on_btnValueCancel_clicked()
{
    hide();
}

void valueDialog::retranslate()
{
    ui_->retranslateUi(this);
    setWindowTitle(title_);
}
