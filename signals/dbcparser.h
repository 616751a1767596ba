// The statements of a DBC file, one after the other, made a SignalDatabase. Used once, by readDbc().
#pragma once

#include "signals/dbcreader.h"
#include "signals/dbcscanner.h"

#include <QHash>

// The name that stands for "nobody" where a node is expected.
bool isPlaceholder(std::string_view node);
// VECTOR__INDEPENDENT_SIG_MSG, which keeps signals that belong to no message.
constexpr std::uint32_t kNoMessage = 0xC0000000;

class DbcParser
{
public:
    explicit DbcParser(const QByteArray &content) : scanner_(content) {}
    DbcResult read();

private:
    // What a message's statements need besides its definition.
    struct MessageNotes {
        const char *place; // of its name
        QHash<QByteArray, int> indexes;
        // Of every signal:
        QVector<const char *> places;
        QVector<std::int64_t> selectors; // the number behind "m"
        QVector<bool> multiplexed;       // by "m"
    };
    // Where a statement's message or signal is; without one the statement is about something else or left out.
    struct Target {
        int message = -1;
        int signal = -1;
    };

    void statement();
    void readVersion();
    void readNodes();
    void readValueTable();
    void readMessage();
    void readSignal();
    void readMultiplexing(SignalDefinition *signal, MessageNotes *notes);
    void readLimits(SignalDefinition *signal);
    QStringList readReceivers();
    void readSenders();
    void readComment();
    void readValueTexts();
    void readValueType();
    void readGroup();
    void readSelectors();
    ValueTexts readPairs();

    void readAttributeDefinition(bool relation);
    void readAttributeDefault();
    void readAttribute();
    void readRelation();
    QVariant readAttributeValue();

    void resolveAll();
    void resolveDefaults();
    QVariant checkedValue(const QString &name, const QVariant &value, const char *place);
    void resolveFormats();
    void resolveMultiplexing(int messageIndex);
    void breakLoops(int messageIndex);
    void resolveNames();

    Target messageTarget(); // reads an identifier
    Target signalTarget();  // reads an identifier and a name
    int signalOf(int message, std::string_view name);
    NodeDefinition *nodeNamed(std::string_view name);
    MessageDefinition &messageOf(Target target) { return result_.database.messages[target.message]; }
    SignalDefinition &definitionOf(Target target) { return messageOf(target).signalList[target.signal]; }
    void end();
    void tell(DbcFault fault, const char *place, const QString &detail = {});

    DbcScanner scanner_;
    DbcResult result_;
    QHash<std::uint32_t, int> messageIndexes_; // by identifier and flag as the file has them
    QHash<QString, int> nodeIndexes_;
    QVector<MessageNotes> notes_;     // of every message
    int currentMessage_ = -1;         // that SG_ belongs to
    bool skippingSignals_ = false;    // those of a message that is none, or could not be read
    QHash<QString, int> definitions_; // attributes by name
    QHash<QString, QVariant> defaults_;
};
