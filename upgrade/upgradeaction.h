// When the firmware upgrade is offered: after opening an adapter, and from the menu.
#pragma once

class QWidget;

// Runs the upgrade dialog when an image beside the program is newer than the adapter's firmware word; false, and no
// dialog, when none is. deviceIndex: of the open dialog's list. When it returns, the program may be about to end.
bool offerFirmwareUpgrade(unsigned firmwareWord, unsigned deviceIndex, QWidget *parent);

// The menu's action: the same offer for the open adapter, or a message why there is nothing to offer.
void upgradeFirmware(unsigned deviceIndex, QWidget *parent);
