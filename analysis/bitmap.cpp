#include "analysis/bitmap.h"

#include "device/language.h"
#include "widgets/accessibletexts.h"

#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>

namespace
{

constexpr int kBits = 8;
constexpr int kBytesInColumn = 16; // further bytes stand beside them
constexpr int kNumberFields = 3;   // room of a byte's number, and of the gap before the next column
constexpr QRgb kMoved = 0xFFE8A317;
constexpr QRgb kStill = 0xFFE4E4E4;

int columns(int bytes)
{
    return std::max((bytes + kBytesInColumn - 1) / kBytesInColumn, 1);
}

} // namespace

BitMap::BitMap(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void BitMap::show(const IdentifierStatistics *entry)
{
    const int length = entry && !entry->last.remote ? entry->last.length : 0;
    std::array<std::uint8_t, kRawDataBytes> data{};
    if (entry)
        std::copy_n(entry->last.data, length, data.begin());
    const std::array<std::uint8_t, kRawDataBytes> moved = entry ? entry->movedBits : decltype(moved_){};
    if (length == length_ && moved == moved_ && data == data_)
        return;
    const bool anotherSize = columns(length) != columns(length_);
    length_ = length;
    moved_ = moved;
    data_ = data;
    tellDescription(this, movedText());
    if (anotherSize)
        updateGeometry();
    update();
}

QString BitMap::movedText() const
{
    QStringList bits;
    for (int byte = 0; byte < length_; ++byte)
        for (int bit = kBits - 1; bit >= 0; --bit)
            if ((moved_[static_cast<std::size_t>(byte)] >> bit & 1) != 0)
                bits.append(QStringLiteral("%1.%2").arg(byte).arg(bit));
    return bits.join(QLatin1Char(' '));
}

int BitMap::fieldSize() const
{
    return std::max(fontMetrics().height() * 3 / 4, 1);
}

QSize BitMap::sizeHint() const
{
    return {fieldSize() * (kBits + kNumberFields) * columns(length_), fieldSize() * kBytesInColumn + 1};
}

QRect BitMap::field(int byte, int bit) const
{
    const int size = fieldSize();
    const int column = byte / kBytesInColumn;
    const int left = (column * (kBits + kNumberFields) + 2 + kBits - 1 - bit) * size;
    return {left, byte % kBytesInColumn * size, size - 1, size - 1};
}

void BitMap::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    QFont small = font();
    small.setPixelSize(std::max(fieldSize() - 1, 1));
    painter.setFont(small);
    for (int byte = 0; byte < length_; ++byte) {
        const QRect first = field(byte, kBits - 1);
        painter.drawText(QRect(first.left() - 2 * fieldSize(), first.top(), 2 * fieldSize() - 3, first.height()),
                         Qt::AlignRight | Qt::AlignVCenter, QString::number(byte));
        for (int bit = 0; bit < kBits; ++bit) {
            const bool moved = (moved_[static_cast<std::size_t>(byte)] >> bit & 1) != 0;
            const QRect place = field(byte, bit);
            painter.fillRect(place, QColor::fromRgb(moved ? kMoved : kStill));
            painter.drawText(place, Qt::AlignCenter,
                             (data_[static_cast<std::size_t>(byte)] >> bit & 1) != 0 ? QStringLiteral("1")
                                                                                     : QStringLiteral("0"));
        }
    }
}

bool BitMap::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    const auto *help = static_cast<QHelpEvent *>(event);
    for (int byte = 0; byte < length_; ++byte)
        for (int bit = 0; bit < kBits; ++bit)
            if (field(byte, bit).contains(help->pos())) {
                const bool moved = (moved_[static_cast<std::size_t>(byte)] >> bit & 1) != 0;
                QToolTip::showText(
                    help->globalPos(),
                    (moved ? text3("字节%1 位%2：变化过", "位元組%1 位元%2：變化過", "Byte %1 bit %2: has moved")
                           : text3("字节%1 位%2：未变化", "位元組%1 位元%2：未變化", "Byte %1 bit %2: never moved"))
                        .arg(byte)
                        .arg(bit),
                    this);
                return true;
            }
    QToolTip::hideText();
    return true;
}
