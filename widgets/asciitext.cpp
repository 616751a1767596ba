#include "widgets/asciitext.h"

#include <QGlyphRun>
#include <QPainter>

void AsciiText::setFont(const QFont &font)
{
    if (rawFont_.isValid() && font == font_)
        return;
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
        if (glyphOf_[entry] == 0) // the font lacks it
            return false;
        glyphs_[i] = glyphOf_[entry];
        positions_[i] = QPointF(width_, 0);
        width_ += advanceOf_[entry];
    }
    return true;
}

void AsciiText::draw(QPainter *painter, const QPointF &baseLine)
{
    QGlyphRun run;
    run.setRawFont(rawFont_);
    run.setRawData(glyphs_.constData(), positions_.constData(), glyphs_.size());
    painter->drawGlyphRun(baseLine, run);
}
