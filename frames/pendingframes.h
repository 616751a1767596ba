// The hand-over from the worker threads to the GUI thread: one list for both channels and both directions.
#pragma once

#include "frames/modelitem.h"

// Adds a finished batch at the end, under one lock; an empty batch changes nothing. Any thread.
void appendPendingFrames(const QList<ModelItem> &batch);
// Everything that has come since the last call, leaving nothing. Any thread; the GUI thread calls it.
QList<ModelItem> takePendingFrames();
