#include "signals/dbcparser.h"

#include <algorithm>

bool isPlaceholder(std::string_view node)
{
    return node == "Vector__XXX" || node == "VECTOR__XXX";
}

DbcResult DbcParser::read()
{
    while (scanner_.more()) {
        const char *begin = scanner_.place();
        try {
            statement();
        } catch (const DbcError &error) {
            tell(error.fault, error.place, error.detail);
            scanner_.skipToStatement(begin);
        }
    }
    resolveAll();
    return std::move(result_);
}

void DbcParser::statement()
{
    const char *begin = scanner_.place();
    const std::string_view keyword = scanner_.peekWord();
    if (!isDbcStatement(keyword))
        throw DbcError{DbcFault::UnknownStatement, begin, scanner_.text(keyword.substr(0, 40))};
    scanner_.word();
    if (keyword == "SG_")
        readSignal();
    else if (keyword == "BO_")
        readMessage();
    else if (keyword == "CM_")
        readComment();
    else if (keyword == "VAL_")
        readValueTexts();
    else if (keyword == "BA_")
        readAttribute();
    else if (keyword == "BA_REL_")
        readRelation();
    else if (keyword == "BA_DEF_")
        readAttributeDefinition(false);
    else if (keyword == "BA_DEF_REL_")
        readAttributeDefinition(true);
    else if (keyword == "BA_DEF_DEF_" || keyword == "BA_DEF_DEF_REL_")
        readAttributeDefault();
    else if (keyword == "SG_MUL_VAL_")
        readSelectors();
    else if (keyword == "SIG_VALTYPE_")
        readValueType();
    else if (keyword == "SIG_GROUP_")
        readGroup();
    else if (keyword == "BO_TX_BU_")
        readSenders();
    else if (keyword == "VAL_TABLE_")
        readValueTable();
    else if (keyword == "BU_")
        readNodes();
    else if (keyword == "VERSION")
        readVersion();
    else if (keyword == "NS_")
        scanner_.skipNewSymbols();
    else if (keyword == "BS_") // bit timing, which nobody uses
        while (scanner_.moreOnLine())
            scanner_.skipOnLine('\n');
    else
        scanner_.skipStatement();
}

void DbcParser::end()
{
    const char *place = scanner_.place();
    if (!scanner_.statementEnd())
        tell(DbcFault::MissingSemicolon, place);
}

void DbcParser::tell(DbcFault fault, const char *place, const QString &detail)
{
    QVector<DbcProblem> &problems = result_.problems;
    if (problems.size() > kMostProblems)
        return;
    if (problems.size() == kMostProblems) {
        problems.append({0, 0, DbcFault::TooManyProblems, {}});
        return;
    }
    DbcProblem problem{0, 0, fault, detail};
    scanner_.locate(place, &problem.line, &problem.column);
    problems.append(problem);
}

// --- what statements are about ---------------------------------------------------------------------------------------

DbcParser::Target DbcParser::messageTarget()
{
    scanner_.more();
    const char *place = scanner_.place();
    const std::uint32_t word = scanner_.messageWord();
    Target target;
    target.message = messageIndexes_.value(word, -1);
    if (target.message < 0 && word != kNoMessage)
        throw DbcError{DbcFault::UnknownMessage, place, QString::number(word)};
    return target;
}

int DbcParser::signalOf(int message, std::string_view name)
{
    const int found = notes_[message].indexes.value(QByteArray::fromRawData(name.data(), int(name.size())), -1);
    if (found < 0)
        throw DbcError{DbcFault::UnknownSignal, name.data(), scanner_.text(name)};
    return found;
}

DbcParser::Target DbcParser::signalTarget()
{
    Target target = messageTarget();
    const std::string_view name = scanner_.word();
    if (target.message >= 0)
        target.signal = signalOf(target.message, name);
    return target;
}

NodeDefinition *DbcParser::nodeNamed(std::string_view name)
{
    const QString wanted = scanner_.text(name);
    const int found = nodeIndexes_.value(wanted, -1);
    if (found >= 0)
        return &result_.database.nodes[found];
    if (!isPlaceholder(name))
        throw DbcError{DbcFault::UnknownNode, name.data(), wanted};
    return nullptr;
}

// --- version, nodes, value tables ------------------------------------------------------------------------------------

void DbcParser::readVersion()
{
    result_.database.version = scanner_.unescaped(scanner_.quoted());
}

void DbcParser::readNodes()
{
    scanner_.expect(':');
    while (scanner_.more()) {
        const std::string_view name = scanner_.peekWord();
        if (name.empty() || isDbcStatement(name))
            break;
        scanner_.word();
        NodeDefinition node;
        node.name = scanner_.text(name);
        nodeIndexes_.insert(node.name, result_.database.nodes.size());
        result_.database.nodes.append(node);
    }
    scanner_.next(';');
}
