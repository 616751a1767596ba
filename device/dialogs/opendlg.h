// Opens and closes the adapter and its channels.
#pragma once

#include "device/driver/driver.h"
#include "widgets/formdialog.h"

#include <array>
#include <memory>

namespace Ui
{
class OpenDlg;
}

class OpenDlg : public FormDialog
{
    Q_OBJECT

public:
    // deviceIndex: the device to offer first, as remembered from the last successful opening.
    explicit OpenDlg(int deviceIndex, QWidget *parent = nullptr);
    ~OpenDlg() override;

    // The index of the last device opened successfully, else the one given at construction.
    int deviceIndex() const { return deviceIndex_; }
    // Whether this dialog opened and started the channel (0 or 1) and it is still open.
    bool channelOpened(unsigned channel) const;

    // ch: 0 or 1, or both from 2 up. Asks for the parameters first; a failure on one channel does not keep the other
    // back.
    void openCh(int ch);

public slots:
    // Puts buttons and title in step with the device; also runs twice a second, for a device that goes by itself.
    void initDlg();

signals:
    // The adapter has just been opened. Whoever watches it looks at once: a sender that starts soon keeps the watch
    // off.
    void deviceOpened();
    // The user closed the adapter: titles that name it return to plain.
    void deviceClosed();

protected:
    void retranslate() override;

private slots:
    void on_pushButton_clicked();   // open the device
    void on_pushButton_2_clicked(); // open whatever channel is closed
    void on_pushButton_3_clicked(); // open channel 0
    void on_pushButton_4_clicked(); // open channel 1
    void on_pushButton_5_clicked(); // close the device
    void on_pushButton_6_clicked(); // reset whatever channel is open
    void on_pushButton_8_clicked(); // reset channel 0
    void on_pushButton_9_clicked(); // reset channel 1
    void on_closeBtn_clicked();

private:
    void openOne(unsigned channel);
    // The button that comes next on the way from the device to its frames.
    QWidget *nextStep() const;

    const std::unique_ptr<Ui::OpenDlg> ui_;
    int deviceIndex_;
    QString info_; // of the open device, for the title; empty when there is none or it does not answer
    std::array<bool, kChannelCount> opened_{};
};
