// Names of the files that one recording makes in a row.
#pragma once

#include <QString>

// "folder/drive.blf" and 3: "folder/drive_0003.blf".
QString numberedName(const QString &path, int number);
// The highest number that a file of this row has in the folder; 0 when there is none.
int highestNumber(const QString &path);
