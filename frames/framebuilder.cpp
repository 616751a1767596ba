#include "frames/framebuilder.h"

#include "device/driver/identifiers.h"
#include "device/settingsstore.h"
#include "traces/frametexts.h"

#include <algorithm>
#include <type_traits>

namespace
{

constexpr char16_t kHexDigits[] = u"0123456789ABCDEF";

// "0x" and the number in upper-case hexadecimal, padded with zeros to at least minDigits.
QString prefixedHex(quint64 number, int minDigits)
{
    int digits = 1;
    for (quint64 rest = number >> 4; rest != 0; rest >>= 4)
        ++digits;
    digits = std::max(digits, minDigits);
    QString text(digits + 2, Qt::Uninitialized);
    QChar *out = text.data();
    out[0] = QLatin1Char('0');
    out[1] = QLatin1Char('x');
    for (int i = digits + 1; i > 1; --i, number >>= 4)
        out[i] = kHexDigits[number & 0xF];
    return text;
}

QString dataTextOf(const std::uint8_t *data, unsigned length)
{
    static const QString prefix = QStringLiteral("x| ");
    if (length == 0)
        return prefix;
    QString text(prefix.size() + static_cast<int>(length) * 3, Qt::Uninitialized);
    QChar *out = std::copy(prefix.cbegin(), prefix.cend(), text.data());
    for (unsigned i = 0; i < length; ++i) {
        *out++ = kHexDigits[data[i] >> 4];
        *out++ = kHexDigits[data[i] & 0xF];
        *out++ = QLatin1Char(' ');
    }
    return text;
}

QString receivedTimeText(quint64 microseconds)
{
    static const QString key = QStringLiteral("timeHex");
    static const QString hexByDefault = QStringLiteral("1");
    return settings::number(key, hexByDefault) == 0 ? secondsText(microseconds) : prefixedHex(microseconds, 1);
}

QString channelNumberText(unsigned channel)
{
    return channel < kLargestSmallNumber ? smallNumberText(channel + 1) : QString::number(qulonglong(channel) + 1);
}

template <typename Record> void append(QList<ModelItem> &batch, const Record &record, unsigned channel)
{
    constexpr bool isFd = sizeof record.data == kFdDataBytes;
    constexpr bool isReceived = std::is_same_v<Record, CanReceiveRecord> || std::is_same_v<Record, CanFdReceiveRecord>;

    const FrameWords &words = frameWords(languageCode());
    const unsigned length = std::min<unsigned>(record.length, sizeof record.data);
    const bool extended = (record.id & kIdExtendedFlag) != 0;
    const bool remote = (record.id & kIdRemoteFlag) != 0;

    // Filled in place: a list of Qt 5 copies what it is given.
    batch.append(ModelItem());
    ModelItem &item = batch.last();
    item.channel = channel;
    item.direction = isReceived ? Received : Transmitted;
    if constexpr (isReceived)
        item.timeStamp = receivedTimeText(record.timeStamp);
    else
        item.timeStamp = QStringLiteral("无");
    item.channelText = channelNumberText(channel);
    item.dirText = isReceived ? QStringLiteral("Rx") : QStringLiteral("Tx");
    item.idText = prefixedHex(record.id & kIdMask, idDigits(extended));
    item.formatText = extended ? words.extendedFrame : words.standardFrame;
    item.typeText = remote ? words.remoteFrame : words.dataFrame;
    item.dlcText = smallNumberText(length);
    if constexpr (isFd)
        item.protocolText = record.flags == kFdBitRateSwitch ? words.fdWithSwitch : QStringLiteral("CANFD");
    else
        item.protocolText = QStringLiteral("CAN");
    // Only a received FD remote frame has no data text at all.
    if (!(isFd && isReceived && remote))
        item.dataText = dataTextOf(record.data, remote ? 0 : length);
}

} // namespace

void appendItem(QList<ModelItem> &batch, const CanReceiveRecord &record, unsigned channel)
{
    append(batch, record, channel);
}

void appendItem(QList<ModelItem> &batch, const CanFdReceiveRecord &record, unsigned channel)
{
    append(batch, record, channel);
}

void appendItem(QList<ModelItem> &batch, const CanTransmitRecord &record, unsigned channel)
{
    append(batch, record, channel);
}

void appendItem(QList<ModelItem> &batch, const CanFdTransmitRecord &record, unsigned channel)
{
    append(batch, record, channel);
}

QString secondsText(quint64 microseconds)
{
    constexpr quint64 unit = 100; // microseconds of the last decimal
    constexpr int decimals = 4;
    constexpr quint64 unitsPerSecond = 10000;
    // Up to here the product's error stays far below a microsecond, so that only a half can round either way.
    constexpr quint64 exactLimit = quint64(1) << 50;
    const quint64 rest = microseconds % unit;
    if (rest == unit / 2 || microseconds >= exactLimit)
        return QString::number(static_cast<double>(microseconds) * 0.000001, 'f', decimals);

    quint64 units = microseconds / unit + (rest > unit / 2 ? 1 : 0);
    int size = decimals + 2;
    for (quint64 seconds = units / unitsPerSecond; seconds >= 10; seconds /= 10)
        ++size;
    QString text(size, Qt::Uninitialized);
    QChar *out = text.data() + size;
    for (int written = 0; written <= size - 1; ++written) {
        if (written == decimals) {
            *--out = QLatin1Char('.');
            continue;
        }
        *--out = kHexDigits[units % 10];
        units /= 10;
    }
    return text;
}
