#include "statistics/baseline.h"

#include "device/driver/identifiers.h"
#include "device/driver/numbertext.h"
#include "device/driver/timeunits.h"
#include "device/language.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>

namespace
{

constexpr int kVersion = 1;
constexpr std::uint64_t kPeriodicFrom = 5; // frames
constexpr double kPeriodicDeviation = 0.5; // of the mean
constexpr double kLongestMilliseconds = 1e12;
constexpr int kMaxChannel = 65535;

const QString kVersionKey = QStringLiteral("ostrel_baseline");
const QString kMessagesKey = QStringLiteral("messages");
const QString kChannelKey = QStringLiteral("channel");
const QString kDirectionKey = QStringLiteral("direction");
const QString kIdKey = QStringLiteral("id");
const QString kExtendedKey = QStringLiteral("extended");
const QString kMeanKey = QStringLiteral("mean_ms");
const QString kMinimumKey = QStringLiteral("minimum_ms");
const QString kMaximumKey = QStringLiteral("maximum_ms");
const QString kOptionalKey = QStringLiteral("optional");
const QString kGroupKey = QStringLiteral("parameter_group");
const QString kReceivedOnlyKey = QStringLiteral("received_only");
const QString kReceived = QStringLiteral("rx");
const QString kSent = QStringLiteral("tx");

bool readTime(const QJsonObject &object, const QString &key, double *nanoseconds)
{
    const QJsonValue value = object.value(key);
    const double milliseconds = value.toDouble(-1);
    *nanoseconds = milliseconds * kNanosecondsPerMillisecond;
    return value.isDouble() && milliseconds >= 0 && milliseconds <= kLongestMilliseconds;
}

// Empty when all is well.
QString readMessage(const QJsonObject &object, BaselineMessage *message)
{
    const int channel = object.value(kChannelKey).toInt(0);
    if (channel < 1 || channel > kMaxChannel)
        return text3("“channel”不在 1 到 65535 之间", "「channel」不在 1 到 65535 之間",
                     "\"channel\" is not between 1 and 65535");
    const QString direction = object.value(kDirectionKey).toString();
    if (direction != kReceived && direction != kSent)
        return text3("“direction”既不是“rx”也不是“tx”", "「direction」既不是「rx」也不是「tx」",
                     "\"direction\" is neither \"rx\" nor \"tx\"");
    bool isNumber = false;
    const QString id = object.value(kIdKey).toString();
    message->key.id = id.toUInt(&isNumber, kHexBase);
    message->key.extended = object.value(kExtendedKey).toBool(false);
    if (!isNumber || message->key.id > largestId(message->key.extended))
        return text3("“id”不是标识符：%1", "「id」不是識別碼：%1", "\"id\" is no identifier: %1").arg(id);
    message->key.channel = static_cast<std::uint16_t>(channel);
    message->key.direction = direction == kSent ? Direction::Sent : Direction::Received;
    message->optional = object.value(kOptionalKey).toBool(false);
    message->group = object.value(kGroupKey).toBool(false) && message->key.extended;
    if (!object.contains(kMeanKey))
        return {};
    double minimum = 0;
    double maximum = 0;
    if (!readTime(object, kMeanKey, &message->mean) || !readTime(object, kMinimumKey, &minimum) ||
        !readTime(object, kMaximumKey, &maximum) || minimum > maximum)
        return text3("“mean_ms”、“minimum_ms”和“maximum_ms”不是合乎次序的三个时间",
                     "「mean_ms」、「minimum_ms」和「maximum_ms」不是合乎次序的三個時間",
                     "\"mean_ms\", \"minimum_ms\" and \"maximum_ms\" are not three times in order");
    message->minimum = std::llround(minimum);
    message->maximum = std::llround(maximum);
    return {};
}

} // namespace

Baseline learnBaseline(const IdentifierTable &identifiers)
{
    Baseline baseline;
    for (const IdentifierStatistics &entry : identifiers.entries()) {
        if (entry.key.remote || entry.key.error)
            continue;
        BaselineMessage message;
        message.key = entry.key;
        if (entry.count >= kPeriodicFrom && entry.period.mean > 0 &&
            entry.period.deviation() < kPeriodicDeviation * entry.period.mean) {
            message.mean = entry.period.mean;
            message.minimum = std::max<std::int64_t>(0, entry.period.minimum);
            message.maximum = entry.period.maximum;
        }
        baseline.messages.push_back(message);
    }
    std::sort(baseline.messages.begin(), baseline.messages.end(),
              [](const BaselineMessage &a, const BaselineMessage &b) { return a.key.packed() < b.key.packed(); });
    return baseline;
}

QByteArray toJson(const Baseline &baseline)
{
    QJsonArray messages;
    for (const BaselineMessage &message : baseline.messages) {
        QJsonObject object{
            {kChannelKey, message.key.channel},
            {kDirectionKey, message.key.direction == Direction::Sent ? kSent : kReceived},
            {kIdKey, QStringLiteral("0x") + QString::number(message.key.id, kHexBase).toUpper()},
            {kExtendedKey, message.key.extended},
        };
        if (message.mean > 0) {
            object.insert(kMeanKey, message.mean / kNanosecondsPerMillisecond);
            object.insert(kMinimumKey, static_cast<double>(message.minimum) / kNanosecondsPerMillisecond);
            object.insert(kMaximumKey, static_cast<double>(message.maximum) / kNanosecondsPerMillisecond);
        }
        for (const auto &[key, set] :
             {std::pair(&kOptionalKey, message.optional), std::pair(&kGroupKey, message.group)})
            if (set)
                object.insert(*key, true);
        messages.append(object);
    }
    QJsonObject root{{kVersionKey, kVersion}, {kMessagesKey, messages}};
    if (baseline.receivedOnly)
        root.insert(kReceivedOnlyKey, true);
    return QJsonDocument(root).toJson();
}

std::optional<Baseline> baselineFromJson(const QByteArray &json, QString *error)
{
    QJsonParseError parseError;
    const QJsonObject root = QJsonDocument::fromJson(json, &parseError).object();
    if (parseError.error != QJsonParseError::NoError) {
        *error = text3("偏移量 %1：%2", "偏移量 %1：%2", "offset %1: %2")
                     .arg(parseError.offset)
                     .arg(parseError.errorString());
        return std::nullopt;
    }
    if (root.value(kVersionKey).toInt() != kVersion || !root.value(kMessagesKey).isArray()) {
        *error = text3("不是版本 %1 的基准", "不是版本 %1 的基準", "no baseline of version %1").arg(kVersion);
        return std::nullopt;
    }
    Baseline baseline;
    baseline.receivedOnly = root.value(kReceivedOnlyKey).toBool(false);
    const QJsonArray messages = root.value(kMessagesKey).toArray();
    for (const QJsonValue &value : messages) {
        BaselineMessage message;
        const QString reason = readMessage(value.toObject(), &message);
        if (!reason.isEmpty()) {
            *error = text3("第 %1 个报文：%2", "第 %1 個訊息：%2", "message %1: %2")
                         .arg(baseline.messages.size() + 1)
                         .arg(reason);
            return std::nullopt;
        }
        baseline.messages.push_back(message);
    }
    return baseline;
}
