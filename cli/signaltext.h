// The values of signals as texts.
#pragma once

#include "signals/decoder.h"

#include <string>

// A valid physical value: exact, to the last of 64 bits, where factor and offset are whole numbers, else the shortest
// text that reads as the same number. What is no finite number is "nan", "inf" or "-inf".
void appendSignalValue(std::string *out, const SignalDefinition &signal, const SignalValue &value);
// The same as JSON has it: what is no finite number is null.
void appendJsonSignalValue(std::string *out, const SignalDefinition &signal, const SignalValue &value);
