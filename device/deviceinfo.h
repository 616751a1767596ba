// The device information action of the main window.
#pragma once

class QWidget;

// Reads the adapter's record and shows it, or tells why there is nothing to show. Returns when the user is done.
void showDeviceInfo(QWidget *parent);
