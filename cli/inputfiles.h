// Many recordings, worked on side by side.
#pragma once

#include "traces/tracereader.h"

#include <QStringList>

#include <functional>

class Arguments;

// Options that say how inputs are read: --input-format, and --jobs where many are worked on side by side.
void addInputOptions(Arguments &arguments, bool sideBySide);
// The format of the inputs, when it is given.
std::optional<TraceFormat> inputFormat(Arguments &arguments);
// The value of an option that names a format, when it is given.
std::optional<TraceFormat> formatOption(Arguments &arguments, const char *name);
// How many to work on at once: what --jobs says, else one for each core.
int jobCount(Arguments &arguments);
// The names of all formats, for help texts.
QByteArray formatNames();

// A usage error when what is written to `output` would take the place of a file that is read.
void refuseInput(Arguments &arguments, const QString &output, const QStringList &read);

// Bytes of all inputs; 0 when one of them has no size.
std::uint64_t totalBytes(const QStringList &paths);

// Runs job(0) to job(count - 1), at most so many at once, in threads; begins none after an interrupt. Returns when all
// have ended.
void runSideBySide(int count, int atOnce, const std::function<void(int)> &job);
