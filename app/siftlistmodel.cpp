#include "app/siftlistmodel.h"

#include "device/language.h"

namespace
{
bool matches(const QString &value, const QString &text, Qt::CaseSensitivity sensitivity, bool wholeMatch)
{
    return wholeMatch ? value.compare(text, sensitivity) == 0 : value.contains(text, sensitivity);
}
} // namespace

void SiftListModel::fill(const QStringList &values)
{
    beginResetModel();
    values_ = values;
    ticked_ = QVector<bool>(values.size(), false);
    order_.clear();
    matching_.clear();
    searching_ = false;
    allTicked_ = false;
    endResetModel();
}

void SiftListModel::search(const QString &text, Qt::CaseSensitivity sensitivity, bool wholeMatch)
{
    beginResetModel();
    matching_.clear();
    searching_ = !text.isEmpty();
    for (int value = 0; searching_ && value < values_.size(); ++value)
        if (matches(values_.at(value), text, sensitivity, wholeMatch))
            matching_.append(value);
    endResetModel();
}

QStringList SiftListModel::selection() const
{
    QStringList selected;
    selected.reserve(order_.size());
    for (const int value : order_)
        selected.append(values_.at(value));
    return selected;
}

void SiftListModel::retranslate()
{
    emit dataChanged(index(kAllRow), index(kAllRow), {Qt::DisplayRole});
}

int SiftListModel::rowCount(const QModelIndex &parent) const
{
    if (parent.isValid())
        return 0;
    return 1 + (searching_ ? matching_.size() : values_.size());
}

QVariant SiftListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount() || (role != Qt::DisplayRole && role != Qt::CheckStateRole))
        return {};
    bool ticked = allTicked_;
    QString text;
    if (index.row() == kAllRow) {
        text = text3("全部", "全部", "all");
    } else {
        const int value = searching_ ? matching_.at(index.row() - 1) : index.row() - 1;
        ticked = ticked_.at(value);
        text = values_.at(value);
    }
    if (role == Qt::DisplayRole)
        return text;
    return ticked ? Qt::Checked : Qt::Unchecked;
}

bool SiftListModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::CheckStateRole || !index.isValid() || index.row() >= rowCount())
        return false;
    const bool ticked = value.toInt() == Qt::Checked;
    if (index.row() == kAllRow)
        tickAll(ticked);
    else
        tick(searching_ ? matching_.at(index.row() - 1) : index.row() - 1, ticked);
    emit dataChanged(this->index(0), this->index(rowCount() - 1), {Qt::CheckStateRole});
    emit selectionChanged();
    return true;
}

void SiftListModel::tickAll(bool ticked)
{
    allTicked_ = ticked;
    if (!ticked)
        order_.clear();
    for (int value = 0; value < values_.size(); ++value) {
        if (ticked && !ticked_.at(value))
            order_.append(value);
        ticked_[value] = ticked;
    }
}

void SiftListModel::tick(int value, bool ticked)
{
    if (ticked_.at(value) == ticked)
        return;
    ticked_[value] = ticked;
    if (ticked) {
        order_.append(value);
    } else {
        order_.removeOne(value);
        allTicked_ = false; // the other values keep their ticks
    }
}

Qt::ItemFlags SiftListModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable | Qt::ItemNeverHasChildren;
}
