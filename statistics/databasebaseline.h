// A baseline from signal databases: their messages and cycle times.
#pragma once

#include "signals/databaseset.h"
#include "statistics/baseline.h"

// What each of the channels (from 1) is to receive by the databases that are for it; on channels above 2 those for both
// count. A message without a cycle time is known but not expected.
Baseline databaseBaseline(const std::vector<DatabaseSet::Entry> &databases, const std::vector<unsigned> &channels);
