#include "analysis/signaltreemodel.h"

#include "device/driver/timeunits.h"
#include "device/language.h"
#include "signals/valuetext.h"
#include "traces/frametexts.h"

#include <QGuiApplication>
#include <QMimeData>
#include <QPalette>

#include <cmath>

namespace
{
constexpr int kTimeDecimals = 3;

// An index's internal id: 0 of a channel, else the channel and, of a signal, the message.
constexpr quintptr kChannelBits = 2;
quintptr idOfMessage(int channel)
{
    return quintptr(channel) + 1;
}
quintptr idOfSignal(int channel, int message)
{
    return (quintptr(message) + 1) << kChannelBits | idOfMessage(channel);
}
int channelOf(quintptr id)
{
    return int(id & ((1U << kChannelBits) - 1)) - 1;
}
int messageOf(quintptr id)
{
    return int(id >> kChannelBits) - 1;
}

QString idText(const MessageDefinition &message)
{
    return QStringLiteral("0x") + identifierText(message.id, message.extended);
}

QString rawText(const SignalDefinition &signal, std::int64_t raw)
{
    if (signal.type == SignalType::Float || signal.type == SignalType::Double)
        return QStringLiteral("0x") + QString::number(quint64(raw), 16).toUpper();
    return signal.type == SignalType::Signed ? QString::number(raw) : QString::number(quint64(raw));
}

QString changeText(std::int64_t nanoseconds)
{
    return QString::number(double(nanoseconds) / kNanosecondsPerSecond, 'f', kTimeDecimals);
}
} // namespace

SignalTreeModel::SignalTreeModel(SignalHub *hub, QObject *parent) : QAbstractItemModel(parent), hub_(hub)
{
    connect(hub, &SignalHub::databasesChanged, this, &SignalTreeModel::rebuild);
    rebuild();
}

void SignalTreeModel::rebuild()
{
    beginResetModel();
    lookup_ = hub_->lookup();
    for (int channel = 0; channel < kChannels; ++channel) {
        std::vector<Node> &nodes = channels_[channel];
        nodes.clear();
        for (const DatabaseSet::Entry &entry : hub_->databases()->entries())
            for (const KnownMessage &message : entry.database->messages) {
                const MessageDefinition &definition = *message.definition;
                // Of two databases with the same identifier only the one that is used is shown.
                if (lookup_->find(unsigned(channel) + 1, definition.id, definition.extended) == &message)
                    nodes.push_back({&message, false, {}});
            }
    }
    endResetModel();
}

unsigned SignalTreeModel::changedColumns(const SignalRecord &before, const SignalRecord &now)
{
    if (before.state != now.state || before.seen != now.seen)
        return kAllColumns;
    unsigned columns = 0;
    if (before.value.raw != now.value.raw)
        columns |= bit(Value) | bit(Text) | bit(Raw);
    if (before.range.minimum != now.range.minimum)
        columns |= bit(Minimum);
    if (before.range.maximum != now.range.maximum)
        columns |= bit(Maximum);
    if (before.changed != now.changed)
        columns |= bit(Changed);
    return columns;
}

const std::vector<unsigned> &SignalTreeModel::refresh(const QModelIndex &index)
{
    changed_.clear();
    auto *node = const_cast<Node *>(nodeOf(index));
    if (!node)
        return changed_;
    const bool seen = node->seen;
    std::swap(before_, node->record);
    node->seen = hub_->store().read(unsigned(channelOf(index.internalId())) + 1, node->message, &node->record);
    const MessageRecord &now = node->record;
    if (seen && node->seen && before_.values.size() == now.values.size()) {
        changed_.push_back((before_.count != now.count ? bit(Value) : 0) |
                           (before_.length != now.length ? bit(Text) : 0));
        for (std::size_t i = 0; i < now.values.size(); ++i)
            changed_.push_back(changedColumns(before_.values[i], now.values[i]));
    } else {
        if (!node->seen)
            node->record = {};
        changed_.assign(std::size_t(node->message->decoder.signalCount()) + 1, seen || node->seen ? kAllColumns : 0);
    }
    return changed_;
}

const SignalTreeModel::Node *SignalTreeModel::nodeOf(const QModelIndex &index) const
{
    if (!index.isValid() || index.internalId() == 0)
        return nullptr;
    const int message = messageOf(index.internalId());
    return &channels_[channelOf(index.internalId())][std::size_t(message < 0 ? index.row() : message)];
}

bool SignalTreeModel::signalAt(const QModelIndex &index, SignalId *id) const
{
    const Node *node = nodeOf(index);
    if (!node || messageOf(index.internalId()) < 0)
        return false;
    const MessageDefinition &definition = *node->message->definition;
    *id = {std::uint16_t(channelOf(index.internalId()) + 1), definition.id, definition.extended,
           definition.signalList.at(index.row()).name};
    return true;
}

void SignalTreeModel::languageChanged()
{
    emit headerDataChanged(Qt::Horizontal, 0, ColumnCount - 1);
}

QModelIndex SignalTreeModel::index(int row, int column, const QModelIndex &parent) const
{
    if (row < 0 || row >= rowCount(parent) || column < 0 || column >= ColumnCount)
        return {};
    if (!parent.isValid())
        return createIndex(row, column, quintptr(0));
    if (parent.internalId() == 0)
        return createIndex(row, column, idOfMessage(parent.row()));
    return createIndex(row, column, idOfSignal(channelOf(parent.internalId()), parent.row()));
}

QModelIndex SignalTreeModel::parent(const QModelIndex &index) const
{
    if (!index.isValid() || index.internalId() == 0)
        return {};
    const int channel = channelOf(index.internalId());
    const int message = messageOf(index.internalId());
    return message < 0 ? createIndex(channel, 0, quintptr(0)) : createIndex(message, 0, idOfMessage(channel));
}

int SignalTreeModel::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return kChannels;
    if (parent.column() != 0)
        return 0;
    if (parent.internalId() == 0)
        return int(channels_[parent.row()].size());
    return messageOf(parent.internalId()) < 0 ? nodeOf(parent)->message->decoder.signalCount() : 0;
}

int SignalTreeModel::columnCount(const QModelIndex &) const
{
    return ColumnCount;
}

QString SignalTreeModel::messageText(const Node &node, int column) const
{
    const MessageDefinition &definition = *node.message->definition;
    switch (column) {
    case Name:
        return definition.name;
    case Value:
        return node.seen ? QString::number(node.record.count) : QString();
    case Unit:
        return text3("帧", "幀", "frames");
    case Raw:
        return idText(definition);
    case Text:
        if (node.seen && node.record.length < definition.length)
            return text3("长度不足：%1/%2字节", "長度不足：%1/%2位元組", "too short: %1 of %2 bytes")
                .arg(node.record.length)
                .arg(definition.length);
        return {};
    default:
        return {};
    }
}

QString SignalTreeModel::signalText(const Node &node, int signal, int column) const
{
    const SignalDefinition &definition = node.message->definition->signalList.at(signal);
    if (column == Name)
        return definition.name;
    if (column == Unit)
        return definition.unit;
    if (!node.seen)
        return {};
    const SignalRecord &record = node.record.values[std::size_t(signal)];
    if (column == Text && record.state == SignalState::BeyondFrame)
        return text3("不在帧内", "不在幀內", "not in the frame");
    if (!record.seen)
        return {};
    switch (column) {
    case Value:
        return valueText(definition, record.value);
    case Text: {
        const QString *text = definition.valueText(record.value.raw);
        return text ? *text : QString();
    }
    case Raw:
        return rawText(definition, record.value.raw);
    case Minimum:
        return record.range.isEmpty() ? QString() : valueText(record.range.minimum);
    case Maximum:
        return record.range.isEmpty() ? QString() : valueText(record.range.maximum);
    case Changed:
        return changeText(record.changed);
    default:
        return {};
    }
}

QString SignalTreeModel::toolTip(const Node &node, int signal) const
{
    const MessageDefinition &message = *node.message->definition;
    const QString comment = signal < 0 ? message.comment : message.signalList.at(signal).comment;
    // As plain text, whatever a database says.
    return comment.isEmpty() ? comment : QStringLiteral("<p>%1</p>").arg(comment.toHtmlEscaped().replace('\n', "<br>"));
}

QVariant SignalTreeModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const Node *node = nodeOf(index);
    if (!node) {
        if (role == Qt::DisplayRole && index.column() == Name)
            return text3("通道%1", "通道%1", "Channel %1").arg(index.row() + 1);
        return {};
    }
    const int signal = messageOf(index.internalId()) < 0 ? -1 : index.row();
    switch (role) {
    case Qt::DisplayRole:
        return signal < 0 ? messageText(*node, index.column()) : signalText(*node, signal, index.column());
    case Qt::ToolTipRole:
        return toolTip(*node, signal);
    case Qt::ForegroundRole: {
        const bool grey =
            !node->seen || (signal >= 0 && node->record.values[std::size_t(signal)].state != SignalState::Valid);
        return grey ? QVariant(QGuiApplication::palette().brush(QPalette::Disabled, QPalette::Text)) : QVariant();
    }
    case Qt::TextAlignmentRole:
        if (index.column() == Name || index.column() == Unit || index.column() == Text)
            return {};
        return int(Qt::AlignRight | Qt::AlignVCenter);
    default:
        return {};
    }
}

QVariant SignalTreeModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case Name:
        return text3("名称", "名稱", "Name");
    case Value:
        return text3("值", "值", "Value");
    case Unit:
        return text3("单位", "單位", "Unit");
    case Text:
        return text3("含义", "含義", "Meaning");
    case Raw:
        return text3("原始值", "原始值", "Raw");
    case Minimum:
        return text3("最小值", "最小值", "Minimum");
    case Maximum:
        return text3("最大值", "最大值", "Maximum");
    case Changed:
        return text3("变化时间(秒)", "變化時間(秒)", "Changed at (s)");
    default:
        return {};
    }
}

Qt::ItemFlags SignalTreeModel::flags(const QModelIndex &index) const
{
    const Qt::ItemFlags flags = QAbstractItemModel::flags(index);
    return index.isValid() && messageOf(index.internalId()) >= 0 ? flags | Qt::ItemIsDragEnabled : flags;
}

QStringList SignalTreeModel::mimeTypes() const
{
    return {QLatin1String(kSignalsMimeType)};
}

QMimeData *SignalTreeModel::mimeData(const QModelIndexList &indexes) const
{
    QStringList texts;
    SignalId id;
    for (const QModelIndex &index : indexes)
        if (index.column() == Name && signalAt(index, &id))
            texts.append(id.toText());
    auto *data = new QMimeData;
    data->setData(QLatin1String(kSignalsMimeType), texts.join('\n').toUtf8());
    return data;
}
