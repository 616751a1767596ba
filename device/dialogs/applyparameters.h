// Parameter setting for channels that already run.
#pragma once

#include <QString>

#include <functional>

class QWidget;

// Lets the user edit the parameters and writes them at once to channel 0 and then channel 1; the first channel that is
// not open, and the first failure (after its warning), end the whole action. log is handed a line per channel set.
void applyParameters(QWidget *parent, const std::function<void(const QString &)> &log);
