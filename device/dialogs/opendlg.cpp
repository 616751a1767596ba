#include "device/dialogs/opendlg.h"

#include "device/channelparameters.h"
#include "device/devicelayer.h"
#include "device/devicetexts.h"
#include "device/dialogs/deviceinfo.h"
#include "device/dialogs/paradialog.h"
#include "device/language.h"
#include "ui_opendlg.h"
#include "upgrade/upgradeaction.h"
#include "widgets/messages.h"

#include <QTimer>

namespace
{
constexpr int kFollowDeviceMs = 500;
constexpr int kFirstBoth = 2; // channel selectors from here up mean both channels
} // namespace

OpenDlg::OpenDlg(int deviceIndex, QWidget *parent)
    : FormDialog(parent), ui_(std::make_unique<Ui::OpenDlg>()), deviceIndex_(deviceIndex)
{
    ui_->setupUi(this);
    QSizePolicy keepsItsRoom = ui_->hintLabel->sizePolicy();
    keepsItsRoom.setRetainSizeWhenHidden(true);
    ui_->hintLabel->setSizePolicy(keepsItsRoom);
    ui_->comboBox->addItems(deviceNames());
    if (deviceIndex >= 0 && deviceIndex < ui_->comboBox->count())
        ui_->comboBox->setCurrentIndex(deviceIndex);
    if (isDeviceOpen())
        info_ = deviceInfoTitle();
    initDlg();
    nextStep()->setFocus();
    auto *follow = new QTimer(this);
    connect(follow, &QTimer::timeout, this, &OpenDlg::initDlg);
    follow->start(kFollowDeviceMs);
    finishForm();
}

OpenDlg::~OpenDlg() = default;

bool OpenDlg::channelOpened(unsigned channel) const
{
    return opened_[channel] && isChannelOpen(channel);
}

QWidget *OpenDlg::nextStep() const
{
    if (ui_->pushButton->isEnabled())
        return ui_->pushButton;
    return ui_->pushButton_2->isEnabled() ? ui_->pushButton_2 : ui_->closeBtn;
}

void OpenDlg::initDlg()
{
    const bool device = isDeviceOpen();
    const bool first = isChannelOpen(0);
    const bool second = isChannelOpen(1);
    const QWidget *focus = focusWidget(); // the toolkit takes the focus off a widget that is disabled
    ui_->comboBox->setEnabled(!device);
    ui_->pushButton->setEnabled(!device);
    ui_->pushButton_2->setEnabled(device && !(first && second));
    ui_->pushButton_3->setEnabled(device && !first);
    ui_->pushButton_4->setEnabled(device && !second);
    ui_->pushButton_5->setEnabled(device);
    ui_->pushButton_6->setEnabled(first || second);
    ui_->pushButton_8->setEnabled(first);
    ui_->pushButton_9->setEnabled(second);
    ui_->hintLabel->setVisible(channelOpened(0) || channelOpened(1));
    if (focus && !focus->isEnabled())
        nextStep()->setFocus();

    QString title = tr("设备操作");
    if (device && !info_.isEmpty())
        title += QStringLiteral(" - ") + info_;
    if (windowTitle() != title)
        setWindowTitle(title);
}

void OpenDlg::on_pushButton_clicked()
{
    const int index = qMax(0, ui_->comboBox->currentIndex());
    if (openDevice(kDeviceType, unsigned(index), 0)) {
        deviceIndex_ = index;
        const unsigned firmware = refreshDeviceInfo(); // 0 without an answer: older than any image
        info_ = deviceInfoTitle();
        initDlg();
        emit deviceOpened();
        offerFirmwareUpgrade(firmware, unsigned(index), this);
    } else {
        info_.clear();
        initDlg();
        showWarning(this, warningTitle(), text3("设备打开失败！", "設備打開失敗！", "Device opening failed!"));
    }
    initDlg();
}

void OpenDlg::on_pushButton_2_clicked()
{
    const bool first = isChannelOpen(0);
    const bool second = isChannelOpen(1);
    if (!first && !second)
        openCh(ParaDialog::BothChannels);
    else if (!first)
        openCh(0);
    else if (!second)
        openCh(1);
    initDlg();
}

void OpenDlg::on_pushButton_3_clicked()
{
    openCh(0);
    initDlg();
}

void OpenDlg::on_pushButton_4_clicked()
{
    openCh(1);
    initDlg();
}

void OpenDlg::on_pushButton_5_clicked()
{
    closeDevice();
    info_.clear();
    emit deviceClosed();
    initDlg();
}

void OpenDlg::on_pushButton_6_clicked()
{
    for (unsigned channel = 0; channel < kChannelCount; ++channel)
        if (isChannelOpen(channel))
            resetChannel(channel);
    initDlg();
}

void OpenDlg::on_pushButton_8_clicked()
{
    resetChannel(0);
    initDlg();
}

void OpenDlg::on_pushButton_9_clicked()
{
    resetChannel(1);
    initDlg();
}

void OpenDlg::on_closeBtn_clicked()
{
    close();
}

void OpenDlg::openCh(int ch)
{
    const bool both = ch >= kFirstBoth;
    ParaDialog dialog(true, false, both ? ParaDialog::BothChannels : ch, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    for (unsigned channel = 0; channel < kChannelCount; ++channel) {
        if (!both && int(channel) != ch)
            continue;
        if (!isDeviceOpen()) { // it may go while a dialog waits for its answer
            showWarning(this, warningTitle(), deviceNotOpenText());
            return;
        }
        openOne(channel);
    }
}

void OpenDlg::openOne(unsigned channel)
{
    if (isChannelOpen(channel))
        return;
    const ChannelStep failed = openChannel(channel, loadChannelParameters(channel));
    opened_[channel] = failed == ChannelStep::None;
    if (failed != ChannelStep::None)
        showWarning(this, warningTitle(), stepFailureText(failed));
}

void OpenDlg::retranslate()
{
    ui_->retranslateUi(this);
    initDlg();
}
