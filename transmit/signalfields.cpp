#include "transmit/signalfields.h"

#include "device/driver/numbertext.h"
#include "device/language.h"
#include "signals/encoder.h"
#include "signals/valuetext.h"
#include "transmit/framechecks.h"
#include "transmit/transmitmodel.h"

#include <QLocale>

#include <algorithm>

namespace
{

bool isInteger(const SignalDefinition &signal)
{
    return signal.type == SignalType::Signed || signal.type == SignalType::Unsigned;
}

QString rawText(const SignalDefinition &signal, std::int64_t raw)
{
    if (!isInteger(signal))
        return QStringLiteral("0x") + QString::number(static_cast<quint64>(raw), kHexBase).toUpper();
    return signal.type == SignalType::Signed ? QString::number(raw) : QString::number(static_cast<quint64>(raw));
}

QString fieldText(const SignalDefinition &signal, const SignalValue &value)
{
    const QString *text = isInteger(signal) ? signal.valueText(value.raw) : nullptr;
    return text ? *text : valueText(signal, value);
}

QString bitsText(const SignalDefinition &signal)
{
    const QString bits = QStringLiteral("%1:%2").arg(signal.startBit).arg(signal.bits);
    return signal.byteOrder == ByteOrder::Motorola ? bits + QStringLiteral(" be") : bits;
}

QString rangeText(const SignalDefinition &signal)
{
    return signal.hasLimits() ? valueText(signal.minimum) + QStringLiteral("..") + valueText(signal.maximum)
                              : QString();
}

QStringList valueTexts(const SignalDefinition &signal)
{
    QStringList texts;
    for (const ValueText &value : signal.valueTexts)
        texts << value.text;
    return texts;
}

// A value text, or a number.
std::optional<SignalInput> physicalInput(const SignalDefinition &signal, int index, const QString &text)
{
    SignalInput input;
    input.signal = index;
    const auto *const known = std::find_if(signal.valueTexts.begin(), signal.valueTexts.end(),
                                           [&text](const ValueText &value) { return value.text == text; });
    if (known != signal.valueTexts.end()) {
        input.raw = known->value;
        return input;
    }
    bool isNumber = false;
    input.physical = QLocale::c().toDouble(text.trimmed(), &isNumber);
    return isNumber ? std::optional<SignalInput>(input) : std::nullopt;
}

// Decimal, or hexadecimal with "0x".
std::optional<SignalInput> rawInput(const SignalDefinition &signal, int index, const QString &text)
{
    const QString number = text.trimmed();
    bool isNumber = false;
    SignalInput input;
    input.signal = index;
    input.raw = number.startsWith(QLatin1Char('-')) || signal.type == SignalType::Signed
                    ? number.toLongLong(&isNumber, 0)
                    : static_cast<std::int64_t>(number.toULongLong(&isNumber, 0));
    return isNumber ? std::optional<SignalInput>(input) : std::nullopt;
}

} // namespace

void SignalFields::show(const TransmitEntryPointer &entry, const std::shared_ptr<const MessageLookup> &lookup)
{
    const KnownMessage *message = nullptr;
    if (entry && lookup && !entry->frame.remote)
        message = lookup->find(entry->channel + 1, entry->frame.id, entry->frame.extended);
    if (message && message->definition->signalList.isEmpty())
        message = nullptr;
    const bool sameRows = message == message_ && lookup == lookup_;
    if (!sameRows)
        beginResetModel();
    entry_ = entry;
    lookup_ = lookup;
    message_ = message;
    values_.resize(message ? static_cast<std::size_t>(message->decoder.signalCount()) : 0);
    if (message)
        message->decoder.decode(entry->frame.data, entry->frame.length, values_.data());
    if (!sameRows)
        endResetModel();
    else if (message)
        emit dataChanged(index(0, FieldValueColumn), index(rowCount() - 1, FieldRawColumn));
}

QString SignalFields::messageName() const
{
    return message_ ? message_->definition->name : QString();
}

void SignalFields::retranslate()
{
    emit headerDataChanged(Qt::Horizontal, 0, SignalFieldColumnCount - 1);
}

int SignalFields::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(values_.size());
}

int SignalFields::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : SignalFieldColumnCount;
}

QVariant SignalFields::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal)
        return {};
    switch (section) {
    case FieldNameColumn:
        return text3("信号", "訊號", "Signal");
    case FieldValueColumn:
        return text3("值", "值", "Value");
    case FieldUnitColumn:
        return text3("单位", "單位", "Unit");
    case FieldRawColumn:
        return text3("原始值", "原始值", "Raw");
    case FieldBitsColumn:
        return text3("位", "位元", "Bits");
    case FieldRangeColumn:
        return text3("范围", "範圍", "Range");
    default:
        return text3("注释", "註解", "Comment");
    }
}

QString SignalFields::cellText(int row, int column) const
{
    const SignalDefinition &signal = message_->definition->signalList.at(row);
    const SignalValue &value = values_[static_cast<std::size_t>(row)];
    switch (column) {
    case FieldNameColumn:
        return signal.name;
    case FieldValueColumn:
        return value.state == SignalState::Valid ? fieldText(signal, value) : QString();
    case FieldUnitColumn:
        return signal.unit;
    case FieldRawColumn:
        return value.state == SignalState::Valid ? rawText(signal, value.raw) : QString();
    case FieldBitsColumn:
        return bitsText(signal);
    case FieldRangeColumn:
        return rangeText(signal);
    default:
        return signal.comment.simplified();
    }
}

QVariant SignalFields::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return cellText(index.row(), index.column());
    case ChoicesRole:
        return index.column() == FieldValueColumn ? valueTexts(message_->definition->signalList.at(index.row()))
                                                  : QStringList();
    case Qt::TextAlignmentRole:
        return index.column() == FieldValueColumn || index.column() == FieldRawColumn
                   ? int(Qt::AlignRight | Qt::AlignVCenter)
                   : QVariant();
    default:
        return {};
    }
}

Qt::ItemFlags SignalFields::flags(const QModelIndex &index) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return Qt::NoItemFlags;
    const SignalDefinition &signal = message_->definition->signalList.at(index.row());
    const bool editable =
        values_[static_cast<std::size_t>(index.row())].state != SignalState::BeyondFrame &&
        (index.column() == FieldValueColumn || (index.column() == FieldRawColumn && isInteger(signal)));
    const Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    return editable ? flags | Qt::ItemIsEditable : flags;
}

bool SignalFields::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::EditRole || !(flags(index) & Qt::ItemIsEditable))
        return false;
    const SignalDefinition &signal = message_->definition->signalList.at(index.row());
    if (value.toString() == cellText(index.row(), index.column())) {
        emit told({}); // rounded, as it may be, it stands for what is there
        return true;
    }
    const bool raw = index.column() == FieldRawColumn;
    const auto input =
        raw ? rawInput(signal, index.row(), value.toString()) : physicalInput(signal, index.row(), value.toString());
    if (!input) {
        emit told(text3("“%1”不是数值", "「%1」不是數值", "\"%1\" is no value").arg(value.toString()));
        return false;
    }
    auto changed = std::make_shared<TransmitEntry>(*entry_);
    const bool named = input->raw.has_value(); // a value text may stand for what the limits leave out
    const EncodeResult result = MessageEncoder(*message_->definition)
                                    .encode({*input}, changed->frame.data, changed->frame.length,
                                            named ? EncodeLimits::Representable : EncodeLimits::Declared)
                                    .front();
    if (result.outcome == EncodeOutcome::Refused) {
        emit told(refusalText(result.refusal));
        return false;
    }
    emit told(
        result.outcome == EncodeOutcome::Clamped
            ? text3("%1 限制为 %2", "%1 限制為 %2", "%1 is limited to %2").arg(signal.name, valueText(result.physical))
            : QString());
    emit edited(changed);
    return true;
}

bool isOneFrame(const MessageDefinition &message)
{
    return message.length <= (message.fd ? kRawDataBytes : kLongestClassicFrame);
}

TransmitEntryPointer entryOfMessage(const MessageDefinition &message, unsigned channel)
{
    auto entry = std::make_shared<TransmitEntry>();
    entry->serial = newTransmitSerial();
    entry->channel = channel;
    entry->name = message.name;
    entry->comment = message.comment.simplified();
    RawFrame &frame = entry->frame;
    frame.id = message.id;
    frame.extended = message.extended;
    frame.fd = message.fd;
    frame.bitRateSwitch = message.fd && message.bitRateSwitch;
    const MessageEncoder encoder(message);
    // Of FD frames only some lengths exist: the next one.
    frame.length = lengthOfDlc(dlcOfLength(encoder.payloadLength()), frame.fd);
    encoder.start(frame.data, frame.length);
    const bool cyclic = message.cycleTimeMs > 0;
    entry->mode = cyclic ? TransmitMode::Periodic : TransmitMode::OnRequest;
    if (cyclic)
        entry->interval = std::min(message.cycleTimeMs, kLongestInterval);
    return entry;
}
