// Characters of a font that stand beside each other as they are, neither kerned nor joined, shaped once instead of anew
// in every text: a table whose cells change several times a second spends most of its time on that.
#pragma once

#include <QFont>
#include <QPointF>
#include <QRawFont>
#include <QVector>

class QPainter;

class PlainGlyphs
{
public:
    // What numbers are written with, for any font.
    static PlainGlyphs numbers();
    // What can be printed of ASCII, for fonts of a fixed width.
    static PlainGlyphs printable();

    void setFont(const QFont &font);
    // false: the text has others, or the font treats them specially. Else width() and draw() are its.
    bool shape(const QString &text);
    qreal width() const { return width_; } // pixels
    void draw(QPainter *painter, QPointF baseline) const;

private:
    // sample: has each of the characters, as they stand beside each other in texts.
    PlainGlyphs(const char *characters, const char *sample) : characters_(characters), sample_(sample) {}

    static constexpr int kFirst = ' ';
    static constexpr int kCount = '~' - kFirst + 1;

    const char *characters_;
    const char *sample_;
    QFont font_;
    QRawFont raw_;
    quint32 glyphs_[kCount] = {}; // 0: not one of them
    qreal advances_[kCount] = {};
    QVector<quint32> text_;
    QVector<QPointF> places_;
    qreal width_ = 0;
};
