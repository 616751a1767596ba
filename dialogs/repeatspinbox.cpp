#include "dialogs/repeatspinbox.h"

void RepeatSpinBox::setRepeats(const QString &stored)
{
    bool isNumber = false;
    const int count = stored.toInt(&isNumber);
    setValue(isNumber && count != 0 && count >= minimum() && count <= maximum() ? count : 1);
}

void RepeatSpinBox::stepBy(int steps)
{
    QSpinBox::stepBy(steps);
    if (value() == 0)
        setValue(steps > 0 ? 1 : minimum());
}

QValidator::State RepeatSpinBox::validate(QString &text, int &position) const
{
    const QValidator::State state = QSpinBox::validate(text, position);
    return state == QValidator::Acceptable && text.toInt() == 0 ? QValidator::Intermediate : state;
}
