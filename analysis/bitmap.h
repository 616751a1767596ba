// Which bits of an identifier's data ever moved: a field for each bit, a line for each byte.
#pragma once

#include "statistics/identifierstatistics.h"

#include <QWidget>

class BitMap : public QWidget
{
    Q_OBJECT

public:
    explicit BitMap(QWidget *parent = nullptr);

    // Null: nothing is shown.
    void show(const IdentifierStatistics *entry);
    // Byte and bit (7 the most significant) as texts, "0.7 0.6 3.0", for those who read them.
    QString movedText() const;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;
    bool event(QEvent *event) override; // tooltips

private:
    QRect field(int byte, int bit) const;
    int fieldSize() const;

    std::array<std::uint8_t, kRawDataBytes> moved_{};
    std::array<std::uint8_t, kRawDataBytes> data_{};
    int length_ = 0;
};
