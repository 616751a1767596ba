// What the empty frame table says instead of frames.
#pragma once

#include <QString>

// What to do first, or why nothing shows, in the current language; from the device's state and the two choices of the
// user that keep frames out of the table.
QString tableHint(bool paused, bool filtered);
