#include "dialogs/listsenddlg.h"

#include "ui_listsenddlg.h"

listSendDlg::listSendDlg(QWidget *parent) : FormDialog(parent), ui_(std::make_unique<Ui::listSendDlg>())
{
    ui_->setupUi(this);
    finishForm();
}

listSendDlg::~listSendDlg() = default;

void listSendDlg::on_pbnClose_clicked()
{
    close();
}

void listSendDlg::retranslate()
{
    ui_->retranslateUi(this);
}
