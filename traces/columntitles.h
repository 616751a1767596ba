// The titles of the frame list's eleven columns.
#pragma once

#include <QStringList>

// In the current language, in the order of FrameColumn.
QStringList columnTitles();
// In the given language.
QStringList columnTitles(unsigned languageCode);
