// The results of "statistics" as text and as JSON.
#pragma once

#include "statistics/busstatistics.h"
#include "statistics/supervisor.h"

#include <string>

class Databases;

struct StatisticsResult {
    QString input;
    BusStatistics statistics;
    std::uint64_t frames = 0;
    bool checked = false;
    std::vector<Violation> violations;
};

// A line for each channel, then a table of the identifiers.
void appendStatistics(std::string *out, const StatisticsResult &result, const Databases &databases);
// A line for each violation, the input's name before it.
void appendViolations(std::string *out, const StatisticsResult &result, const Databases &databases);
// Everything as one object in one line; its keys: see the manual page.
void appendStatisticsJson(std::string *out, const StatisticsResult &result, const Databases &databases);
