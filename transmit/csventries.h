// Entries from rows of a CSV frame file: what has been copied from the frame list or from a recording.
#pragma once

#include "transmit/transmitentry.h"

struct CsvEntries {
    TransmitList entries;
    int skipped = 0; // rows that are no frame
};
// One entry for every channel and identifier, in the order in which they first appear, with the last row's data.
// Several rows of one give a periodic entry with their mean distance, a single row one that is sent on request.
CsvEntries entriesFromCsv(const QString &rows);
