// The rows of the signal tree whose name, or whose message's name, holds what is searched for.
#pragma once

#include <QSortFilterProxyModel>

class SignalFilter : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    explicit SignalFilter(QObject *parent = nullptr);

    void search(const QString &text); // empty: every row

protected:
    bool filterAcceptsRow(int row, const QModelIndex &parent) const override;

private:
    QString text_;
};
