// Asks for one whole number. One of these is reused for several values; the index tells the owner which one was asked.
#pragma once

#include "widgets/formdialog.h"

#include <memory>

namespace Ui
{
class valueDialog;
}

class valueDialog : public FormDialog
{
    Q_OBJECT

public:
    explicit valueDialog(QWidget *parent = nullptr);
    ~valueDialog() override;

    // Prepares the next entry: it starts at the present value, and only numbers from minimum to maximum can be
    // confirmed.
    void setEntry(int index, const QString &title, int minimum, int maximum, int present);

signals:
    // Confirmed: the text as entered, a decimal number within the limits, and the index of the entry.
    void getValue(QString str, int index);

protected:
    void retranslate() override;
    void showEvent(QShowEvent *event) override;

private slots:
    void on_valueEdit_textChanged();
    void on_btnValueOK_clicked();
    void on_btnValueCancel_clicked();

private:
    const std::unique_ptr<Ui::valueDialog> ui_;
    int index_ = 0;
    QString title_;
};
