// Edits the data bytes of a frame: one row per byte, shown in hexadecimal, in decimal and as eight bits that a click
// or the space bar flips.
#pragma once

#include "widgets/formdialog.h"

#include <QByteArray>

#include <memory>

class QTableWidgetItem;

namespace Ui
{
class DataDlg;
}

class DataDlg : public FormDialog
{
    Q_OBJECT

public:
    // Shows exactly length bytes: data cut short, or filled up with zeros.
    DataDlg(const QByteArray &data, uint length, QWidget *parent = nullptr);
    ~DataDlg() override;

    // The bytes as they stand in the table.
    QByteArray data() const;

protected:
    void retranslate() override;
    bool eventFilter(QObject *watched, QEvent *event) override; // the table's keys

private slots:
    void on_tableWidget_itemChanged(QTableWidgetItem *item);
    void on_tableWidget_itemClicked(QTableWidgetItem *item);
    void on_pushButton_clicked();
    void on_pushButton_2_clicked();

private:
    void makeRow(int row);
    void fillRow(int row, quint8 value);
    void flipBit(QTableWidgetItem *item);

    const std::unique_ptr<Ui::DataDlg> ui_;
};
