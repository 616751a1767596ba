// What can be said only when the whole file has been read: who selects whom, frame formats, long names.
#include "signals/dbcparser.h"
#include "traces/rawframe.h"

#include <algorithm>

namespace
{

constexpr qlonglong kFormatJ1939 = 3; // VFrameFormat where it is a number
constexpr qlonglong kFormatStandardFd = 14;
constexpr qlonglong kFormatExtendedFd = 15;

QString longName(const Attributes &attributes, const char *attribute, const QString &name)
{
    const QString found = attributes.value(QLatin1String(attribute)).toString();
    return found.isEmpty() ? name : found;
}

} // namespace

void DbcParser::resolveAll()
{
    resolveDefaults();
    SignalDatabase &database = result_.database;
    const QString cycleTime = QStringLiteral("GenMsgCycleTime");
    const QString startValue = QStringLiteral("GenSigStartValue");
    const QVariant usualCycle = database.attribute({}, cycleTime);
    const QVariant usualStart = database.attribute({}, startValue);
    for (int i = 0; i < database.messages.size(); ++i) {
        resolveMultiplexing(i);
        breakLoops(i);
        MessageDefinition &message = database.messages[i];
        message.cycleTimeMs = std::max(0, message.attributes.value(cycleTime, usualCycle).toInt());
        for (SignalDefinition &signal : message.signalList) {
            bool ok = false;
            const double raw = signal.attributes.value(startValue, usualStart).toDouble(&ok);
            if (ok)
                signal.startValue = raw;
        }
    }
    resolveFormats();
    resolveNames();
}

void DbcParser::resolveFormats()
{
    SignalDatabase &database = result_.database;
    const QString frameFormat = QStringLiteral("VFrameFormat");
    const QString rateSwitch = QStringLiteral("CANFD_BRS");
    const QVariant usualFormat = database.attribute({}, frameFormat);
    const QVariant usualSwitch = database.attribute({}, rateSwitch);
    const bool networkIsJ1939 =
        database.attribute(database.attributes, QStringLiteral("ProtocolType")).toString() == QLatin1String("J1939");
    for (MessageDefinition &message : database.messages) {
        const QVariant format = message.attributes.value(frameFormat, usualFormat);
        if (format.type() == QVariant::String) {
            message.fd = format.toString().endsWith(QLatin1String("CAN_FD"));
            message.j1939 = format.toString() == QLatin1String("J1939PG");
        } else if (format.isValid()) {
            const qlonglong number = format.toLongLong();
            message.fd = number == kFormatStandardFd || number == kFormatExtendedFd;
            message.j1939 = number == kFormatJ1939;
        } else {
            message.j1939 = networkIsJ1939;
            message.fd = !networkIsJ1939 && message.length > int(kClassicBytes) && message.length <= int(kRawDataBytes);
        }
        message.j1939 = message.j1939 && message.extended;
        message.bitRateSwitch =
            message.fd && message.attributes.value(rateSwitch, usualSwitch).toString() == QLatin1String("1");
    }
}

// "m" and "M" say who selects whom only where one multiplexer has not been selected itself; SG_MUL_VAL_ has said the
// rest.
void DbcParser::resolveMultiplexing(int messageIndex)
{
    const MessageNotes &notes = notes_.at(messageIndex);
    QVector<SignalDefinition> &list = result_.database.messages[messageIndex].signalList;
    int first = -1;
    int count = 0;
    for (int i = 0; i < list.size(); ++i)
        if (list.at(i).multiplexer && !notes.multiplexed.at(i)) {
            first = first < 0 ? i : first;
            ++count;
        }
    for (int i = 0; i < list.size(); ++i) {
        SignalDefinition &signal = list[i];
        if (!notes.multiplexed.at(i) || signal.multiplexedBy >= 0)
            continue;
        if (count != 1)
            tell(count == 0 ? DbcFault::NoMultiplexer : DbcFault::SeveralMultiplexers, notes.places.at(i), signal.name);
        signal.multiplexedBy = first;
        if (first >= 0)
            signal.selectedBy = {{notes.selectors.at(i), notes.selectors.at(i)}};
    }
}

void DbcParser::breakLoops(int messageIndex)
{
    QVector<SignalDefinition> &list = result_.database.messages[messageIndex].signalList;
    QVector<int> walk(list.size(), -1); // in which a signal was visited
    for (int i = 0; i < list.size(); ++i) {
        int at = i;
        while (at >= 0 && walk.at(at) < 0) {
            walk[at] = i;
            at = list.at(at).multiplexedBy;
        }
        if (at < 0 || walk.at(at) != i)
            continue;
        tell(DbcFault::MultiplexerLoop, notes_.at(messageIndex).places.at(at), list.at(at).name);
        list[at].multiplexedBy = -1;
        list[at].selectedBy.clear();
    }
}

void DbcParser::resolveNames()
{
    SignalDatabase &database = result_.database;
    QHash<QString, QString> nodeNames;
    for (NodeDefinition &node : database.nodes) {
        const QString name = longName(node.attributes, "SystemNodeLongSymbol", node.name);
        if (name != node.name)
            nodeNames.insert(node.name, name);
        node.name = name;
    }
    const auto rename = [&](QStringList *names) {
        for (QString &name : *names)
            name = nodeNames.value(name, name);
    };
    for (MessageDefinition &message : database.messages) {
        message.name = longName(message.attributes, "SystemMessageLongSymbol", message.name);
        rename(&message.senders);
        for (SignalDefinition &signal : message.signalList) {
            signal.name = longName(signal.attributes, "SystemSignalLongSymbol", signal.name);
            rename(&signal.receivers);
        }
    }
    for (RelationAttribute &relation : database.relations)
        relation.node = nodeNames.value(relation.node, relation.node);
}
