#include "analysis/signaltree.h"

#include <QGlyphRun>
#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <iterator>

namespace
{
constexpr qreal kWidthTolerance = 0.25; // pixels
}

SignalTree::SignalTree(QWidget *parent) : QTreeView(parent)
{
    setItemDelegate(new SignalCellDelegate(this));
}

// In one pass, not in one for each rectangle; the painter is clipped, and what lies between them is left out.
void SignalTree::paintEvent(QPaintEvent *event)
{
    dirty_ = event->region();
    QPaintEvent whole(dirty_.boundingRect());
    QTreeView::paintEvent(&whole);
    dirty_ = {};
}

void SignalTree::drawRow(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    if (isDirty(option.rect))
        QTreeView::drawRow(painter, option, index);
}

void NumberGlyphs::setFont(const QFont &font)
{
    if (raw_.isValid() && font == font_)
        return;
    font_ = font;
    raw_ = QRawFont::fromFont(font);
    std::fill(std::begin(glyphs_), std::end(glyphs_), 0);
    const QString characters = QLatin1String(kCharacters);
    const QVector<quint32> glyphs = raw_.glyphIndexesForString(characters);
    const QVector<QPointF> advances = raw_.advancesForGlyphIndexes(glyphs);
    if (glyphs.size() != characters.size() || advances.size() != characters.size())
        return;
    for (int i = 0; i < characters.size(); ++i) {
        glyphs_[characters[i].unicode() - kFirst] = glyphs[i];
        advances_[characters[i].unicode() - kFirst] = advances[i].x();
    }
    const QString sample = QLatin1String(kSample);
    if (!shape(sample) || qAbs(width_ - QFontMetricsF(font).horizontalAdvance(sample)) > kWidthTolerance)
        std::fill(std::begin(glyphs_), std::end(glyphs_), 0); // stretched, spaced, kerned
}

bool NumberGlyphs::shape(const QString &text)
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

void NumberGlyphs::draw(QPainter *painter, QPointF baseline) const
{
    QGlyphRun run;
    run.setRawFont(raw_);
    run.setRawData(text_.constData(), places_.constData(), text_.size());
    painter->drawGlyphRun(baseline, run);
}

void SignalCellDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    if (!tree_->isDirty(option.rect))
        return;
    constexpr QStyle::State kMarked = QStyle::State_Selected | QStyle::State_HasFocus | QStyle::State_MouseOver;
    const QString text = index.data(Qt::DisplayRole).toString();
    const int margin = tree_->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, &option, tree_) + 1;
    const QRect room = option.rect.adjusted(margin, 0, -margin, 0);
    glyphs_.setFont(option.font);
    const bool number = glyphs_.shape(text);
    const qreal width = number ? glyphs_.width() : QFontMetricsF(option.font).horizontalAdvance(text);
    if ((option.state & kMarked) || width > room.width() || text.contains('\n') ||
        option.direction != Qt::LeftToRight) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    if (text.isEmpty())
        return;
    const QVariant brush = index.data(Qt::ForegroundRole);
    const auto group = option.state & QStyle::State_Active ? QPalette::Active : QPalette::Inactive;
    const QColor colour = brush.isValid() ? brush.value<QBrush>().color() : option.palette.color(group, QPalette::Text);
    if (painter->pen().color() != colour)
        painter->setPen(colour);
    const bool right = index.data(Qt::TextAlignmentRole).toInt() & Qt::AlignRight;
    const int top =
        room.top() + (room.height() - option.fontMetrics.height()) / 2; // a whole pixel, as the style has it
    const QPointF baseline(room.left() + (right ? room.width() - width : 0), top + option.fontMetrics.ascent());
    if (number)
        glyphs_.draw(painter, baseline);
    else
        painter->drawText(baseline, text);
}
