// What the empty frame table says instead of frames.
#pragma once

#include <QString>

enum class TableHint { None, DeviceClosed, ChannelsClosed, Paused, Filtered, Waiting };

// What to do first, or why nothing shows: from the device's state and the two choices of the user that keep frames out
// of the table.
TableHint tableHint(bool paused, bool filtered);
// In the current language.
QString tableHintText(TableHint hint);
