// The hand-over from the worker threads to the GUI thread: one list for both channels and both directions.
#pragma once

#include "frames/modelitem.h"

#include <functional>

class StopFlag;

// The ceiling of the list, in frames: about half a gigabyte of texts, and several seconds of two full channels. A
// thread that finds the list there takes no frame and sends none until the window has taken the list; of each thread
// one batch may be on its way above it.
constexpr int kPendingCeiling = 500000;
// Whether a window takes the list; true until a program without one says otherwise, before its first worker starts.
// Without, workers make no texts and leave the list empty. Any thread.
void setPendingFramesTaken(bool taken);
bool pendingFramesTaken();
// Whether the list is below the ceiling. Any thread; takes no lock.
bool pendingFramesHaveRoom();
// Waits for room; false as soon as the flag is set, and soon after goOn() has become false. For senders.
bool waitForPendingRoom(StopFlag &stop, const std::function<bool()> &goOn);

// Adds a finished batch at the end, under one lock; an empty batch changes nothing. Move the batch in: its rows are
// then handed over instead of copied. Any thread.
void appendPendingFrames(QList<ModelItem> batch);
// Everything that has come since the last call, leaving nothing. Any thread; the GUI thread calls it.
QList<ModelItem> takePendingFrames();
