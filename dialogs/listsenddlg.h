// The frame of a list-send window; all it does is close.
#pragma once

#include <QDialog>

#include <memory>

namespace Ui
{
class listSendDlg;
}

class listSendDlg : public QDialog
{
    Q_OBJECT

public:
    explicit listSendDlg(QWidget *parent = nullptr);
    ~listSendDlg() override;

protected:
    void changeEvent(QEvent *event) override;

private slots:
    void on_pbnClose_clicked();

private:
    std::unique_ptr<Ui::listSendDlg> ui_;
};
