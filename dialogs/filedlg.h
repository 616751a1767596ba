// Asks which CSV file of frames goes onto the bus, where, how often and how fast. It only asks: the request leaves as a
// signal. Lives as long as the program, shown and hidden.
#pragma once

#include "widgets/formdialog.h"

#include <memory>

namespace Ui
{
class fileDlg;
}

class fileDlg : public FormDialog
{
    Q_OBJECT

public:
    explicit fileDlg(QWidget *parent = nullptr); // restores the stored choices
    ~fileDlg() override;

    // A run has ended, or a request was refused: inputs usable again. Emits nothing.
    void setIdle();

signals:
    // count: passes over the file, -1 until stopped; interval in milliseconds, -1 for the recorded timing; channel 0,
    // 1, or 2 for the channel of each row.
    void send(QString path, int count, int interval, int channel);
    void stop();

protected:
    void retranslate() override;

private slots:
    void on_pbfile_clicked();
    void on_comboBox_2_currentIndexChanged(int index);
    void on_pbSend_clicked();
    void on_pbStop_clicked();

private:
    void restore();
    void store();
    void setSending(bool sending);
    bool hasFixedInterval() const;

    const std::unique_ptr<Ui::fileDlg> ui_;
};
