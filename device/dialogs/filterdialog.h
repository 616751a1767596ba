// Edits the identifier ranges that a channel's acceptance filter lets through.
#pragma once

#include "widgets/formdialog.h"

#include <memory>

namespace Ui
{
class FilterDialog;
}

class FilterDialog : public FormDialog
{
    Q_OBJECT

public:
    // channelNumber: 1 or 2. rowText: "kind-start-end|...", kind 0 standard, 1 extended, identifiers in hexadecimal;
    // rows of another shape are left out.
    FilterDialog(int channelNumber, const QString &rowText, QWidget *parent = nullptr);
    ~FilterDialog() override;

    // The edited rows once the dialog was accepted, else the rows it was given.
    QString rowText() const { return rowText_; }

protected:
    void retranslate() override;
    void keyPressEvent(QKeyEvent *event) override; // Enter in a field leads on to the add button

private slots:
    void on_comboBox_currentIndexChanged(int index);
    void on_btnAdd_clicked();
    void on_btnDelete_clicked();
    void on_btnConfirm_clicked();
    void on_btnCancel_clicked();

private:
    void fillTable();
    void appendRow(const QString &kindText, const QString &start, const QString &end);
    void setLiveTexts();

    const std::unique_ptr<Ui::FilterDialog> ui_;
    const int channelNumber_;
    QString rowText_;
};
