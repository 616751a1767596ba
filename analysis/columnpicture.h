// Lines that fill their pixel columns, of many curves, painted into one picture: column after column in memory, one
// byte a pixel, so that it costs as much as filling memory does.
#pragma once

#include <QImage>
#include <QVector>

#include <cstdint>
#include <vector>

class QPainter;

class ColumnPicture
{
public:
    // Empty, of this size in pixels. At most 255 lines are added to it.
    void begin(QSize size);
    // x: pixels from the left, never falling; y: pixels from the top; a y that is not a number interrupts the line.
    // Later lines lie over earlier ones.
    void add(const std::vector<QPointF> &line, QRgb colour);
    bool isEmpty() const { return colours_.size() < 2; }
    void draw(QPainter *painter, QPoint place);

private:
    void fill(int column, double from, double to);

    QSize size_;
    std::vector<std::uint8_t> pixels_; // numbers of colours, 0: none
    QVector<QRgb> colours_;            // premultiplied
    QImage image_;
};
