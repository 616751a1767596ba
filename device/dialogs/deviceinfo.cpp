#include "device/dialogs/deviceinfo.h"

#include "device/devicelayer.h"
#include "device/devicetexts.h"
#include "device/dialogs/infdialog.h"
#include "device/language.h"
#include "widgets/messages.h"

#include <QDebug>

#include <algorithm>

void showDeviceInfo(QWidget *parent)
{
    qDebug("getdeviceInfo");
    if (!isDeviceOpen()) {
        showWarning(parent, warningTitle(), deviceNotOpenText());
        return;
    }
    const DeviceInfoRecord record = readDeviceInfo();
    if (record.firmwareVersion == 0) {
        showWarning(parent, warningTitle(), deviceInfoFailedText());
        return;
    }
    INfDialog(record, parent).exec();
}

QString printableText(QString text)
{
    std::replace_if(
        text.begin(), text.end(), [](QChar c) { return !c.isPrint(); }, QLatin1Char(' '));
    return text;
}

QString deviceInfoTitle()
{
    return printableText(deviceInfoText().remove(QChar(0)));
}
