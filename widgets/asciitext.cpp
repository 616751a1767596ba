#include "widgets/asciitext.h"

#include <QFontMetricsF>
#include <QGlyphRun>
#include <QPainter>

namespace
{
constexpr char kNumbers[] = "0123456789.+-e"; // no other letters: they are kerned
constexpr char kNumberSample[] = "0123456789-0.0e+0e-0";
constexpr qreal kWidthTolerance = 0.25; // pixels
} // namespace

void AsciiText::setFont(const QFont &font)
{
    if (fontKnown_ && font == font_)
        return;
    fontKnown_ = true;
    font_ = font;
    rawFont_ = QRawFont::fromFont(font);
    QString characters;
    for (int c = kFirst; c <= kLast; ++c)
        characters += QLatin1Char(static_cast<char>(c));
    const QVector<quint32> glyphs = rawFont_.glyphIndexesForString(characters);
    const QVector<QPointF> advances = rawFont_.advancesForGlyphIndexes(glyphs);
    if (glyphs.size() != characters.size() || advances.size() != characters.size()) {
        rawFont_ = QRawFont();
        return;
    }
    for (int i = 0; i < characters.size(); ++i) {
        glyphOf_[static_cast<std::size_t>(i)] = glyphs.at(i);
        advanceOf_[static_cast<std::size_t>(i)] = advances.at(i).x();
    }
    if (of_ == Of::Numbers)
        keepNumbers();
}

void AsciiText::keepNumbers()
{
    const QLatin1String numbers(kNumbers);
    for (int c = kFirst; c <= kLast; ++c)
        if (!numbers.contains(QLatin1Char(static_cast<char>(c))))
            glyphOf_[static_cast<std::size_t>(c - kFirst)] = 0;
    const QString sample = QLatin1String(kNumberSample);
    if (!take(sample) || qAbs(width_ - QFontMetricsF(font_).horizontalAdvance(sample)) > kWidthTolerance)
        rawFont_ = QRawFont(); // stretched, spaced, kerned
}

bool AsciiText::take(const QString &text)
{
    if (!rawFont_.isValid())
        return false;
    glyphs_.resize(text.size());
    positions_.resize(text.size());
    width_ = 0;
    for (int i = 0; i < text.size(); ++i) {
        const int character = text.at(i).unicode();
        if (character < kFirst || character > kLast)
            return false;
        const auto entry = static_cast<std::size_t>(character - kFirst);
        if (glyphOf_[entry] == 0) // the font lacks it, or it is no number's
            return false;
        glyphs_[i] = glyphOf_[entry];
        positions_[i] = QPointF(width_, 0);
        width_ += advanceOf_[entry];
    }
    return true;
}

void AsciiText::draw(QPainter *painter, const QPointF &baseLine) const
{
    QGlyphRun run;
    run.setRawFont(rawFont_);
    run.setRawData(glyphs_.constData(), positions_.constData(), glyphs_.size());
    painter->drawGlyphRun(baseLine, run);
}
