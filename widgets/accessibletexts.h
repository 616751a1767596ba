// What a screen reader says of a widget that has no text of its own. Both do nothing with a Qt built without
// accessibility.
#pragma once

#include <QWidget>

inline void tellName([[maybe_unused]] QWidget *widget, [[maybe_unused]] const QString &name)
{
#ifndef QT_NO_ACCESSIBILITY
    widget->setAccessibleName(name);
#endif
}

inline void tellDescription([[maybe_unused]] QWidget *widget, [[maybe_unused]] const QString &description)
{
#ifndef QT_NO_ACCESSIBILITY
    widget->setAccessibleDescription(description);
#endif
}
