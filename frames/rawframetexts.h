// The row texts of a raw frame, as the frame list shows what an adapter delivers.
#pragma once

#include "frames/modelitem.h"
#include "traces/rawframe.h"

// Without index, system time and time stamp. Any thread; in the language of the moment.
ModelItem textsOf(const RawFrame &frame);
