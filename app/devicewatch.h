// Watches once a second whether the adapter is there, and keeps the window's title text for it.
#pragma once

#include <QString>

class DeviceWatch
{
public:
    enum class Change { None, Shown, Gone };

    // Looks at the device layer's info text; Shown: titleText() is new, Gone: the device that was shown has left.
    Change look();
    // Forgets the device, as after closing it.
    void forget() { shown_.clear(); }
    // The info text in the title, fit for a title; empty while no device is shown.
    const QString &titleText() const { return shown_; }

private:
    QString shown_;
};
