// Where the program finds the folders beside its executable: config, language, help and firmware.
#pragma once

#include <QString>

// The folder of the executable, without a trailing slash.
QString applicationDir();
// Puts the folders elsewhere; before any window exists, GUI thread only. An empty path undoes it.
void setApplicationDir(const QString &path);
