// Settings put back into the widgets they were stored from.
#pragma once

#include <QString>

class QComboBox;

// The stored text as a number; text that is no number reads as 0.
int storedNumber(const QString &key, const QString &defaultValue);
// Selects the stored index; an index that the list does not have selects the default one.
void restoreIndex(QComboBox *combo, const QString &key, const QString &defaultIndex);
// Whether the settings file can hold the text: it knows no quoting, and it is one line.
bool isStorable(const QString &text);
