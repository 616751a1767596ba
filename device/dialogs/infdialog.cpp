#include "device/dialogs/infdialog.h"

#include "device/devicelayer.h"
#include "device/dialogs/deviceinfo.h"
#include "ui_infdialog.h"

#include <QDebug>

namespace
{

// The text up to the first zero byte, or all of it when there is none.
template <std::size_t Size> QString terminatedText(const char (&bytes)[Size])
{
    return QString::fromLatin1(bytes, int(qstrnlen(bytes, Size)));
}

} // namespace

INfDialog::INfDialog(DeviceInfoRecord record, QWidget *parent)
    : FormDialog(parent), ui_(std::make_unique<Ui::INfDialog>())
{
    ui_->setupUi(this);
    showRecord(record);
    finishForm();
}

INfDialog::~INfDialog() = default;

void INfDialog::showRecord(const DeviceInfoRecord &record)
{
    ui_->labelhwVersion->setText(versionText(record.hardwareVersion));
    ui_->labelfwVersion->setText(versionText(record.firmwareVersion));
    ui_->labeldrVersion->setText(versionText(record.driverVersion));
    ui_->labelinVersion->setText(versionText(record.interfaceVersion));
    ui_->labelirqNum->setText(QString::number(record.irqNumber));
    ui_->labelcanNum->setText(QString::number(record.channelCount));
    ui_->labelSerialNum->setText(printableText(QString::fromLatin1(record.serialNumber, sizeof record.serialNumber)));
    ui_->labelhwType->setText(printableText(terminatedText(record.hardwareType)));
    qDebug().noquote() << printableText(terminatedText(record.serialNumber));
}

void INfDialog::on_pushButton_clicked()
{
    close();
}

void INfDialog::retranslate()
{
    ui_->retranslateUi(this);
}
