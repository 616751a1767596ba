#include "analysis/comparisonmodel.h"

#include "analysis/statisticstexts.h"
#include "device/driver/timeunits.h"
#include "device/language.h"

#include <algorithm>

namespace
{

QString findingText(ComparisonModel::Finding finding)
{
    switch (finding) {
    case ComparisonModel::Finding::Same:
        return text3("数据相同", "數據相同", "same data");
    case ComparisonModel::Finding::OnlyLeft:
        return text3("仅左侧有", "僅左側有", "only left");
    case ComparisonModel::Finding::OnlyRight:
        return text3("仅右侧有", "僅右側有", "only right");
    case ComparisonModel::Finding::DataDiffer:
        return text3("数据不同", "數據不同", "data differ");
    }
    return {};
}

QString periodText(const ComparedSide &side)
{
    return side.period.count == 0 ? QString() : QString::number(side.period.mean / kNanosecondsPerMillisecond, 'f', 3);
}

// Shortest and longest distance.
QString periodTip(const ComparedSide &side)
{
    if (side.period.count == 0)
        return {};
    const auto ms = [](std::int64_t time) {
        return QString::number(static_cast<double>(time) / kNanosecondsPerMillisecond, 'f', 3);
    };
    return text3("%1 至 %2 毫秒", "%1 至 %2 毫秒", "%1 to %2 ms").arg(ms(side.period.minimum), ms(side.period.maximum));
}
} // namespace

ComparisonModel::Finding ComparisonModel::findingOf(const ComparedIdentifier &identifier)
{
    if (identifier.sides[1].count == 0)
        return Finding::OnlyLeft;
    if (identifier.sides[0].count == 0)
        return Finding::OnlyRight;
    return identifier.difference > 0 ? Finding::DataDiffer : Finding::Same;
}

void ComparisonModel::setResult(std::vector<ComparedIdentifier> result)
{
    beginResetModel();
    result_ = std::move(result);
    arrange();
    endResetModel();
}

QVariant ComparisonModel::alignment(int column)
{
    const bool isNumber =
        column == ChannelColumn || column == IdColumn || (column >= LeftCountColumn && column <= RightPeriodColumn);
    return int(Qt::AlignVCenter | (isNumber ? Qt::AlignRight : Qt::AlignLeft));
}

void ComparisonModel::setShown(Shown shown)
{
    beginResetModel();
    shownRows_ = shown;
    arrange();
    endResetModel();
}

void ComparisonModel::setTexts()
{
    emit headerDataChanged(Qt::Horizontal, 0, ColumnCount - 1);
    if (rowCount() > 0)
        emit dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1));
}

void ComparisonModel::sort(int column, Qt::SortOrder order)
{
    beginResetModel();
    sortColumn_ = column;
    sortOrder_ = order;
    arrange();
    endResetModel();
}

void ComparisonModel::arrange()
{
    order_.clear();
    for (std::size_t place = 0; place < result_.size(); ++place) {
        const Finding finding = findingOf(result_[place]);
        const bool inOne = finding == Finding::OnlyLeft || finding == Finding::OnlyRight;
        if (shownRows_ == Shown::Everything || (shownRows_ == Shown::OnlyInOne && inOne) ||
            (shownRows_ == Shown::DataDiffer && finding == Finding::DataDiffer))
            order_.push_back(place);
    }
    if (sortColumn_ < 0)
        return;
    std::stable_sort(order_.begin(), order_.end(), [this](std::size_t a, std::size_t b) {
        const std::size_t first = sortOrder_ == Qt::AscendingOrder ? a : b;
        const std::size_t second = sortOrder_ == Qt::AscendingOrder ? b : a;
        if (sortColumn_ == KindColumn || sortColumn_ == LeftDataColumn || sortColumn_ == RightDataColumn)
            return text(result_[first], sortColumn_) < text(result_[second], sortColumn_);
        return number(result_[first], sortColumn_) < number(result_[second], sortColumn_);
    });
}

double ComparisonModel::number(const ComparedIdentifier &identifier, int column)
{
    switch (column) {
    case ChannelColumn:
        return identifier.key.channel;
    case IdColumn:
        return identifier.key.id;
    case FindingColumn:
        return static_cast<int>(findingOf(identifier));
    case LeftCountColumn:
        return static_cast<double>(identifier.sides[0].count);
    case RightCountColumn:
        return static_cast<double>(identifier.sides[1].count);
    case LeftPeriodColumn:
        return identifier.sides[0].period.mean;
    case RightPeriodColumn:
        return identifier.sides[1].period.mean;
    default:
        return static_cast<double>(identifier.difference);
    }
}

QString ComparisonModel::text(const ComparedIdentifier &identifier, int column)
{
    const ComparedSide &left = identifier.sides[0];
    const ComparedSide &right = identifier.sides[1];
    const bool differs = identifier.difference > 0;
    switch (column) {
    case ChannelColumn:
        return identifier.key.channel > 0 ? QString::number(identifier.key.channel) : QString();
    case IdColumn:
        return idText(identifier.key);
    case KindColumn:
        return kindText(identifier.key);
    case FindingColumn:
        return findingText(findingOf(identifier));
    case LeftCountColumn:
        return QString::number(left.count);
    case RightCountColumn:
        return QString::number(right.count);
    case LeftPeriodColumn:
        return periodText(left);
    case RightPeriodColumn:
        return periodText(right);
    case DifferenceColumn:
        return differs ? text3("第 %1 帧（行 %2 / %3）", "第 %1 幀（列 %2 / %3）", "frame %1 (rows %2 / %3)")
                             .arg(identifier.difference)
                             .arg(left.row + 1)
                             .arg(right.row + 1)
                       : QString();
    case LeftDataColumn:
        return differs ? dataText(left.frame) : QString();
    case RightDataColumn:
        return differs ? dataText(right.frame) : QString();
    default:
        return {};
    }
}

int ComparisonModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(order_.size());
}

int ComparisonModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ComparisonModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const ComparedIdentifier &of = identifier(index.row());
    if (role == Qt::DisplayRole)
        return text(of, index.column());
    if (role == Qt::TextAlignmentRole)
        return alignment(index.column());
    if (role == Qt::ToolTipRole && (index.column() == LeftPeriodColumn || index.column() == RightPeriodColumn))
        return periodTip(of.sides[index.column() == LeftPeriodColumn ? 0 : 1]);
    return {};
}

QVariant ComparisonModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role == Qt::TextAlignmentRole && orientation == Qt::Horizontal)
        return alignment(section);
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal)
        return QAbstractTableModel::headerData(section, orientation, role);
    const QStringList titles = {text3("通道", "通道", "Channel"),
                                QStringLiteral("ID"),
                                text3("类型", "類型", "Kind"),
                                text3("结果", "結果", "Finding"),
                                text3("左侧帧数", "左側幀數", "Left frames"),
                                text3("右侧帧数", "右側幀數", "Right frames"),
                                text3("左侧周期 ms", "左側週期 ms", "Left period ms"),
                                text3("右侧周期 ms", "右側週期 ms", "Right period ms"),
                                text3("首个差异", "首個差異", "First difference"),
                                text3("左侧数据", "左側數據", "Left data"),
                                text3("右侧数据", "右側數據", "Right data")};
    return titles.value(section);
}
