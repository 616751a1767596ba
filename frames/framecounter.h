// The number of the last frame shown, one for the whole program: every frame gets the next one.
#pragma once

#include <QtGlobal>

// Reserves count consecutive numbers and answers the first of them; the first frame after a reset is 1. Any thread.
quint64 takeFrameNumbers(quint64 count);
// The next frame is number 1 again. Any thread.
void resetFrameCounter();
