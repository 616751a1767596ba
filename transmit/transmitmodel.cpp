#include "transmit/transmitmodel.h"

#include "device/driver/numbertext.h"
#include "device/language.h"
#include "transmit/datatext.h"
#include "transmit/framechecks.h"
#include "transmit/transmitnames.h"

#include <QDateTime>
#include <QLocale>

#include <algorithm>

namespace
{

constexpr char kCountPattern[] = "^[1-9][0-9]{0,11}$";
constexpr char kAwaitsPattern[] = "^(0[xX])?[0-9a-fA-F]{1,8}(/[0-9a-fA-F]{1,8})?$";
constexpr char kOptionalDataPattern[] = "^[0-9a-fA-F ]*$";

QStringList choices(const TransmitEntry &entry, int column)
{
    switch (column) {
    case EntryChannelColumn:
        return {QStringLiteral("1"), QStringLiteral("2")};
    case EntryFormatColumn:
        return formatTexts();
    case EntryTypeColumn:
        return frameTypeTexts();
    case EntryProtocolColumn:
        return protocolTexts();
    case SendTypeColumn:
        return transmitTypeTexts();
    case LengthColumn:
        return lengthTexts(entry.frame.fd);
    case ModeColumn:
        return transmitModeTexts();
    case KeyColumn:
        return QStringList(QString()) + transmitKeys();
    default:
        return {};
    }
}

int choice(const TransmitEntry &entry, int column)
{
    switch (column) {
    case EntryChannelColumn:
        return static_cast<int>(entry.channel);
    case EntryFormatColumn:
        return entry.frame.extended ? ExtendedFormat : StandardFormat;
    case EntryTypeColumn:
        return entry.frame.remote ? RemoteFrame : DataFrame;
    case EntryProtocolColumn:
        return protocolOf(entry.frame);
    case SendTypeColumn:
        return static_cast<int>(entry.type);
    case LengthColumn:
        return dlcOfLength(entry.frame.length);
    case ModeColumn:
        return static_cast<int>(entry.mode);
    case KeyColumn:
        return transmitKeys().indexOf(entry.key) + 1;
    default:
        return -1;
    }
}

QString pattern(int column)
{
    switch (column) {
    case EntryIdColumn:
        return QLatin1String(kIdentifierPattern);
    case EntryDataColumn:
        return QLatin1String(kOptionalDataPattern);
    case IntervalColumn:
        return QLatin1String(kIntervalPattern);
    case CountColumn:
        return QLatin1String(kCountPattern);
    case AwaitsColumn:
        return QLatin1String(kAwaitsPattern);
    default:
        return {};
    }
}

void setData(RawFrame &frame, const QString &text)
{
    const QByteArray bytes = dataBytes(normalizedDataText(text)).left(frame.length);
    std::fill(std::begin(frame.data), std::end(frame.data), std::uint8_t(0));
    std::copy(bytes.begin(), bytes.end(), frame.data);
}

void setLength(RawFrame &frame, unsigned length)
{
    frame.length = static_cast<std::uint8_t>(length);
    std::fill(frame.data + length, std::end(frame.data), std::uint8_t(0));
}

void setChoice(TransmitEntry &entry, int column, int index)
{
    RawFrame &frame = entry.frame;
    switch (column) {
    case EntryChannelColumn:
        entry.channel = static_cast<unsigned>(index);
        break;
    case EntryFormatColumn:
        frame.extended = index == ExtendedFormat;
        break;
    case EntryTypeColumn:
        frame.remote = index == RemoteFrame;
        if (frame.remote)
            setProtocol(frame, ClassicCan);
        setLength(frame, frame.length);
        break;
    case EntryProtocolColumn:
        setProtocol(frame, index);
        frame.remote = frame.remote && !frame.fd;
        setLength(frame, frame.length);
        break;
    case SendTypeColumn:
        entry.type = static_cast<TransmitType>(index);
        break;
    case LengthColumn:
        setLength(frame, lengthOfDlc(static_cast<unsigned>(index), frame.fd));
        break;
    case ModeColumn:
        entry.mode = static_cast<TransmitMode>(index);
        if (entry.interval == 0 && entry.mode != TransmitMode::Response)
            entry.interval = 1;
        break;
    case KeyColumn:
        entry.key = index == 0 ? QString() : transmitKeys().at(index - 1);
        break;
    default:
        break;
    }
}

QString setText(TransmitEntry &entry, int column, const QString &text)
{
    unsigned identifier = 0;
    switch (column) {
    case NameColumn:
        entry.name = text;
        break;
    case EntryIdColumn:
        if (!identifierFits(text, entry.frame.extended, &identifier))
            return identifierRangeText(entry.frame.extended, entry.channel);
        entry.frame.id = identifier;
        break;
    case EntryDataColumn:
        setData(entry.frame, text);
        break;
    case IntervalColumn:
        entry.interval = text.toUInt();
        break;
    case CountColumn:
        entry.count = text.toULongLong();
        break;
    case AwaitsColumn:
        if (!setAwaited(entry, text))
            return text3("应为ID或ID/掩码（十六进制）", "應為ID或ID/遮罩（十六進位）",
                         "An ID or ID/mask is expected, hexadecimal");
        break;
    case ChangesColumn:
        return setChanges(entry, text);
    case CommentColumn:
        entry.comment = text;
        break;
    default:
        break;
    }
    return {};
}

bool isCountColumn(int column)
{
    return column == SentColumn || column == RefusedColumn || column == LastSentColumn;
}

bool isNumberColumn(int column)
{
    return column == EntryChannelColumn || column == EntryIdColumn || column == LengthColumn ||
           column == IntervalColumn || column == CountColumn || column == SentColumn || column == RefusedColumn;
}

bool isCheckColumn(int column)
{
    return column == OnColumn || column == ResumesColumn;
}

} // namespace

QString setTransmitField(TransmitEntry &entry, int column, const QVariant &value)
{
    QString problem;
    const QStringList all = choices(entry, column);
    if (column == OnColumn)
        entry.on = value.toBool();
    else if (column == ResumesColumn)
        entry.resumes = value.toBool();
    else if (all.isEmpty())
        problem = setText(entry, column, value.toString());
    else if (value.toInt() >= 0 && value.toInt() < all.size())
        setChoice(entry, column, value.toInt());
    return problem.isEmpty() ? transmitProblem(entry) : problem;
}

void TransmitModel::setList(const TransmitList &list)
{
    const bool samePlaces =
        list.size() == list_.size() &&
        std::equal(list.begin(), list.end(), list_.begin(),
                   [](const TransmitEntryPointer &a, const TransmitEntryPointer &b) { return a->serial == b->serial; });
    if (samePlaces) {
        const TransmitList before = list_;
        list_ = list;
        for (int row = 0; row < list.size(); ++row)
            if (list.at(row) != before.at(row))
                emit dataChanged(index(row, 0), index(row, TransmitColumnCount - 1));
        return;
    }
    beginResetModel();
    list_ = list;
    endResetModel();
}

void TransmitModel::setCounts(const std::vector<TransmitCounts> &counts)
{
    int first = -1;
    int last = -1;
    for (int row = 0; row < static_cast<int>(counts.size()); ++row) {
        const TransmitCounts &count = counts[static_cast<std::size_t>(row)];
        TransmitCounts &shown = counts_[count.serial];
        if (shown.sent == count.sent && shown.refused == count.refused && shown.lastSent == count.lastSent)
            continue;
        shown = count;
        first = first < 0 ? row : first;
        last = row;
    }
    if (first >= 0 && last < list_.size())
        emit dataChanged(index(first, SentColumn), index(last, LastSentColumn), {Qt::DisplayRole});
}

void TransmitModel::retranslate()
{
    emit headerDataChanged(Qt::Horizontal, 0, TransmitColumnCount - 1);
    if (!list_.isEmpty())
        emit dataChanged(index(0, 0), index(list_.size() - 1, TransmitColumnCount - 1));
}

int TransmitModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : list_.size();
}

int TransmitModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : TransmitColumnCount;
}

QVariant TransmitModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole)
        return {};
    if (orientation == Qt::Vertical)
        return section + 1;
    switch (section) {
    case OnColumn:
        return text3("启用", "啟用", "On");
    case NameColumn:
        return text3("名称", "名稱", "Name");
    case EntryChannelColumn:
        return text3("通道", "通道", "Channel");
    case EntryIdColumn:
        return QStringLiteral("ID(0x)");
    case EntryFormatColumn:
        return text3("帧格式", "幀格式", "Format");
    case EntryTypeColumn:
        return text3("帧类型", "幀類型", "Type");
    case EntryProtocolColumn:
        return text3("协议", "協議", "Protocol");
    case SendTypeColumn:
        return text3("发送方式", "發送方式", "Send type");
    case LengthColumn:
        return text3("长度", "長度", "Length");
    case EntryDataColumn:
        return text3("数据(0x)", "數據(0x)", "Data(0x)");
    case ModeColumn:
        return text3("模式", "模式", "Mode");
    case IntervalColumn:
        return text3("间隔(ms)", "間隔(ms)", "Interval(ms)");
    case CountColumn:
        return text3("次数", "次數", "Count");
    case AwaitsColumn:
        return text3("等待的ID", "等待的ID", "Awaited ID");
    case KeyColumn:
        return text3("按键", "按鍵", "Key");
    case ChangesColumn:
        return text3("数据变化", "數據變化", "Changes");
    case ResumesColumn:
        return text3("通道重开后继续", "通道重開後繼續", "Resumes");
    case SentColumn:
        return text3("已发送", "已發送", "Sent");
    case RefusedColumn:
        return text3("被拒绝", "被拒絕", "Refused");
    case LastSentColumn:
        return text3("最近发送", "最近發送", "Last sent");
    default:
        return text3("备注", "備註", "Comment");
    }
}

QString TransmitModel::countText(const TransmitEntry &entry, int column) const
{
    const TransmitCounts counts = counts_.value(entry.serial);
    if (column == SentColumn)
        return QString::number(counts.sent);
    if (column == RefusedColumn)
        return QString::number(counts.refused);
    if (counts.lastSent == 0)
        return {};
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(counts.lastSent);
    return QLocale::c().toString(time, QStringLiteral("hh:mm:ss.zzz"));
}

QString TransmitModel::text(const TransmitEntry &entry, int column) const
{
    if (isCountColumn(column))
        return countText(entry, column);
    switch (column) {
    case NameColumn:
        return entry.name;
    case EntryIdColumn:
        return QStringLiteral("%1")
            .arg(entry.frame.id, entry.frame.extended ? 8 : 3, kHexBase, QLatin1Char('0'))
            .toUpper();
    case EntryDataColumn:
        return entry.frame.remote
                   ? QString()
                   : dataText(QByteArray(reinterpret_cast<const char *>(entry.frame.data), entry.frame.length));
    case IntervalColumn:
        return entry.mode == TransmitMode::OnRequest ? QString() : QString::number(entry.interval);
    case CountColumn:
        return entry.mode == TransmitMode::Counted ? QString::number(entry.count) : QString();
    case AwaitsColumn:
        return entry.mode == TransmitMode::Response ? awaitedText(entry) : QString();
    case ChangesColumn:
        return entry.changesText;
    case CommentColumn:
        return entry.comment;
    default:
        return choices(entry, column).value(choice(entry, column));
    }
}

QVariant TransmitModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= list_.size())
        return {};
    const TransmitEntry &entry = *list_.at(index.row());
    const int column = index.column();
    switch (role) {
    case Qt::DisplayRole:
        return isCheckColumn(column) ? QVariant() : text(entry, column);
    case Qt::EditRole:
        if (isCheckColumn(column))
            return column == OnColumn ? entry.on : entry.resumes;
        return choices(entry, column).isEmpty() ? QVariant(text(entry, column)) : QVariant(choice(entry, column));
    case Qt::CheckStateRole:
        if (isCheckColumn(column))
            return (column == OnColumn ? entry.on : entry.resumes) ? Qt::Checked : Qt::Unchecked;
        return {};
    case ChoicesRole:
        return choices(entry, column);
    case PatternRole:
        return pattern(column);
    case Qt::TextAlignmentRole:
        return isNumberColumn(column) ? int(Qt::AlignRight | Qt::AlignVCenter) : QVariant();
    default:
        return {};
    }
}

Qt::ItemFlags TransmitModel::flags(const QModelIndex &index) const
{
    if (!index.isValid() || index.row() >= list_.size())
        return Qt::NoItemFlags;
    const TransmitEntry &entry = *list_.at(index.row());
    const Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    const int column = index.column();
    if (isCheckColumn(column))
        return flags | Qt::ItemIsUserCheckable;
    const bool used = !isCountColumn(column) && (column != EntryDataColumn || !entry.frame.remote) &&
                      (column != EntryProtocolColumn || !entry.frame.remote) &&
                      (column != IntervalColumn || entry.mode != TransmitMode::OnRequest) &&
                      (column != CountColumn || entry.mode == TransmitMode::Counted) &&
                      (column != AwaitsColumn || entry.mode == TransmitMode::Response);
    return used ? flags | Qt::ItemIsEditable : flags;
}

bool TransmitModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!index.isValid() || (role != Qt::EditRole && role != Qt::CheckStateRole))
        return false;
    return setCells({index.row()}, index.column(),
                    role == Qt::CheckStateRole ? QVariant(value.toInt() == Qt::Checked) : value);
}

bool TransmitModel::setCells(const QVector<int> &rows, int column, const QVariant &value)
{
    TransmitList changed = list_;
    for (const int row : rows) {
        if (row < 0 || row >= list_.size() || isCountColumn(column))
            return false;
        auto entry = std::make_shared<TransmitEntry>(*list_.at(row));
        const QString problem = setTransmitField(*entry, column, value);
        if (!problem.isEmpty()) {
            emit refused(problem);
            return false;
        }
        changed[row] = std::move(entry);
    }
    emit edited(changed);
    return true;
}
