#include "upgrade/upgradeaction.h"

#include "device/devicelayer.h"
#include "device/devicetexts.h"
#include "device/language.h"
#include "upgrade/firmwareimage.h"
#include "upgrade/updatedlg.h"
#include "widgets/messages.h"

bool offerFirmwareUpgrade(unsigned firmwareWord, unsigned deviceIndex, QWidget *parent)
{
    const FirmwareImage best = bestFirmwareImage();
    if (firmwareWord >= best.version)
        return false;
    UpdateDlg dialog(versionText(firmwareWord), firmwareFolder() + QLatin1Char('/') + best.fileName, parent);
    dialog.setDeviceIndex(deviceIndex);
    dialog.exec();
    return true;
}

void upgradeFirmware(unsigned deviceIndex, QWidget *parent)
{
    if (!isDeviceOpen()) {
        showWarning(parent, warningTitle(), deviceNotOpenText());
        return;
    }
    const unsigned firmware = refreshDeviceInfo(); // 0 without an answer: older than any image
    if (!offerFirmwareUpgrade(firmware, deviceIndex, parent))
        showInformation(parent, text3("提示", "提示", "tip"),
                        text3("固件版本(%1)已是最新，无需升级。", "固件版本(%1)已是最新，無需升級。",
                              "The firmware version (%1) is up to date.")
                            .arg(versionText(firmware)));
}
