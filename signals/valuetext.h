// Values of signals as windows show them: never in the style of a locale.
#pragma once

#include "signals/decoder.h"

// Whole numbers with all their digits while a double has them, others rounded to what matters of them.
QString valueText(double value);
// The physical value; exactly where factor and offset are whole numbers, up to 64 bits.
QString valueText(const SignalDefinition &signal, const SignalValue &value);
