#include "widgets/storedfields.h"

#include "device/settingsstore.h"

#include <QComboBox>

#include <algorithm>

int storedNumber(const QString &key, const QString &defaultValue)
{
    return settings::value(key, defaultValue).toInt();
}

void restoreIndex(QComboBox *combo, const QString &key, const QString &defaultIndex)
{
    const int index = storedNumber(key, defaultIndex);
    combo->setCurrentIndex(index >= 0 && index < combo->count() ? index : defaultIndex.toInt());
}

bool isStorable(const QString &text)
{
    static const QString kSeparators = QStringLiteral(",;\r\n");
    return std::none_of(text.cbegin(), text.cend(), [](QChar letter) { return kSeparators.contains(letter); });
}
