#include "analysis/plainglyphs.h"

#include <QFontMetricsF>
#include <QGlyphRun>
#include <QPainter>

#include <algorithm>
#include <iterator>

namespace
{
constexpr qreal kWidthTolerance = 0.25;       // pixels
constexpr char kNumbers[] = "0123456789.+-e"; // no other letters: they are kerned
constexpr char kNumberSample[] = "0123456789-0.0e+0e-0";
constexpr char kPrintable[] = " !\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_`"
                              "abcdefghijklmnopqrstuvwxyz{|}~";
} // namespace

PlainGlyphs PlainGlyphs::numbers()
{
    return {kNumbers, kNumberSample};
}

PlainGlyphs PlainGlyphs::printable()
{
    return {kPrintable, kPrintable};
}

void PlainGlyphs::setFont(const QFont &font)
{
    if (raw_.isValid() && font == font_)
        return;
    font_ = font;
    raw_ = QRawFont::fromFont(font);
    std::fill(std::begin(glyphs_), std::end(glyphs_), 0);
    const QString characters = QLatin1String(characters_);
    const QVector<quint32> glyphs = raw_.glyphIndexesForString(characters);
    const QVector<QPointF> advances = raw_.advancesForGlyphIndexes(glyphs);
    if (glyphs.size() != characters.size() || advances.size() != characters.size())
        return;
    for (int i = 0; i < characters.size(); ++i) {
        glyphs_[characters[i].unicode() - kFirst] = glyphs[i];
        advances_[characters[i].unicode() - kFirst] = advances[i].x();
    }
    const QString sample = QLatin1String(sample_);
    if (!shape(sample) || qAbs(width_ - QFontMetricsF(font).horizontalAdvance(sample)) > kWidthTolerance)
        std::fill(std::begin(glyphs_), std::end(glyphs_), 0); // stretched, spaced, kerned
}

bool PlainGlyphs::shape(const QString &text)
{
    text_.clear();
    places_.clear();
    width_ = 0;
    for (const QChar character : text) {
        const int place = character.unicode() - kFirst;
        if (place < 0 || place >= kCount || glyphs_[place] == 0)
            return false;
        text_.append(glyphs_[place]);
        places_.append(QPointF(width_, 0));
        width_ += advances_[place];
    }
    return true;
}

void PlainGlyphs::draw(QPainter *painter, QPointF baseline) const
{
    QGlyphRun run;
    run.setRawFont(raw_);
    run.setRawData(text_.constData(), places_.constData(), text_.size());
    painter->drawGlyphRun(baseline, run);
}
