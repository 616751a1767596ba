// Names of the files that one recording makes in a row.
#pragma once

#include <QString>

#include <map>

// "folder/drive.blf" and 3: "folder/drive_0003.blf".
QString numberedName(const QString &path, int number);
// The files of this row in the folder, by number.
std::map<int, QString> numberedFiles(const QString &path);
