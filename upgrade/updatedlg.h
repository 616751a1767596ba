// Asks for the firmware upgrade and carries it out: restarts the adapter into its boot loader, waits for the drive it
// shows up as, copies the image there. Every outcome after "yes" ends the program.
#pragma once

#include "upgrade/bootvolumes.h"
#include "widgets/formdialog.h"

#include <memory>
#include <utility>

class QProgressBar;
class QTimer;

namespace Ui
{
class UpdateDlg;
}

class UpdateDlg : public FormDialog
{
    Q_OBJECT

public:
    // version: the adapter's firmware version as text; sourcePath: the image.
    UpdateDlg(const QString &version, const QString &sourcePath, QWidget *parent = nullptr);
    ~UpdateDlg() override;

    // All three before the dialog is shown.
    void setDeviceIndex(unsigned index) { deviceIndex_ = index; }               // 0 unless set
    void setVolumeLister(VolumeLister lister) { volumes_ = std::move(lister); } // systemVolumes unless set
    void setPollInterval(int milliseconds) { pollMs_ = milliseconds; }          // a second unless set

public slots:
    void reject() override; // refused while upgrading

protected:
    void retranslate() override;
    void closeEvent(QCloseEvent *event) override;

private slots:
    void on_pushButton_clicked();   // yes
    void on_pushButton_2_clicked(); // no
    void timer();                   // one polling step

private:
    void showLiveText();
    void goOnAfter(int milliseconds, void (UpdateDlg::*step)());
    void restartDevice();
    bool copyImage() const;
    void fail();
    void leaveProgram();

    const std::unique_ptr<Ui::UpdateDlg> ui_;
    QProgressBar *progress_; // owned by this dialog; empty until the image is on the drive
    QTimer *wait_;           // owned by this dialog; for the next step
    const QString version_;
    const QString sourcePath_;
    unsigned deviceIndex_ = 0;
    VolumeLister volumes_ = systemVolumes;
    int pollMs_;
    bool upgrading_ = false;
    int attempts_ = 0;
    QByteArray image_;
    QStringList drivesBefore_; // root paths of the boot-loader drives that must not be touched
};
