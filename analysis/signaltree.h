// The tree of the signals' values, which change several times a second: a change costs the cells that it is in, and a
// cell its text.
#pragma once

#include <QPointF>
#include <QRawFont>
#include <QRegion>
#include <QStyledItemDelegate>
#include <QTreeView>
#include <QVector>

class SignalTree : public QTreeView
{
    Q_OBJECT

public:
    explicit SignalTree(QWidget *parent = nullptr);

    // Whether something of the row, or of the cell, is painted anew at the moment.
    bool isDirty(const QRect &rect) const { return dirty_.intersects(rect); }

protected:
    void paintEvent(QPaintEvent *event) override;
    void drawRow(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    QRegion dirty_;
};

// The characters of numbers in a font, shaped once: unlike letters they stand beside each other as they are.
class NumberGlyphs
{
public:
    void setFont(const QFont &font);
    // false: the text has others, or the font treats them specially. Else width() and draw() are its.
    bool shape(const QString &text);
    qreal width() const { return width_; } // pixels
    void draw(QPainter *painter, QPointF baseline) const;

private:
    static constexpr char kCharacters[] = "0123456789.+-e";   // no other letters: they are kerned
    static constexpr char kSample[] = "0123456789-0.0e+0e-0"; // as they stand beside each other
    static constexpr int kFirst = '+';                        // the least of them
    static constexpr int kCount = 'e' - kFirst + 1;

    QFont font_;
    QRawFont raw_;
    quint32 glyphs_[kCount] = {}; // 0: not one of them
    qreal advances_[kCount] = {};
    QVector<quint32> text_;
    QVector<QPointF> places_;
    qreal width_ = 0;
};

// Draws plain cells as the style would, without asking it; what is selected, marked or too long is the style's affair.
class SignalCellDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit SignalCellDelegate(SignalTree *tree) : QStyledItemDelegate(tree), tree_(tree) {}

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    const SignalTree *tree_;
    mutable NumberGlyphs glyphs_; // of the view's font
};
