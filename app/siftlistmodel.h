// The rows of the filter pop-up: the "all" box, then one check box per value that matches the search. Built for tens of
// thousands of values: a row is made only when it is shown.
#pragma once

#include <QAbstractListModel>
#include <QVector>

class SiftListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    static constexpr int kAllRow = 0;

    using QAbstractListModel::QAbstractListModel;

    // New distinct values, none of them ticked, no search.
    void fill(const QStringList &values);
    // Lists the values that match; an empty text lists all. Ticks stay, also those of values not listed.
    void search(const QString &text, Qt::CaseSensitivity sensitivity, bool wholeMatch);
    bool isSearching() const { return searching_; }
    // The ticked values in the order in which they were ticked.
    QStringList selection() const;
    // The text of the "all" box in the present language is shown anew.
    void retranslate();

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    // Qt::CheckStateRole ticks and unticks; the "all" row does it for every value.
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

signals:
    void selectionChanged();

private:
    void tickAll(bool ticked);
    void tick(int value, bool ticked);

    QStringList values_;
    QVector<bool> ticked_;  // per value
    QVector<int> order_;    // the ticked values, as positions in values_
    QVector<int> matching_; // while searching: the listed values
    bool searching_ = false;
    bool allTicked_ = false;
};
