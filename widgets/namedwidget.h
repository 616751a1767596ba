// Widgets that code finds by name.
#pragma once

#include <QWidget>

// The widget itself, so that it can be named where it is made.
template <typename Widget> Widget *named(Widget *widget, const char *name)
{
    widget->setObjectName(QLatin1String(name));
    return widget;
}
