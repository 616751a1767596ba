// Frames to measure with: what a refresh round of two saturated channels brings.
#pragma once

#include "frames/modelitem.h"

#include "device/driver/wirerecords.h"

#include <benchmark/benchmark.h>

#include <vector>

constexpr int kRound = 5600; // frames of a refresh round

// Records with different identifiers and data; classic 8 bytes or FD 64 bytes.
template <typename Record> std::vector<Record> rawFrames(int count);
// Finished items, numbered and stamped as the window does; distinct: number of identifiers.
QList<ModelItem> finishedItems(int count, int distinct, bool fd);

// Tells the time of one frame beside the time of one round.
void countFrames(benchmark::State &state, int perRound);
