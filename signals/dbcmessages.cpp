#include "device/driver/identifiers.h"
#include "signals/dbcparser.h"

namespace
{

constexpr std::uint32_t kExtended = 0x80000000;
constexpr std::int64_t kMostBits = 64;
constexpr std::int64_t kMostStartBit = 0xFFFF - kMostBits;
constexpr std::int64_t kMostLength = 0xFFFF;

QByteArray bytes(std::string_view view)
{
    return {view.data(), static_cast<int>(view.size())};
}

} // namespace

void DbcParser::readMessage()
{
    currentMessage_ = -1;
    skippingSignals_ = true;
    scanner_.more();
    const char *place = scanner_.place();
    const std::uint32_t word = scanner_.messageWord();
    MessageDefinition message;
    message.id = word & ~kExtended;
    message.extended = message.id != word || message.id > kLargestStandardId;
    const std::uint32_t key = message.extended ? message.id | kExtended : message.id;
    const std::string_view name = scanner_.word();
    message.name = scanner_.text(name);
    scanner_.expect(':');
    scanner_.more();
    const char *lengthPlace = scanner_.place();
    const std::int64_t length = scanner_.integer();
    if (word == kNoMessage) {
        if (scanner_.moreOnLine())
            scanner_.word();
        return;
    }
    if (message.id > kLargestExtendedId)
        throw DbcError{DbcFault::BadIdentifier, place, QString::number(word)};
    if (length < 0 || length > kMostLength)
        throw DbcError{DbcFault::BadNumber, lengthPlace, QString::number(length)};
    if (messageIndexes_.contains(key))
        throw DbcError{DbcFault::RepeatedMessage, place, message.name};
    message.length = static_cast<std::uint16_t>(length);
    if (scanner_.moreOnLine()) {
        const std::string_view sender = scanner_.word();
        if (!isPlaceholder(sender))
            message.senders.append(scanner_.text(sender));
    }
    currentMessage_ = result_.database.messages.size();
    skippingSignals_ = false;
    if (key != word)
        tell(DbcFault::MissingExtendedFlag, place, QString::number(word));
    messageIndexes_.insert(word, currentMessage_);
    messageIndexes_.insert(key, currentMessage_);
    result_.database.messages.append(message);
    notes_.append(MessageNotes{name.data(), {}, {}, {}, {}});
}

void DbcParser::readMultiplexing(SignalDefinition *signal, MessageNotes *notes)
{
    std::int64_t selector = 0;
    const std::string_view mark = scanner_.peekWord();
    bool good = true;
    if (!mark.empty()) {
        scanner_.word();
        const std::size_t digits = mark.front() == 'm' ? mark.find_first_not_of("0123456789", 1) : 0;
        const std::string_view rest = digits == std::string_view::npos ? std::string_view() : mark.substr(digits);
        const std::string_view number = mark.substr(mark.front() == 'm', mark.size() - rest.size() - 1);
        signal->multiplexer = rest == "M";
        good = rest == "M" || rest.empty();
        if (mark.front() == 'm') {
            bool ok = false;
            selector = bytes(number).toLongLong(&ok);
            good = good && ok;
        }
    }
    if (!good)
        throw DbcError{DbcFault::Expected, mark.data(), QStringLiteral("M, m0, m0M")};
    notes->selectors.append(selector);
    notes->multiplexed.append(!mark.empty() && mark.front() == 'm');
}

void DbcParser::readLimits(SignalDefinition *signal)
{
    scanner_.expect('[');
    scanner_.more();
    const char *begin = scanner_.place();
    try {
        signal->minimum = scanner_.number();
        scanner_.expect('|');
        signal->maximum = scanner_.number();
        scanner_.expect(']');
    } catch (const DbcError &error) { // such as 1.#INF: as if it had none
        signal->minimum = signal->maximum = 0;
        scanner_.rewind(begin);
        if (!scanner_.skipOnLine(']'))
            throw;
        tell(error.fault, error.place, error.detail);
    }
}

QStringList DbcParser::readReceivers()
{
    QStringList receivers;
    while (scanner_.moreOnLine()) {
        const std::string_view name = scanner_.word();
        if (!isPlaceholder(name))
            receivers.append(scanner_.text(name));
        if (scanner_.moreOnLine() && scanner_.next(','))
            scanner_.more(); // a list may go on after its comma
    }
    return receivers;
}

void DbcParser::readSignal()
{
    const std::string_view name = scanner_.word();
    if (currentMessage_ < 0) {
        if (!skippingSignals_)
            throw DbcError{DbcFault::SignalWithoutMessage, name.data(), scanner_.text(name)};
        scanner_.skipOnLine('\n');
        return;
    }
    SignalDefinition signal;
    MessageNotes added; // becomes the message's when the whole signal is good
    signal.name = scanner_.text(name);
    readMultiplexing(&signal, &added);
    scanner_.expect(':');
    scanner_.more();
    const char *place = scanner_.place();
    const std::int64_t startBit = scanner_.integer();
    scanner_.expect('|');
    const std::int64_t bits = scanner_.integer();
    scanner_.expect('@');
    if (startBit < 0 || startBit > kMostStartBit || bits < 1 || bits > kMostBits)
        throw DbcError{DbcFault::BadSignalLayout, place, signal.name};
    signal.startBit = static_cast<std::uint16_t>(startBit);
    signal.bits = static_cast<std::uint8_t>(bits);
    if (scanner_.next('0'))
        signal.byteOrder = ByteOrder::Motorola;
    else if (!scanner_.next('1'))
        scanner_.expect('1');
    if (scanner_.next('-'))
        signal.type = SignalType::Signed;
    else
        scanner_.expect('+');
    scanner_.expect('(');
    signal.factor = scanner_.number();
    scanner_.expect(',');
    signal.offset = scanner_.number();
    scanner_.expect(')');
    readLimits(&signal);
    signal.unit = scanner_.unescaped(scanner_.quotedOnLine());
    signal.receivers = readReceivers();

    MessageNotes &notes = notes_[currentMessage_];
    MessageDefinition &message = result_.database.messages[currentMessage_];
    if (notes.indexes.contains(bytes(name)))
        throw DbcError{DbcFault::RepeatedSignal, name.data(), signal.name};
    if (signal.factor == 0) {
        tell(DbcFault::ZeroFactor, name.data(), signal.name);
        signal.factor = 1;
    }
    if (signal.neededBytes() > message.length)
        tell(DbcFault::BeyondMessage, name.data(), signal.name);
    notes.indexes.insert(bytes(name), message.signalList.size());
    notes.places.append(name.data());
    notes.selectors += added.selectors;
    notes.multiplexed += added.multiplexed;
    message.signalList.append(signal);
}
