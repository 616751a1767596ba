// A signal database: what the messages of a bus are called and which values their bytes carry. Plain data, without a
// link to the file it came from.
#pragma once

#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

#include <cstdint>
#include <optional>

enum class ByteOrder : std::uint8_t { Intel, Motorola };
enum class SignalType : std::uint8_t { Unsigned, Signed, Float, Double };

struct ValueText {
    std::int64_t value; // raw; of an unsigned signal of 64 bits the same bits
    QString text;
};
using ValueTexts = QVector<ValueText>; // ascending by value, each value once

// Raw values of a multiplexer, both ends included.
struct SelectorRange {
    std::int64_t first;
    std::int64_t last;
};

// Values are qlonglong, double or QString; those of an enumeration are its texts.
using Attributes = QMap<QString, QVariant>;

struct SignalDefinition {
    QString name;
    QString unit;
    QString comment;
    QStringList receivers; // without the placeholder for "nobody"
    // Bit b lies in byte b / 8 at value 2 ^ (b % 8). Intel: the least significant bit; Motorola: the most significant.
    std::uint16_t startBit = 0;
    std::uint8_t bits = 1; // 1..64; 32 of a Float, 64 of a Double
    ByteOrder byteOrder = ByteOrder::Intel;
    SignalType type = SignalType::Unsigned;
    bool multiplexer = false;
    int multiplexedBy = -1;            // index of its multiplexer in the message; -1: always there
    QVector<SelectorRange> selectedBy; // the multiplexer's values with which it is there
    double factor = 1;                 // never 0
    double offset = 0;
    double minimum = 0; // physical; see hasLimits()
    double maximum = 0;
    std::optional<double> startValue; // raw
    ValueTexts valueTexts;
    Attributes attributes;

    bool hasLimits() const { return minimum < maximum; }
    // The text of a raw value; nullptr when it has none.
    const QString *valueText(std::int64_t raw) const;
    // Bytes that a frame must have to carry it.
    unsigned neededBytes() const;
};

struct SignalGroup {
    QString name;
    QVector<int> members; // indexes in the message
};

struct MessageDefinition {
    std::uint32_t id = 0; // 11 or 29 bits without flags
    bool extended = false;
    bool fd = false;
    bool bitRateSwitch = false;
    bool j1939 = false;       // found by its parameter group
    std::uint16_t length = 0; // bytes; above 64 of messages that a transport protocol carries in pieces
    unsigned cycleTimeMs = 0; // 0: not cyclic, or unknown
    QString name;
    QString comment;
    QStringList senders;
    QVector<SignalDefinition> signalList; // in the file's order
    QVector<SignalGroup> groups;
    Attributes attributes;

    // Index of the signal of this name, -1 when there is none.
    int indexOf(const QString &signalName) const;
};

struct NodeDefinition {
    QString name;
    QString comment;
    Attributes attributes;
};

enum class AttributeOwner : std::uint8_t { Network, Node, Message, Signal, Environment, Relation };
enum class AttributeType : std::uint8_t { Integer, Hexadecimal, Real, Text, Enumeration };

struct AttributeDefinition {
    QString name;
    AttributeOwner owner = AttributeOwner::Network;
    AttributeType type = AttributeType::Text;
    double minimum = 0;
    double maximum = 0;
    QStringList texts; // of an enumeration
    QVariant defaultValue;
};

// An attribute of a node together with a message, a signal of it or an environment variable.
struct RelationAttribute {
    QString name;
    QString node;
    int message = -1; // index in the database; -1: an environment variable
    QString object;   // signal or environment variable; empty: the message itself
    QVariant value;
};

struct SignalDatabase {
    QString version;
    QString comment;
    QVector<NodeDefinition> nodes;
    QVector<MessageDefinition> messages; // in the file's order, no identifier twice
    QMap<QString, ValueTexts> valueTables;
    QVector<AttributeDefinition> attributeDefinitions;
    Attributes attributes;
    QVector<RelationAttribute> relations;

    // What `own`, a message's or signal's attributes, says, else the definition's default, else an invalid value.
    QVariant attribute(const Attributes &own, const QString &name) const;
    int signalCount() const;
};
