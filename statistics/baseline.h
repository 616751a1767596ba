// What a bus does when all is well: the messages it carries and how far apart they come. Learned from traffic or taken
// from signal databases, kept in a JSON file.
#pragma once

#include "statistics/identifierstatistics.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

struct BaselineMessage {
    IdentifierKey key;
    // Distances between two frames, nanoseconds. A mean of 0: not periodic, only its presence is expected.
    double mean = 0;
    std::int64_t minimum = 0;
    std::int64_t maximum = 0;
    bool optional = false; // may stay away; known when it comes
    bool group = false;    // J1939: stands for every identifier of its parameter group, each with a period of its own
};

struct Baseline {
    std::vector<BaselineMessage> messages;
    bool receivedOnly = false; // says nothing about sent frames
};

// Every data frame seen; periodic is what was seen five times and whose distances deviate by less than half of their
// mean. Remote and error frames are events of the moment and left out.
Baseline learnBaseline(const IdentifierTable &identifiers);

// Readable JSON with a version; identifiers as hexadecimal texts, times in milliseconds.
QByteArray toJson(const Baseline &baseline);
// Nothing, with the place and reason in *error (in the current language), when the text is no baseline.
std::optional<Baseline> baselineFromJson(const QByteArray &json, QString *error);
