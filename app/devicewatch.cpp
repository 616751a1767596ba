#include "app/devicewatch.h"

#include "device/devicelayer.h"
#include "device/dialogs/deviceinfo.h"

DeviceWatch::Change DeviceWatch::look()
{
    QString text;
    if (isDeviceUsable()) {
        // An adapter that did not answer when it was opened may do so by now.
        if (deviceInfoText().isEmpty())
            refreshDeviceInfo();
        text = deviceInfoTitle();
    }
    if (text == shown_)
        return Change::None;
    shown_ = text;
    return text.isEmpty() ? Change::Gone : Change::Shown;
}
