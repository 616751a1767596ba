#include "device/dialogs/infdialog.h"

#include "device/devicelayer.h"
#include "device/dialogs/deviceinfo.h"
#include "ui_infdialog.h"
#include "widgets/dialogscaler.h"

#include <QDebug>
#include <QEvent>

namespace
{

// The text up to the first zero byte, or all of it when there is none.
template <std::size_t Size> QString terminatedText(const char (&bytes)[Size])
{
    return QString::fromLatin1(bytes, int(qstrnlen(bytes, Size)));
}

} // namespace

INfDialog::INfDialog(DeviceInfoRecord record, QWidget *parent) : QDialog(parent), ui(std::make_unique<Ui::INfDialog>())
{
    ui->setupUi(this);
    showRecord(record);
    new DialogScaler(this);
}

INfDialog::~INfDialog() = default;

void INfDialog::showRecord(const DeviceInfoRecord &record)
{
    ui->labelhwVersion->setText(versionText(record.hardwareVersion));
    ui->labelfwVersion->setText(versionText(record.firmwareVersion));
    ui->labeldrVersion->setText(versionText(record.driverVersion));
    ui->labelinVersion->setText(versionText(record.interfaceVersion));
    ui->labelirqNum->setText(QString::number(record.irqNumber));
    ui->labelcanNum->setText(QString::number(record.channelCount));
    ui->labelSerialNum->setText(printableText(QString::fromLatin1(record.serialNumber, sizeof record.serialNumber)));
    ui->labelhwType->setText(printableText(terminatedText(record.hardwareType)));
    qDebug().noquote() << printableText(terminatedText(record.serialNumber));
}

void INfDialog::on_pushButton_clicked()
{
    close();
}

void INfDialog::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
    QDialog::changeEvent(event);
}
