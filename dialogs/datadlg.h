// Edits the data bytes of a frame: one row per byte, shown in hexadecimal, in decimal and as eight bits that a click
// flips.
#pragma once

#include <QByteArray>
#include <QDialog>

#include <memory>

class QTableWidgetItem;

namespace Ui
{
class DataDlg;
}

class DataDlg : public QDialog
{
    Q_OBJECT

public:
    // Shows exactly length bytes: data cut short, or filled up with zeros.
    DataDlg(const QByteArray &data, uint length, QWidget *parent = nullptr);
    ~DataDlg() override;

    // The bytes as they stand in the table.
    QByteArray data() const;

protected:
    void changeEvent(QEvent *event) override;

private slots:
    void on_tableWidget_itemChanged(QTableWidgetItem *item);
    void on_tableWidget_itemClicked(QTableWidgetItem *item);
    void on_pushButton_clicked();
    void on_pushButton_2_clicked();

private:
    void makeRow(int row);
    void fillRow(int row, quint8 value);

    std::unique_ptr<Ui::DataDlg> ui_;
};
