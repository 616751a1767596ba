// Keys for the buttons of the main window. Shortcuts of the buttons themselves would not last: a button forgets its own
// whenever its text changes with the language. Tool tips tell the keys.
#pragma once

#include <QString>

class QWidget;

// Once, when all buttons are there. A button's key works wherever the focus is in the window, as long as it is enabled.
void addButtonKeys(QWidget *window);
// The key of a button of the main window, as a tool tip shows it; empty when it has none.
QString buttonKeyText(const QWidget &button);
