// Draws texts of printable ASCII characters, as most cells of tables hold, without shaping them anew each time, which
// is what a table that changes several times a second spends most of its time on.
#pragma once

#include <QFont>
#include <QRawFont>
#include <QVector>

#include <array>

class QPainter;

class AsciiText
{
public:
    enum class Of {
        Everything, // for fixed-width fonts, and where all texts of a table are drawn like this: letters are not kerned
        Numbers,    // looks as if it was drawn in the usual way, whatever the font
    };

    explicit AsciiText(Of of = Of::Everything) : of_(of) {}

    // Draws with this font from now on; costs nothing when it is the font used so far.
    void setFont(const QFont &font);
    // Takes a text; false when it holds other characters: it is to be drawn in the usual way.
    bool take(const QString &text);
    // Width of the text taken, in logical pixels.
    qreal width() const { return width_; }
    // Draws the text taken with the painter's pen, from the left end of its base line.
    void draw(QPainter *painter, const QPointF &baseLine) const;

private:
    static constexpr int kFirst = ' ';
    static constexpr int kLast = '~';

    void keepNumbers();

    Of of_;
    bool fontKnown_ = false;
    QFont font_;
    QRawFont rawFont_;
    std::array<quint32, kLast - kFirst + 1> glyphOf_{};
    std::array<qreal, kLast - kFirst + 1> advanceOf_{};
    QVector<quint32> glyphs_;
    QVector<QPointF> positions_;
    qreal width_ = 0;
};
