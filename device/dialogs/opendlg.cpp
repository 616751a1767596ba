#include "device/dialogs/opendlg.h"

#include "device/channelparameters.h"
#include "device/devicelayer.h"
#include "device/dialogs/deviceinfo.h"
#include "device/dialogs/paradialog.h"
#include "device/language.h"
#include "ui_opendlg.h"
#include "upgrade/upgradeaction.h"
#include "widgets/dialogscaler.h"
#include "widgets/messages.h"

#include <QEvent>
#include <QTimer>

namespace
{
constexpr int kFollowDeviceMs = 500;
constexpr int kFirstBoth = 2; // channel selectors from here up mean both channels
} // namespace

OpenDlg::OpenDlg(int deviceIndex, QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::OpenDlg>()), deviceIndex_(deviceIndex)
{
    ui->setupUi(this);
    ui->comboBox->addItems(deviceNames());
    if (deviceIndex >= 0 && deviceIndex < ui->comboBox->count())
        ui->comboBox->setCurrentIndex(deviceIndex);
    readInfo();
    initDlg();
    auto *follow = new QTimer(this);
    connect(follow, &QTimer::timeout, this, &OpenDlg::initDlg);
    follow->start(kFollowDeviceMs);
    new DialogScaler(this);
}

OpenDlg::~OpenDlg() = default;

bool OpenDlg::channelOpened(unsigned channel) const
{
    return opened_[channel] && isChannelOpen(channel);
}

void OpenDlg::readInfo()
{
    info_ = deviceInfoTitle();
}

void OpenDlg::initDlg()
{
    const bool device = isDeviceOpen();
    const bool first = isChannelOpen(0);
    const bool second = isChannelOpen(1);
    ui->comboBox->setEnabled(!device);
    ui->pushButton->setEnabled(!device);
    ui->pushButton_2->setEnabled(device && !(first && second));
    ui->pushButton_3->setEnabled(device && !first);
    ui->pushButton_4->setEnabled(device && !second);
    ui->pushButton_5->setEnabled(device);
    ui->pushButton_6->setEnabled(first || second);
    ui->pushButton_8->setEnabled(first);
    ui->pushButton_9->setEnabled(second);

    QString title = tr("设备操作");
    if (device && !info_.isEmpty())
        title += QStringLiteral(" - ") + info_;
    if (windowTitle() != title)
        setWindowTitle(title);
}

void OpenDlg::on_pushButton_clicked()
{
    const int index = qMax(0, ui->comboBox->currentIndex());
    if (openDevice(kDeviceType, unsigned(index), 0)) {
        deviceIndex_ = index;
        const unsigned firmware = refreshDeviceInfo();
        readInfo();
        initDlg();
        emit deviceOpened();
        if (!info_.isEmpty()) // without an answer there is no version to compare
            offerFirmwareUpgrade(firmware, unsigned(index), this);
    } else {
        readInfo();
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
    readInfo();
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

void OpenDlg::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange) {
        ui->retranslateUi(this);
        initDlg();
    }
    QDialog::changeEvent(event);
}
