// What users are told about the adapter, in the current language.
#pragma once

#include <QString>

enum class ChannelStep;
struct DriverNotice;

// The warning about a failed step of setting a channel up; empty for None.
QString stepFailureText(ChannelStep step);
// "The device is not opened!"
QString deviceNotOpenText();
// "Device information acquisition failed!"
QString deviceInfoFailedText();
// What the driver has to tell, in one line.
QString noticeText(const DriverNotice &notice);
