// What a window shows, and whether all of it can be read.
#pragma once

#include <QStringList>
#include <QVector>
#include <QWidget>

struct ShownText {
    QString where; // the widget's class and name, and which of its texts
    QString text;
};

// Every text of a window: title, labels, buttons, items, column titles, menus, tool tips.
QVector<ShownText> shownTexts(const QWidget &window);

// Texts that have less room than they need, and widgets that lie on or outside of others, one line each.
QStringList cutTexts(const QWidget &window);
QStringList overlaps(const QWidget &window);
// Keys (Alt and a letter) that more than one button or field of a window has, one line each.
QStringList sharedKeys(const QWidget &window);
