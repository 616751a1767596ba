#include "dialogs/listsenddlg.h"

#include "ui_listsenddlg.h"

#include "widgets/dialogscaler.h"

#include <QEvent>

listSendDlg::listSendDlg(QWidget *parent) : QDialog(parent), ui_(std::make_unique<Ui::listSendDlg>())
{
    ui_->setupUi(this);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    new DialogScaler(this);
}

listSendDlg::~listSendDlg() = default;

void listSendDlg::on_pbnClose_clicked()
{
    close();
}

void listSendDlg::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        ui_->retranslateUi(this);
}
