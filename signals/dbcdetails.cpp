#include "signals/dbcparser.h"

#include <algorithm>

namespace
{

constexpr std::int64_t kFloatType = 1;
constexpr std::int64_t kDoubleType = 2;
constexpr int kFloatBits = 32;
constexpr int kDoubleBits = 64;

} // namespace

ValueTexts DbcParser::readPairs()
{
    ValueTexts texts;
    while (scanner_.startsNumber()) {
        const std::int64_t value = scanner_.integer();
        texts.append({value, scanner_.unescaped(scanner_.quoted())});
    }
    std::stable_sort(texts.begin(), texts.end(),
                     [](const ValueText &a, const ValueText &b) { return a.value < b.value; });
    texts.erase(std::unique(texts.begin(), texts.end(),
                            [](const ValueText &a, const ValueText &b) { return a.value == b.value; }),
                texts.end());
    return texts;
}

void DbcParser::readValueTable()
{
    const QString name = scanner_.text(scanner_.word());
    result_.database.valueTables.insert(name, readPairs());
    end();
}

void DbcParser::readValueTexts()
{
    if (!scanner_.startsNumber()) { // an environment variable's
        scanner_.word();
        readPairs();
        end();
        return;
    }
    const Target target = signalTarget();
    ValueTexts texts;
    const std::string_view table = scanner_.peekWord();
    if (!table.empty() && !scanner_.startsNumber() && !isDbcStatement(table)) {
        const QString name = scanner_.text(scanner_.word());
        if (!result_.database.valueTables.contains(name))
            throw DbcError{DbcFault::UnknownValueTable, table.data(), name};
        texts = result_.database.valueTables.value(name);
    } else {
        texts = readPairs();
    }
    if (target.signal >= 0)
        definitionOf(target).valueTexts = texts;
    end();
}

void DbcParser::readSenders()
{
    const Target target = messageTarget();
    scanner_.expect(':');
    while (scanner_.more() && !scanner_.peekWord().empty() && !isDbcStatement(scanner_.peekWord())) {
        const std::string_view name = scanner_.word();
        const QString sender = scanner_.text(name);
        if (target.message >= 0 && !isPlaceholder(name) && !messageOf(target).senders.contains(sender))
            messageOf(target).senders.append(sender);
        scanner_.next(',');
    }
    end();
}

void DbcParser::readComment()
{
    QString *comment = nullptr;
    const std::string_view owner = scanner_.startsText() ? std::string_view() : scanner_.word();
    if (owner.empty()) {
        comment = &result_.database.comment;
    } else if (owner == "BU_") {
        NodeDefinition *node = nodeNamed(scanner_.word());
        comment = node ? &node->comment : nullptr;
    } else if (owner == "BO_") {
        const Target target = messageTarget();
        comment = target.message >= 0 ? &messageOf(target).comment : nullptr;
    } else if (owner == "SG_") {
        const Target target = signalTarget();
        comment = target.signal >= 0 ? &definitionOf(target).comment : nullptr;
    } else if (owner == "EV_") {
        scanner_.word();
    } else {
        throw DbcError{DbcFault::Expected, owner.data(), QStringLiteral("BU_, BO_, SG_, EV_")};
    }
    const QString text = scanner_.unescaped(scanner_.quoted());
    if (comment)
        *comment = text;
    end();
}

void DbcParser::readValueType()
{
    const Target target = signalTarget();
    scanner_.next(':');
    scanner_.more();
    const char *place = scanner_.place();
    const std::int64_t type = scanner_.integer();
    if (type < 0 || type > kDoubleType)
        throw DbcError{DbcFault::BadNumber, place, QString::number(type)};
    end();
    if (target.signal < 0 || type < kFloatType)
        return;
    SignalDefinition &signal = definitionOf(target);
    if (signal.bits == (type == kFloatType ? kFloatBits : kDoubleBits))
        signal.type = type == kFloatType ? SignalType::Float : SignalType::Double;
    else
        tell(DbcFault::BadFloatLength, place, signal.name);
}

void DbcParser::readGroup()
{
    const Target target = messageTarget();
    SignalGroup group;
    group.name = scanner_.text(scanner_.word());
    if (scanner_.startsNumber())
        scanner_.integer(); // repetitions, always 1
    scanner_.next(':');
    while (scanner_.more() && !scanner_.peekWord().empty() && !isDbcStatement(scanner_.peekWord())) {
        const std::string_view name = scanner_.word();
        if (target.message >= 0)
            group.members.append(signalOf(target.message, name));
        scanner_.next(',');
    }
    if (target.message >= 0)
        messageOf(target).groups.append(group);
    end();
}

void DbcParser::readSelectors()
{
    const Target target = signalTarget();
    const std::string_view multiplexer = scanner_.word();
    QVector<SelectorRange> ranges;
    do {
        const std::int64_t first = scanner_.integer();
        scanner_.expect('-');
        const std::int64_t last = scanner_.integer();
        ranges.append({std::min(first, last), std::max(first, last)});
    } while (scanner_.next(','));
    if (target.signal >= 0) {
        const int selectedBy = signalOf(target.message, multiplexer);
        SignalDefinition &signal = definitionOf(target);
        signal.multiplexedBy = selectedBy;
        signal.selectedBy = ranges;
        messageOf(target).signalList[selectedBy].multiplexer = true;
    }
    end();
}
