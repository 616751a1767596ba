// The hand-over from the worker threads to the GUI thread: one list for both channels and both directions.
#pragma once

#include "frames/modelitem.h"

// Adds a finished batch at the end, under one lock; an empty batch changes nothing. Move the batch in: its rows are
// then handed over instead of copied. Any thread.
void appendPendingFrames(QList<ModelItem> batch);
// Everything that has come since the last call, leaving nothing. Any thread; the GUI thread calls it.
QList<ModelItem> takePendingFrames();
