#include "analysis/signalfilter.h"

SignalFilter::SignalFilter(QObject *parent) : QSortFilterProxyModel(parent)
{
    setRecursiveFilteringEnabled(true); // the parents of a row that is found
    setDynamicSortFilter(false);
}

void SignalFilter::search(const QString &text)
{
    text_ = text.trimmed();
    invalidateFilter();
}

bool SignalFilter::filterAcceptsRow(int row, const QModelIndex &parent) const
{
    if (text_.isEmpty())
        return true;
    const auto matches = [this](const QModelIndex &index) {
        return index.data().toString().contains(text_, Qt::CaseInsensitive);
    };
    if (!parent.isValid())
        return false; // channels show when something of them does
    return matches(sourceModel()->index(row, 0, parent)) || (parent.parent().isValid() && matches(parent));
}
