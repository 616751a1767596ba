#include "app/buttonkeys.h"

#include <QAbstractButton>
#include <QShortcut>

namespace
{
struct ButtonKey {
    const char *button;
    const char *key;
};

constexpr ButtonKey kButtonKeys[] = {
    {"pauseBox", "F5"},         {"checkBox", "Ctrl+S"},
    {"pushButton_2", "F6"},     {"cleanListBtn", "F7"},
    {"pushButton", "F8"},       {"ch1SendBtn", "F9"},
    {"ch2SendBtn", "F11"},      {"ch1StopSendBtn", "Shift+F9"},
    {"pushButton_3", "Ctrl+1"}, {"ch2StopSendBtn", "Shift+F11"},
    {"pushButton_4", "Ctrl+2"},
};
} // namespace

QString buttonKeyText(const QWidget &button)
{
    for (const ButtonKey &entry : kButtonKeys)
        if (button.objectName() == QLatin1String(entry.button))
            return QKeySequence(QLatin1String(entry.key)).toString(QKeySequence::NativeText);
    return {};
}

void addButtonKeys(QWidget *window)
{
    for (const ButtonKey &entry : kButtonKeys) {
        auto *button = window->findChild<QAbstractButton *>(QLatin1String(entry.button));
        if (!button) {
            qWarning("no button %s", entry.button);
            continue;
        }
        if (button->toolTip().isEmpty())
            button->setToolTip(buttonKeyText(*button));
        auto *shortcut = new QShortcut(QKeySequence(QLatin1String(entry.key)), window);
        shortcut->setAutoRepeat(false);
        QObject::connect(shortcut, &QShortcut::activated, button, &QAbstractButton::click);
    }
}
