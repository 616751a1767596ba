// Draws texts of printable ASCII characters, as most cells of the frame table hold, without shaping them anew each
// time.
#pragma once

#include <QFont>
#include <QRawFont>
#include <QVector>

#include <array>

class QPainter;

class AsciiText
{
public:
    // Draws with this font from now on; costs nothing when it is the font used so far.
    void setFont(const QFont &font);
    // Takes a text; false when it holds other characters: it is to be drawn in the usual way.
    bool take(const QString &text);
    // Width of the text taken, in logical pixels.
    qreal width() const { return width_; }
    // Draws the text taken with the painter's pen, from the left end of its base line.
    void draw(QPainter *painter, const QPointF &baseLine);

private:
    static constexpr int kFirst = ' ';
    static constexpr int kLast = '~';

    QFont font_;
    QRawFont rawFont_;
    std::array<quint32, kLast - kFirst + 1> glyphOf_{};
    std::array<qreal, kLast - kFirst + 1> advanceOf_{};
    QVector<quint32> glyphs_;
    QVector<QPointF> positions_;
    qreal width_ = 0;
};
