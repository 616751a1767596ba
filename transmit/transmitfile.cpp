#include "transmit/transmitfile.h"

#include "device/driver/numbertext.h"
#include "device/language.h"
#include "transmit/datatext.h"
#include "transmit/transmitnames.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSaveFile>
#include <QSet>

#include <algorithm>
#include <cmath>

namespace
{

const QString kFormatName = QStringLiteral("ostrel-transmit-list");
constexpr qint64 kLargestFile = 64 * 1024 * 1024; // bytes

// Reads the fields of one entry; remembers the first that is wrong, and what it has not been asked for.
class FieldReader
{
public:
    explicit FieldReader(QJsonObject object) : object_(std::move(object)) {}

    bool flag(const char *name, bool otherwise)
    {
        const QJsonValue value = take(name);
        if (!value.isBool() && !value.isUndefined())
            blame(name);
        return value.toBool(otherwise);
    }
    QString text(const char *name)
    {
        const QJsonValue value = take(name);
        if (!value.isString() && !value.isUndefined())
            blame(name);
        return value.toString();
    }
    std::uint64_t number(const char *name, std::uint64_t lowest, std::uint64_t highest, std::uint64_t otherwise)
    {
        const QJsonValue value = take(name);
        if (value.isUndefined())
            return otherwise;
        const double number = value.toDouble(-1);
        if (!(number >= static_cast<double>(lowest) && number <= static_cast<double>(highest)) ||
            number != std::floor(number)) {
            blame(name);
            return otherwise;
        }
        return static_cast<std::uint64_t>(number);
    }
    int choice(const char *name, const QStringList &choices, int otherwise)
    {
        const QJsonValue value = take(name);
        if (value.isUndefined())
            return otherwise;
        const int index = choices.indexOf(value.toString());
        if (index < 0)
            blame(name);
        return std::max(index, 0);
    }
    void blame(const char *name)
    {
        if (wrong_.isEmpty())
            wrong_ = QLatin1String(name);
    }
    // The name of the first field that is wrong or unknown.
    QString wrong() const
    {
        if (!wrong_.isEmpty())
            return wrong_;
        for (const QString &key : object_.keys())
            if (!asked_.contains(key))
                return key;
        return {};
    }

private:
    QJsonValue take(const char *name)
    {
        asked_.insert(QLatin1String(name));
        return object_.value(QLatin1String(name));
    }

    const QJsonObject object_;
    QSet<QString> asked_;
    QString wrong_;
};

void readFrame(FieldReader &fields, RawFrame &frame)
{
    static const QRegularExpression idPattern((QLatin1String(kIdentifierPattern)));
    static const QRegularExpression dataPattern(QStringLiteral("^([0-9a-fA-F]{2}( [0-9a-fA-F]{2})*)?$"));
    frame.extended = fields.flag("extended", false);
    frame.remote = fields.flag("remote", false);
    const QString id = fields.text("id");
    unsigned identifier = 0;
    if (!idPattern.match(id).hasMatch() || !identifierFits(id, frame.extended, &identifier))
        fields.blame("id");
    frame.id = identifier;
    setProtocol(frame, fields.choice("protocol", protocolNames(), ClassicCan));
    frame.length = static_cast<std::uint8_t>(
        fields.number("length", 0, frame.fd ? kFdDataBytes : kClassicDataBytes, kClassicDataBytes));
    const QString data = fields.text("data");
    const QByteArray bytes = dataBytes(data);
    if (!dataPattern.match(data).hasMatch() || bytes.size() > frame.length)
        fields.blame("data");
    else
        std::copy(bytes.begin(), bytes.end(), frame.data);
}

// What is wrong; empty: nothing.
QString readEntry(const QJsonValue &value, TransmitEntry &entry)
{
    FieldReader fields(value.toObject());
    entry.serial = newTransmitSerial();
    entry.on = fields.flag("on", true);
    entry.channel = static_cast<unsigned>(fields.number("channel", 1, 2, 1) - 1);
    entry.name = fields.text("name");
    readFrame(fields, entry.frame);
    entry.type = static_cast<TransmitType>(fields.choice("sendType", transmitTypeNames(), 0));
    entry.mode =
        static_cast<TransmitMode>(fields.choice("mode", transmitModeNames(), static_cast<int>(TransmitMode::Periodic)));
    entry.interval = static_cast<unsigned>(
        fields.number("interval", entry.mode == TransmitMode::Response ? 0 : 1, kLongestInterval, entry.interval));
    entry.count = fields.number("count", 1, kHighestCount, entry.count);
    const QString awaited = fields.text("awaits");
    if (!awaited.isEmpty() && !setAwaited(entry, awaited))
        fields.blame("awaits");
    entry.resumes = fields.flag("resumes", true);
    entry.key = fields.text("key");
    if (!entry.key.isEmpty() && !transmitKeys().contains(entry.key))
        fields.blame("key");
    QString problem = setChanges(entry, fields.text("changes"));
    entry.comment = fields.text("comment");
    if (!problem.isEmpty())
        return problem;
    if (!fields.wrong().isEmpty())
        return text3("字段“%1”有误", "欄位「%1」有誤", "the field \"%1\" is wrong").arg(fields.wrong());
    return transmitProblem(entry);
}

QJsonObject entryObject(const TransmitEntry &entry)
{
    const RawFrame &frame = entry.frame;
    const QByteArray data(reinterpret_cast<const char *>(frame.data), frame.length);
    QJsonObject object{
        {QStringLiteral("on"), entry.on},
        {QStringLiteral("channel"), static_cast<int>(entry.channel) + 1},
        {QStringLiteral("name"), entry.name},
        {QStringLiteral("id"), QString::number(frame.id, kHexBase).toUpper()},
        {QStringLiteral("extended"), frame.extended},
        {QStringLiteral("remote"), frame.remote},
        {QStringLiteral("protocol"), protocolNames().at(protocolOf(frame))},
        {QStringLiteral("sendType"), transmitTypeNames().at(static_cast<int>(entry.type))},
        {QStringLiteral("length"), frame.length},
        {QStringLiteral("data"), dataText(data)},
        {QStringLiteral("mode"), transmitModeNames().at(static_cast<int>(entry.mode))},
        {QStringLiteral("interval"), static_cast<double>(entry.interval)},
        {QStringLiteral("count"), static_cast<double>(entry.count)},
        {QStringLiteral("resumes"), entry.resumes},
        {QStringLiteral("awaits"), awaitedText(entry)},
        {QStringLiteral("key"), entry.key},
        {QStringLiteral("changes"), entry.changesText},
        {QStringLiteral("comment"), entry.comment},
    };
    return object;
}

} // namespace

TransmitFile parseTransmitFile(const QByteArray &content)
{
    TransmitFile file;
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(content, &error);
    if (error.error != QJsonParseError::NoError) {
        const QByteArray before = content.left(error.offset);
        file.error = text3("第%1行第%2列：%3", "第%1行第%2欄：%3", "line %1, column %2: %3")
                         .arg(before.count('\n') + 1)
                         .arg(before.size() - before.lastIndexOf('\n'))
                         .arg(error.errorString());
        return file;
    }
    const QJsonObject top = document.object();
    if (top.value(QLatin1String("format")).toString() != kFormatName ||
        !top.value(QLatin1String("entries")).isArray()) {
        file.error = text3("这不是发送列表", "這不是發送列表", "this is no transmit list");
        return file;
    }
    if (top.value(QLatin1String("version")).toInt(-1) != kTransmitFileVersion) {
        file.error = text3("不支持此版本的发送列表", "不支援此版本的發送列表",
                           "a transmit list of a version that is not known here");
        return file;
    }
    int number = 0;
    for (const QJsonValue value : top.value(QLatin1String("entries")).toArray()) {
        ++number;
        auto entry = std::make_shared<TransmitEntry>();
        const QString problem = readEntry(value, *entry);
        if (!problem.isEmpty()) {
            file.entries.clear();
            file.error = text3("第%1项：%2", "第%1項：%2", "entry %1: %2").arg(number).arg(problem);
            return file;
        }
        file.entries.append(std::move(entry));
    }
    return file;
}

TransmitFile readTransmitFile(const QString &path)
{
    QFile file(path);
    TransmitFile result;
    if (!file.open(QIODevice::ReadOnly))
        result.error = file.errorString();
    else if (file.size() > kLargestFile)
        result.error = text3("这不是发送列表", "這不是發送列表", "this is no transmit list");
    else
        result = parseTransmitFile(file.readAll());
    return result;
}

QByteArray transmitFileContent(const TransmitList &entries)
{
    QByteArray content = "{\"format\": \"" + kFormatName.toUtf8() +
                         "\", \"version\": " + QByteArray::number(kTransmitFileVersion) + ", \"entries\": [";
    const char *separator = "\n";
    for (const TransmitEntryPointer &entry : entries) {
        content += separator + QJsonDocument(entryObject(*entry)).toJson(QJsonDocument::Compact);
        separator = ",\n";
    }
    return content + "\n]}\n";
}

QString writeTransmitFile(const QString &path, const TransmitList &entries)
{
    QSaveFile file(path);
    const QByteArray content = transmitFileContent(entries);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() || !file.commit())
        return file.errorString();
    return {};
}
