#include "transmit/transmitentry.h"

#include "device/driver/identifiers.h"
#include "device/driver/numbertext.h"
#include "device/language.h"
#include "frames/rawrecords.h"
#include "traces/frametexts.h"
#include "transmit/framechecks.h"

#include <QRegularExpression>
#include <QStringList>

#include <atomic>

namespace
{
constexpr int kFirstFunctionKey = 5; // those before it are the desktop's and the table's
constexpr int kLastFunctionKey = 12;
} // namespace

unsigned newTransmitSerial()
{
    static std::atomic<unsigned> last{0};
    return ++last;
}

const QStringList &transmitKeys()
{
    static const QStringList keys = [] {
        QStringList all;
        for (const char *prefix : {"F", "Ctrl+F"})
            for (int number = kFirstFunctionKey; number <= kLastFunctionKey; ++number)
                all << QLatin1String(prefix) + QString::number(number);
        return all;
    }();
    return keys;
}

QString setChanges(TransmitEntry &entry, const QString &text)
{
    ByteChanges parsed = parseByteChanges(text);
    if (parsed.error.isEmpty()) {
        entry.changesText = text.simplified();
        entry.changes = std::move(parsed.list);
    }
    return parsed.error;
}

bool setAwaited(TransmitEntry &entry, const QString &text)
{
    static const QRegularExpression pattern(QStringLiteral("^(?:0[xX])?([0-9a-fA-F]{1,8})(?:/([0-9a-fA-F]{1,8}))?$"));
    const QRegularExpressionMatch match = pattern.match(text.trimmed());
    unsigned id = 0;
    const bool extended = match.captured(1).size() > kStandardIdDigits;
    if (!match.hasMatch() || !identifierFits(match.captured(1), extended, &id))
        return false;
    entry.awaited = id;
    entry.awaitedExtended = extended;
    entry.awaitedMask = match.captured(2).isEmpty() ? kIdMask : match.captured(2).toUInt(nullptr, kHexBase) & kIdMask;
    return true;
}

QString awaitedText(const TransmitEntry &entry)
{
    const QString id = identifierText(entry.awaited, entry.awaitedExtended);
    return entry.awaitedMask == kIdMask
               ? id
               : id + QLatin1Char('/') + identifierText(entry.awaitedMask, entry.awaitedExtended);
}

bool isAwaited(const TransmitEntry &entry, const RawFrame &received)
{
    return received.direction == Direction::Received && !received.error && received.channel == entry.channel + 1 &&
           received.extended == entry.awaitedExtended && ((received.id ^ entry.awaited) & entry.awaitedMask) == 0;
}

QString transmitProblem(const TransmitEntry &entry)
{
    const RawFrame &frame = entry.frame;
    if (frame.id > largestId(frame.extended))
        return identifierRangeText(frame.extended, entry.channel);
    if (!isSendable(frame))
        return text3("没有这样的帧：长度、类型与协议不相配", "沒有這樣的幀：長度、類型與協議不相配",
                     "There is no such frame: length, type and protocol do not go together");
    if (!changesFit(entry.changes, frame.remote ? 0 : frame.length))
        return text3("变化超出了帧的数据", "變化超出了幀的數據", "A change lies beyond the frame's data");
    if (entry.interval > kLongestInterval || (entry.interval == 0 && entry.mode != TransmitMode::Response))
        return text3("间隔为1~999999999 ms", "間隔為1~999999999 ms", "The interval is 1 to 999999999 ms");
    if (entry.count == 0 || entry.count > kHighestCount)
        return text3("次数为1~999999999999", "次數為1~999999999999", "The count is 1 to 999999999999");
    return {};
}
