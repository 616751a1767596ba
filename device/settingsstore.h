// The program's settings: one ordered map of key and value texts, kept in one line of /config/setdb.txt.
// Every function may be called from any thread.
#pragma once

#include <QString>
#include <QStringList>

namespace settings
{

// Remembers the path and fills the map from the file. A missing file, or a damaged one, with a part that is not exactly
// key,value, gives an empty map.
void load(const QString &path);
// The stored value. An absent key gets the default, in memory only. "Language" is special: when absent it is read
// from the language file and not remembered.
QString value(const QString &key, const QString &defaultValue);
// value() read as a decimal number; text that is no number reads as 0.
unsigned number(const QString &key, const QString &defaultValue);
// Stores the value; writeNow also writes the file, even when nothing changed.
void setValue(const QString &key, const QString &value, bool writeNow);
// Writes the whole map, into a folder made when it is missing. A damaged file is first copied beside itself, and not
// overwritten when that fails. A failure leaves the old file as it was; takeNotices() tells of it.
void save();
// Lines for the operation log, in the current language, of what has happened to the file since the last call. A failure
// to save is told once, until a write succeeds.
QStringList takeNotices();

// Key of a channel parameter: "ch" + (channel index + 1) + "param" + name.
QString channelKey(unsigned channel, const char *name);

} // namespace settings
