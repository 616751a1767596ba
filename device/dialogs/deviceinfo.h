// The device information action of the main window, and the adapter's texts made fit for a screen.
#pragma once

#include <QString>

class QWidget;

// Reads the adapter's record and shows it, or tells why there is nothing to show. Returns when the user is done.
void showDeviceInfo(QWidget *parent);

// The text with a blank in place of everything that has no shape: zero bytes, control characters.
QString printableText(QString text);
// The open adapter's info text as a title can show it; empty when the adapter does not answer. Asks the adapter.
QString deviceInfoTitle();
