// A spin box for identifiers: hexadecimal in upper case, without a prefix.
#pragma once

#include <QSpinBox>

class HexSpinBox : public QSpinBox
{
    Q_OBJECT

public:
    explicit HexSpinBox(QWidget *parent = nullptr) : QSpinBox(parent) { setDisplayIntegerBase(16); }

protected:
    QString textFromValue(int value) const override { return QString::number(value, 16).toUpper(); }
};
