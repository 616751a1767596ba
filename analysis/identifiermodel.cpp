#include "analysis/identifiermodel.h"

#include "analysis/plaincell.h"
#include "analysis/statisticstexts.h"
#include "device/language.h"

#include <QColor>

#include <algorithm>
#include <cstring>
#include <utility>

namespace
{

constexpr std::int64_t kFadeNs = 2'000'000'000; // a byte that changed is marked so long
constexpr int kStrongestMark = 200;
constexpr QRgb kMissingColour = 0x60E02020;
constexpr QRgb kViolatedColour = 0x60F0B000;
constexpr double kNever = -1; // before every number

bool isText(int column)
{
    return column == IdentifierModel::DirectionColumn || column == IdentifierModel::KindColumn ||
           column == IdentifierModel::DataColumn || column == IdentifierModel::SupervisionColumn ||
           column == IdentifierModel::MessageColumn;
}

int compareData(const IdentifierStatistics *a, const IdentifierStatistics *b)
{
    const unsigned lengthOfA = a ? a->last.length : 0;
    const unsigned lengthOfB = b ? b->last.length : 0;
    const unsigned common = std::min(lengthOfA, lengthOfB);
    const int order = common > 0 ? std::memcmp(a->last.data, b->last.data, common) : 0;
    return order != 0 ? order : static_cast<int>(lengthOfA) - static_cast<int>(lengthOfB);
}

} // namespace

// --- what stands where --------------------------------------------------------------------------------------------

const IdentifierKey &IdentifierModel::keyOf(std::size_t place) const
{
    const std::size_t seen = shown_.identifiers.size();
    return place < seen ? shown_.identifiers[place].key : shown_.absent[place - seen];
}

const IdentifierStatistics *IdentifierModel::entryAt(std::size_t place) const
{
    return place < shown_.identifiers.size() ? &shown_.identifiers[place] : nullptr;
}

const IdentifierStatistics *IdentifierModel::entry(int row) const
{
    return entryAt(order_[static_cast<std::size_t>(row)]);
}

const SupervisionMark *IdentifierModel::markOf(const IdentifierKey &key) const
{
    const auto found = shown_.marks.find(key.packed());
    return found == shown_.marks.end() ? nullptr : &found->second;
}

// --- another moment, another order --------------------------------------------------------------------------------

void IdentifierModel::show(StatisticsSnapshot &snapshot)
{
    const bool anew = snapshot.generation != shown_.generation;
    // Rows must not be asked for between the two.
    std::swap(shown_, snapshot);
    if (anew)
        names_.clear();
    findNames();
    rearrange(arranged(), anew);
}

void IdentifierModel::setLookup(std::shared_ptr<const MessageLookup> lookup)
{
    lookup_ = std::move(lookup);
    names_.clear();
    findNames();
    rearrange(arranged(), !words_.isEmpty());
}

const QString &IdentifierModel::foundName(const IdentifierKey &key) const
{
    const KnownMessage *known = lookup_ && !key.error ? lookup_->find(key.channel, key.id, key.extended) : nullptr;
    static const QString none;
    return known ? known->definition->name : none;
}

// Of those that came since; the identifiers of one count are only ever appended to.
void IdentifierModel::findNames()
{
    names_.reserve(shown_.identifiers.size());
    while (names_.size() < shown_.identifiers.size())
        names_.push_back(foundName(shown_.identifiers[names_.size()].key));
}

const QString &IdentifierModel::messageName(std::size_t place) const
{
    return place < names_.size() ? names_[place] : foundName(keyOf(place));
}

void IdentifierModel::setSearch(const QString &text)
{
    words_ = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    rearrange(arranged(), true);
}

void IdentifierModel::sort(int column, Qt::SortOrder order)
{
    sortColumn_ = column;
    sortOrder_ = order;
    rearrange(arranged(), false);
}

double IdentifierModel::number(std::size_t place, int column) const
{
    const IdentifierKey &key = keyOf(place);
    const IdentifierStatistics *entry = entryAt(place);
    const bool periods = entry && entry->period.count > 0;
    switch (column) {
    case ChannelColumn:
        return key.channel;
    case DirectionColumn:
        return key.direction == Direction::Sent ? 1 : 0;
    case IdColumn:
        return key.id;
    case KindColumn:
        return (key.error ? 4 : 0) + (key.remote ? 2 : 0) + (key.extended ? 1 : 0);
    case LengthColumn:
        return entry ? entry->last.length : kNever;
    case CountColumn:
        return entry ? static_cast<double>(entry->count) : 0;
    case PeriodColumn:
        return periods ? static_cast<double>(entry->period.now) : kNever;
    case MeanColumn:
        return periods ? entry->period.mean : kNever;
    case MinimumColumn:
        return periods ? static_cast<double>(entry->period.minimum) : kNever;
    case MaximumColumn:
        return periods ? static_cast<double>(entry->period.maximum) : kNever;
    case DeviationColumn:
        return periods ? entry->period.deviation() : kNever;
    case LastSeenColumn:
        return entry ? static_cast<double>(entry->lastSeen) : kNever;
    default:
        break;
    }
    const SupervisionMark *mark = column == SupervisionColumn ? markOf(key) : nullptr;
    double all = 0;
    for (const std::uint32_t count : mark ? mark->counts : decltype(SupervisionMark::counts){})
        all += count;
    return all;
}

QString IdentifierModel::searched(std::size_t place) const
{
    const IdentifierKey &key = keyOf(place);
    return QStringLiteral("CH%1 %2 %3 %4 %5 %6")
        .arg(QString::number(key.channel), directionText(key.direction), idText(key), kindText(key),
             supervisionText(place), messageName(place));
}

std::vector<std::size_t> IdentifierModel::arranged() const
{
    const std::size_t all = shown_.identifiers.size() + shown_.absent.size();
    std::vector<std::pair<double, std::size_t>> rows;
    rows.reserve(all);
    for (std::size_t place = 0; place < all; ++place) {
        if (!words_.isEmpty()) {
            const QString text = searched(place);
            if (!std::all_of(words_.begin(), words_.end(),
                             [&](const QString &word) { return text.contains(word, Qt::CaseInsensitive); }))
                continue;
        }
        rows.emplace_back(sortColumn_ < 0 ? 0 : number(place, sortColumn_), place);
    }
    const bool down = sortOrder_ == Qt::DescendingOrder;
    if (sortColumn_ == DataColumn)
        std::stable_sort(rows.begin(), rows.end(), [&](const auto &a, const auto &b) {
            const int order = compareData(entryAt(a.second), entryAt(b.second));
            return down ? order > 0 : order < 0;
        });
    else if (sortColumn_ == MessageColumn)
        std::stable_sort(rows.begin(), rows.end(), [&](const auto &a, const auto &b) {
            const int order = messageName(a.second).compare(messageName(b.second), Qt::CaseInsensitive);
            return down ? order > 0 : order < 0;
        });
    else if (sortColumn_ >= 0)
        std::stable_sort(rows.begin(), rows.end(),
                         [down](const auto &a, const auto &b) { return down ? a.first > b.first : a.first < b.first; });
    std::vector<std::size_t> order;
    order.reserve(rows.size());
    for (const auto &row : rows)
        order.push_back(row.second);
    return order;
}

// The rows as they are to be, telling the views no more than what has changed. anew: none of them is the old one.
void IdentifierModel::rearrange(std::vector<std::size_t> next, bool anew)
{
    std::vector<std::uint64_t> keys;
    keys.reserve(next.size());
    for (const std::size_t place : next)
        keys.push_back(keyOf(place).packed());
    if (anew || keys.size() < keys_.size()) {
        beginResetModel();
        order_ = std::move(next);
        keys_ = std::move(keys);
        endResetModel();
        return;
    }
    if (keys.size() > keys_.size()) {
        beginInsertRows({}, static_cast<int>(keys_.size()), static_cast<int>(keys.size()) - 1);
        order_ = next;
        keys_.resize(keys.size()); // the rows at the end; their keys are of nobody yet
        endInsertRows();
    }
    order_ = std::move(next);
    if (keys == keys_) {
        if (!keys_.empty())
            emit dataChanged(index(0, 0), index(static_cast<int>(keys_.size()) - 1, ColumnCount - 1));
        return;
    }
    emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    std::unordered_map<std::uint64_t, int> rows;
    if (!before.isEmpty())
        for (std::size_t row = 0; row < keys.size(); ++row)
            rows.emplace(keys[row], static_cast<int>(row));
    QModelIndexList after;
    for (const QModelIndex &old : before) {
        const auto found = rows.find(keys_[static_cast<std::size_t>(old.row())]);
        after.append(found == rows.end() ? QModelIndex() : index(found->second, old.column()));
    }
    changePersistentIndexList(before, after);
    keys_ = std::move(keys);
    emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

// --- what the views ask -------------------------------------------------------------------------------------------

int IdentifierModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(keys_.size());
}

int IdentifierModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QString IdentifierModel::supervisionText(std::size_t place) const
{
    const SupervisionMark *mark = markOf(keyOf(place));
    QStringList parts;
    for (const auto kind :
         {Violation::Kind::Missing, Violation::Kind::Late, Violation::Kind::Early, Violation::Kind::New}) {
        const std::uint32_t count = mark ? mark->count(kind) : 0;
        if (count == 1)
            parts.append(violationName(kind));
        else if (count > 1)
            parts.append(QStringLiteral("%1 %2").arg(violationName(kind)).arg(count));
    }
    return parts.join(QStringLiteral(", "));
}

QString IdentifierModel::text(int row, int column) const
{
    const std::size_t place = order_[static_cast<std::size_t>(row)];
    const IdentifierKey &key = keyOf(place);
    const IdentifierStatistics *entry = entryAt(place);
    switch (column) {
    case ChannelColumn:
        return QString::number(key.channel);
    case DirectionColumn:
        return directionText(key.direction);
    case IdColumn:
        return idText(key);
    case KindColumn:
        return kindText(key);
    case CountColumn:
        return QString::number(entry ? entry->count : 0);
    case DataColumn:
        return entry ? dataText(entry->last) : QString();
    case SupervisionColumn:
        return supervisionText(place);
    case MessageColumn:
        return messageName(place);
    default:
        break;
    }
    const double value = number(place, column);
    if (!entry || value == kNever)
        return {};
    if (column == LengthColumn)
        return QString::number(entry->last.length);
    return column == LastSeenColumn ? secondsText(entry->lastSeen) : millisecondsText(value);
}

QVariant IdentifierModel::background(int row, int column) const
{
    const SupervisionMark *mark = column == SupervisionColumn || column == IdColumn ? markOf(key(row)) : nullptr;
    if (!mark)
        return {};
    const IdentifierStatistics *seen = entry(row);
    const bool missing = mark->count(Violation::Kind::Missing) > 0 && (!seen || seen->lastSeen <= mark->missingAt);
    return QColor::fromRgba(missing ? kMissingColour : kViolatedColour);
}

QByteArray IdentifierModel::changes(int row) const
{
    const IdentifierStatistics *seen = entry(row);
    if (!seen || seen->last.remote)
        return {};
    QByteArray marks;
    for (int i = 0; i < seen->last.length; ++i) {
        const std::int64_t changed = seen->changedAt[static_cast<std::size_t>(i)];
        const std::int64_t age = changed == kNeverChanged ? kFadeNs : std::max<std::int64_t>(0, shown_.time - changed);
        marks.append(static_cast<char>(kStrongestMark - kStrongestMark * std::min(age, kFadeNs) / kFadeNs));
    }
    return marks;
}

QVariant IdentifierModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return text(index.row(), index.column());
    case Qt::TextAlignmentRole:
        return int(Qt::AlignVCenter | (isText(index.column()) ? Qt::AlignLeft : Qt::AlignRight));
    case Qt::BackgroundRole:
        return background(index.row(), index.column());
    case PlainCellDelegate::kMarksRole:
        return index.column() == DataColumn ? changes(index.row()) : QVariant();
    default:
        return {};
    }
}

QVariant IdentifierModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section >= ColumnCount)
        return {};
    if (role == Qt::TextAlignmentRole)
        return int(Qt::AlignVCenter | (isText(section) ? Qt::AlignLeft : Qt::AlignRight));
    if (role != Qt::DisplayRole)
        return {};
    switch (section) {
    case ChannelColumn:
        return text3("通道", "通道", "Channel");
    case DirectionColumn:
        return text3("方向", "方向", "Direction");
    case IdColumn:
        return QStringLiteral("ID");
    case KindColumn:
        return text3("帧类型", "幀類型", "Kind");
    case LengthColumn:
        return text3("长度", "長度", "Length");
    case CountColumn:
        return text3("帧数", "幀數", "Count");
    case DataColumn:
        return text3("数据", "數據", "Data");
    case PeriodColumn:
        return text3("周期(ms)", "週期(ms)", "Period (ms)");
    case MeanColumn:
        return text3("平均(ms)", "平均(ms)", "Mean (ms)");
    case MinimumColumn:
        return text3("最小(ms)", "最小(ms)", "Min (ms)");
    case MaximumColumn:
        return text3("最大(ms)", "最大(ms)", "Max (ms)");
    case DeviationColumn:
        return text3("标准差(ms)", "標準差(ms)", "Std dev (ms)");
    case LastSeenColumn:
        return text3("最近(s)", "最近(s)", "Last seen (s)");
    case SupervisionColumn:
        return text3("监视", "監視", "Supervision");
    case MessageColumn:
        return text3("报文", "訊息", "Message");
    default:
        return {};
    }
}

void IdentifierModel::setTexts()
{
    emit headerDataChanged(Qt::Horizontal, 0, ColumnCount - 1);
    if (!keys_.empty())
        emit dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1));
}

QByteArray IdentifierModel::csv() const
{
    QString text = QStringLiteral("\uFEFF");
    for (int column = 0; column < ColumnCount; ++column)
        text += (column > 0 ? QStringLiteral(",") : QString()) +
                headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
    text += QLatin1Char('\n');
    for (int row = 0; row < rowCount(); ++row) {
        for (int column = 0; column < ColumnCount; ++column)
            text += (column > 0 ? QStringLiteral(",") : QString()) +
                    this->text(row, column).replace(QLatin1Char(','), QLatin1Char(';'));
        text += QLatin1Char('\n');
    }
    return text.toUtf8();
}
