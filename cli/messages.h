// What the user is told, on the standard error: one line each, in English.
#pragma once

#include <QString>

// Any thread.
void tell(const QString &message);

// The line that progress() shows below the messages, on a terminal only; an empty one takes it away. Any thread.
void showProgressLine(const QString &line);
bool progressIsShown();
// No progress line from now on.
void hideProgress();
