// The program's message boxes: modal, texts already in the current language. They return once answered;
// timers go on meanwhile, so look at the state again afterwards.
#pragma once

#include <QString>

class QWidget;

void showWarning(QWidget *parent, const QString &title, const QString &text);
void showCritical(QWidget *parent, const QString &title, const QString &text);
void showInformation(QWidget *parent, const QString &title, const QString &text);
// Yes or no, which is the default and what closing the box means.
bool isConfirmed(QWidget *parent, const QString &title, const QString &question);
