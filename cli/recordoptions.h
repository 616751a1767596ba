// What a recording of live frames is to be like.
#pragma once

#include "traces/recorder.h"

class Arguments;

// The options of "record"; simple: without rows of files and triggers.
void addRecordOptions(Arguments &arguments);
// The settings for a file of this name; the format by its name or by the option.
RecorderSettings readRecordSettings(Arguments &arguments, const QString &path, const char *formatOptionName);
// Those of rows of files and triggers.
void readRecordRow(Arguments &arguments, RecorderSettings *settings);

// "error", "lost", or words of "id:100..1FF", "data:02??7F" (from the first byte; "?": any digit), "channel:1".
std::optional<RecorderTrigger> triggerFromText(const QString &text);
