#include "frames/mytablemodel.h"

#include <algorithm>

namespace
{
const QChar kFilterMark = QLatin1Char('*');

bool isText(int role)
{
    return role == Qt::DisplayRole || role == Qt::EditRole;
}

bool isTextColumn(int column)
{
    return column >= 0 && column < FrameColumnCount;
}
} // namespace

MyTableModel::MyTableModel(QObject *parent) : QAbstractTableModel(parent)
{
    for (int column = 0; column < FrameColumnCount; ++column)
        filters_.append(QStringList());
}

int MyTableModel::rowCount(const QModelIndex &) const
{
    return rows_.size();
}

int MyTableModel::columnCount(const QModelIndex &) const
{
    return header_.size();
}

QVariant MyTableModel::data(const QModelIndex &index, int role) const
{
    if (!isText(role) || !index.isValid() || index.row() >= rows_.size() || !isTextColumn(index.column()))
        return {};
    return rows_.at(index.row())[static_cast<std::size_t>(index.column())];
}

bool MyTableModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!isText(role) || !index.isValid() || index.row() >= rows_.size())
        return false;
    if (isTextColumn(index.column())) {
        dropIndex();
        rows_[index.row()][static_cast<std::size_t>(index.column())] = value.toString();
    }
    emit dataChanged(index, index, {role});
    return true;
}

QVariant MyTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 && section < header_.size())
        return header_.at(section);
    return QAbstractTableModel::headerData(section, orientation, role);
}

void MyTableModel::setHeader(const QStringList &titles)
{
    if (header_ != titles)
        header_ = titles;
}

QString MyTableModel::cellText(int row, int column) const
{
    if (row < 0 || row >= rows_.size() || !isTextColumn(column) || column >= columnCount())
        return {};
    return rows_.at(row)[static_cast<std::size_t>(column)];
}

void MyTableModel::appendRows(const QList<FrameRow> &rows)
{
    if (rows.isEmpty())
        return;
    dropIndex();
    beginInsertRows(QModelIndex(), rows_.size(), rows_.size() + rows.size() - 1);
    rows_.append(rows);
    endInsertRows();
}

void MyTableModel::mergeRow(const FrameRow &row)
{
    if (!indexValid_)
        buildIndex();
    const MergeKey key = keyOf(row);
    const auto found = index_.constFind(key);
    if (found == index_.constEnd()) {
        index_.insert(key, removedRows_ + rows_.size());
        insertAtEnd(row);
        return;
    }
    beginResetModel();
    rows_[static_cast<int>(*found - removedRows_)] = row;
    endResetModel();
}

void MyTableModel::insertAtEnd(const FrameRow &row)
{
    beginInsertRows(QModelIndex(), rows_.size(), rows_.size());
    rows_.append(row);
    endInsertRows();
}

void MyTableModel::removeFirstRows(int count)
{
    if (!indexUnique_)
        dropIndex();
    for (int left = std::min(count, rows_.size()); left > 0; --left) {
        beginRemoveRows(QModelIndex(), 0, 0);
        if (indexValid_) {
            index_.remove(keyOf(rows_.first()));
            ++removedRows_;
        }
        rows_.removeFirst();
        endRemoveRows();
    }
}

void MyTableModel::clear()
{
    dropIndex();
    if (rows_.isEmpty())
        return;
    beginRemoveRows(QModelIndex(), 0, rows_.size() - 1);
    rows_.clear();
    endRemoveRows();
}

MyTableModel::MergeKey MyTableModel::keyOf(const FrameRow &row)
{
    return {row[ChannelColumn], row[IdColumn], row[DirectionColumn]};
}

void MyTableModel::buildIndex()
{
    index_.clear();
    removedRows_ = 0;
    indexUnique_ = true;
    for (int row = 0; row < rows_.size(); ++row) {
        const MergeKey key = keyOf(rows_.at(row));
        if (index_.contains(key))
            indexUnique_ = false;
        else
            index_.insert(key, row);
    }
    indexValid_ = true;
}

void MyTableModel::dropIndex()
{
    index_.clear();
    indexValid_ = false;
    indexUnique_ = false;
}

void MyTableModel::setFilter(int column, const QStringList &accepted)
{
    if (column < 0 || column >= filters_.size() || filters_.at(column) == accepted)
        return;
    if (column < header_.size()) {
        QString &title = header_[column];
        const bool marked = title.endsWith(kFilterMark);
        if (accepted.isEmpty() && marked)
            title.chop(1);
        else if (!accepted.isEmpty() && !marked)
            title.append(kFilterMark);
    }
    filters_[column] = accepted;
    accepted_[static_cast<std::size_t>(column)] = QSet<QString>(accepted.cbegin(), accepted.cend());
    filtered_ =
        std::any_of(filters_.cbegin(), filters_.cend(), [](const QStringList &list) { return !list.isEmpty(); });
}

template <typename TextOf> bool MyTableModel::accepts(TextOf textOf) const
{
    if (!filtered_)
        return true;
    for (int column = 0; column < FrameColumnCount; ++column) {
        const QSet<QString> &accepted = accepted_[static_cast<std::size_t>(column)];
        if (!accepted.isEmpty() && !accepted.contains(textOf(column)))
            return false;
    }
    return true;
}

bool MyTableModel::acceptsRow(const FrameRow &row) const
{
    return accepts([&row](int column) -> const QString & { return row[static_cast<std::size_t>(column)]; });
}

bool MyTableModel::acceptsRow(const ModelItem &item) const
{
    return accepts(
        [&item](int column) -> const QString & { return columnText(item, static_cast<FrameColumn>(column)); });
}
