#include "app/devicewatch.h"

#include "device/devicelayer.h"

DeviceWatch::Change DeviceWatch::look()
{
    const QString text = deviceInfoText().remove(QChar(0));
    if (text == shown_)
        return Change::None;
    shown_ = text;
    return text.isEmpty() ? Change::Gone : Change::Shown;
}
