// BA_DEF_, BA_DEF_DEF_, BA_ and their relatives for relations.
#include "signals/dbcparser.h"

namespace
{

struct TypeName {
    std::string_view name;
    AttributeType type;
};

constexpr TypeName kTypes[] = {{"INT", AttributeType::Integer},
                               {"HEX", AttributeType::Hexadecimal},
                               {"FLOAT", AttributeType::Real},
                               {"STRING", AttributeType::Text},
                               {"ENUM", AttributeType::Enumeration}};

} // namespace

void DbcParser::readAttributeDefinition(bool relation)
{
    AttributeDefinition definition;
    if (!scanner_.startsText()) {
        const std::string_view owner = scanner_.word();
        definition.owner = relation         ? AttributeOwner::Relation
                           : owner == "BU_" ? AttributeOwner::Node
                           : owner == "BO_" ? AttributeOwner::Message
                           : owner == "SG_" ? AttributeOwner::Signal
                                            : AttributeOwner::Environment;
    }
    definition.name = scanner_.text(scanner_.quotedOnLine());
    const std::string_view typeName = scanner_.word();
    const auto *found =
        std::find_if(std::begin(kTypes), std::end(kTypes), [&](const TypeName &type) { return type.name == typeName; });
    if (found == std::end(kTypes))
        throw DbcError{DbcFault::Expected, typeName.data(), QStringLiteral("INT, HEX, FLOAT, STRING, ENUM")};
    definition.type = found->type;
    if (definition.type == AttributeType::Enumeration) {
        while (scanner_.startsText()) {
            definition.texts.append(scanner_.unescaped(scanner_.quoted()));
            scanner_.next(',');
        }
    } else if (scanner_.startsNumber()) {
        definition.minimum = scanner_.number();
        definition.maximum = scanner_.number();
    }
    if (!definitions_.contains(definition.name)) {
        definitions_.insert(definition.name, result_.database.attributeDefinitions.size());
        result_.database.attributeDefinitions.append(definition);
    }
    end();
}

QVariant DbcParser::readAttributeValue()
{
    if (scanner_.startsText())
        return scanner_.unescaped(scanner_.quoted());
    scanner_.more();
    const char *begin = scanner_.place();
    const double real = scanner_.number();
    const std::string_view digits(begin, static_cast<std::size_t>(scanner_.place() - begin));
    if (digits.find_first_of(".eE") != std::string_view::npos)
        return real;
    scanner_.rewind(begin);
    return static_cast<qlonglong>(scanner_.integer());
}

void DbcParser::readAttributeDefault()
{
    const QString name = scanner_.text(scanner_.quotedOnLine());
    defaults_.insert(name, readAttributeValue());
    end();
}

void DbcParser::readAttribute()
{
    const QString name = scanner_.text(scanner_.quotedOnLine());
    Attributes *attributes = &result_.database.attributes;
    const std::string_view owner = scanner_.startsText() || scanner_.startsNumber() ? "" : scanner_.word();
    if (owner == "BU_") {
        NodeDefinition *node = nodeNamed(scanner_.word());
        attributes = node ? &node->attributes : nullptr;
    } else if (owner == "BO_") {
        const Target target = messageTarget();
        attributes = target.message >= 0 ? &messageOf(target).attributes : nullptr;
    } else if (owner == "SG_") {
        const Target target = signalTarget();
        attributes = target.signal >= 0 ? &definitionOf(target).attributes : nullptr;
    } else if (owner == "EV_") {
        scanner_.word();
        attributes = nullptr;
    } else if (!owner.empty()) {
        throw DbcError{DbcFault::Expected, owner.data(), QStringLiteral("BU_, BO_, SG_, EV_")};
    }
    scanner_.more();
    const char *place = scanner_.place();
    const QVariant value = checkedValue(name, readAttributeValue(), place);
    if (attributes)
        attributes->insert(name, value);
    end();
}

void DbcParser::readRelation()
{
    RelationAttribute relation;
    relation.name = scanner_.text(scanner_.quotedOnLine());
    const std::string_view kind = scanner_.word();
    relation.node = scanner_.text(scanner_.word());
    if (kind == "BU_SG_REL_") {
        if (scanner_.peekWord() == "SG_")
            scanner_.word();
        const Target target = messageTarget();
        relation.message = target.message;
        const std::string_view signal = scanner_.word();
        if (target.message >= 0)
            signalOf(target.message, signal);
        relation.object = scanner_.text(signal);
    } else if (kind == "BU_BO_REL_") {
        relation.message = messageTarget().message;
    } else if (kind == "BU_EV_REL_") {
        relation.object = scanner_.text(scanner_.word());
    } else {
        throw DbcError{DbcFault::Expected, kind.data(), QStringLiteral("BU_SG_REL_, BU_BO_REL_, BU_EV_REL_")};
    }
    scanner_.more();
    const char *place = scanner_.place();
    relation.value = checkedValue(relation.name, readAttributeValue(), place);
    result_.database.relations.append(relation);
    end();
}

// An enumeration's value is its text, whether the file has that or its number.
QVariant DbcParser::checkedValue(const QString &name, const QVariant &value, const char *place)
{
    const auto found = definitions_.find(name);
    if (found == definitions_.end())
        return value;
    const AttributeDefinition &definition = result_.database.attributeDefinitions.at(*found);
    if (definition.type != AttributeType::Enumeration)
        return value;
    if (value.type() != QVariant::String) {
        const qlonglong index = value.toLongLong();
        if (index >= 0 && index < definition.texts.size())
            return definition.texts.at(static_cast<int>(index));
    } else if (definition.texts.contains(value.toString())) {
        return value;
    }
    tell(DbcFault::UnknownEnumerationValue, place, name);
    return value;
}

void DbcParser::resolveDefaults()
{
    for (AttributeDefinition &definition : result_.database.attributeDefinitions) {
        QVariant value = defaults_.value(definition.name);
        if (definition.type == AttributeType::Enumeration && value.type() != QVariant::String && value.isValid()) {
            const qlonglong index = value.toLongLong();
            if (index >= 0 && index < definition.texts.size())
                value = definition.texts.at(static_cast<int>(index));
        }
        definition.defaultValue = value;
    }
}
