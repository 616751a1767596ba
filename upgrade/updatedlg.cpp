#include "upgrade/updatedlg.h"

#include "device/devicelayer.h"
#include "device/language.h"
#include "ui_updatedlg.h"
#include "widgets/messages.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDebug>
#include <QProgressBar>
#include <QTimer>

namespace
{
constexpr int kPollMs = 1000;
constexpr int kPaintFirstMs = 1; // lets the warning be painted before the driver call blocks the window
constexpr int kLastAttempt = 16; // fails without looking
} // namespace

UpdateDlg::UpdateDlg(const QString &version, const QString &sourcePath, QWidget *parent)
    : FormDialog(parent),
      ui_(std::make_unique<Ui::UpdateDlg>()),
      progress_(new QProgressBar(this)),
      wait_(new QTimer(this)),
      version_(version),
      sourcePath_(sourcePath),
      pollMs_(kPollMs)
{
    ui_->setupUi(this);
    wait_->setSingleShot(true);
    progress_->setTextVisible(false);
    progress_->setValue(0);
    ui_->progressLayout->addWidget(progress_);
    showLiveText();
    finishForm();
}

UpdateDlg::~UpdateDlg() = default;

void UpdateDlg::showLiveText()
{
    if (upgrading_)
        ui_->label->setText(
            text3("警告：升级固件中，请勿关闭此界面及拔出设备。", "警告：升級固件中，請勿關閉此界面及拔除設備。",
                  "Warning: Do not close this interface or unplug the device during firmware upgrade."));
    else
        ui_->label->setText(text3("固件版本(%1)过低，是否升级固件？", "固件版本(%1)過低，是否升級固件？",
                                  "The firmware version(%1)is too low，Do you want to upgrade the firmware?")
                                .arg(version_));
}

void UpdateDlg::on_pushButton_clicked()
{
    drivesBefore_ = bootDriveRoots(volumes_());
    upgrading_ = true;
    showLiveText();
    ui_->pushButton->setEnabled(false);
    ui_->pushButton_2->setEnabled(false);
    goOnAfter(kPaintFirstMs, &UpdateDlg::restartDevice);
}

void UpdateDlg::goOnAfter(int milliseconds, void (UpdateDlg::*step)())
{
    wait_->disconnect(this);
    connect(wait_, &QTimer::timeout, this, step);
    wait_->start(milliseconds);
}

void UpdateDlg::on_pushButton_2_clicked()
{
    close();
}

void UpdateDlg::restartDevice()
{
    // Without the image an adapter in its boot loader would be left with nothing to load.
    image_ = readFirmwareImage(sourcePath_);
    if (image_.isEmpty()) {
        qDebug().noquote() << "cannot read" << sourcePath_;
        fail();
        return;
    }
    if (!updateDevice(deviceIndex_)) {
        qDebug("updateDevice error");
        fail();
        return;
    }
    goOnAfter(pollMs_, &UpdateDlg::timer);
}

void UpdateDlg::timer()
{
    ++attempts_;
    if (attempts_ >= kLastAttempt) {
        fail();
        return;
    }
    if (!copyImage()) {
        goOnAfter(pollMs_, &UpdateDlg::timer);
        return;
    }
    progress_->setValue(progress_->maximum());
    showInformation(this, text3("提示", "提示", "tip"),
                    text3("固件升级成功，请重新插拔设备并重启软件！", "固件升級成功，請重新插拔設備並重啓軟件！",
                          "Firmware upgrade successfully, please reinsert or unplug the device and restart the "
                          "software!"));
    leaveProgram();
}

bool UpdateDlg::copyImage() const
{
    for (const QString &root : bootDriveRoots(volumes_()))
        if (!drivesBefore_.contains(root))
            return writeFirmware(image_, root);
    return false;
}

void UpdateDlg::fail()
{
    showCritical(this, text3("错误", "錯誤", "error"),
                 text3("固件升级失败，请重新插拔设备并重启软件！", "固件升級失敗，請重新插拔設備並重啓軟件！",
                       "Firmware upgrade failed, please reinsert or unplug the device and restart the software!"));
    leaveProgram();
}

void UpdateDlg::leaveProgram()
{
    upgrading_ = false;
    accept();
    QCoreApplication::quit(); // also ends the loops of the dialogs and windows below this one
}

void UpdateDlg::reject()
{
    if (!upgrading_)
        FormDialog::reject();
}

void UpdateDlg::closeEvent(QCloseEvent *event)
{
    if (upgrading_)
        event->ignore();
    else
        FormDialog::closeEvent(event);
}

void UpdateDlg::retranslate()
{
    ui_->retranslateUi(this);
    showLiveText();
}
