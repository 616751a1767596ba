#include "app/devicewatch.h"

#include "device/devicelayer.h"
#include "device/dialogs/deviceinfo.h"

DeviceWatch::Change DeviceWatch::look()
{
    // An adapter that did not answer when it was opened may do so by now.
    if (isDeviceOpen() && deviceInfoText().isEmpty())
        refreshDeviceInfo();
    const QString text = deviceInfoTitle();
    if (text == shown_)
        return Change::None;
    shown_ = text;
    return text.isEmpty() ? Change::Gone : Change::Shown;
}
