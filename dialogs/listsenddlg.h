// The frame of a list-send window; all it does is close.
#pragma once

#include "widgets/formdialog.h"

#include <memory>

namespace Ui
{
class listSendDlg;
}

class listSendDlg : public FormDialog
{
    Q_OBJECT

public:
    explicit listSendDlg(QWidget *parent = nullptr);
    ~listSendDlg() override;

protected:
    void retranslate() override;

private slots:
    void on_pbnClose_clicked();

private:
    const std::unique_ptr<Ui::listSendDlg> ui_;
};
