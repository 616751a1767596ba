// A spin box for how often something is repeated: a count from 1, or its minimum -1 for "until stopped". There is no 0.
#pragma once

#include <QSpinBox>

class RepeatSpinBox : public QSpinBox
{
    Q_OBJECT

public:
    using QSpinBox::QSpinBox;

    // The count as it was stored; a text that is no such count reads as 1.
    void setRepeats(const QString &stored);

    void stepBy(int steps) override;

protected:
    QValidator::State validate(QString &text, int &position) const override;
};
