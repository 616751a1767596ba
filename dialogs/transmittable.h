// The table of the transmit list. Counts that change are painted where they stand; Qt would paint the whole table.
#pragma once

#include "widgets/lightgrid.h"

class TransmitTable : public LightGridTable<QTableView>
{
    Q_OBJECT

public:
    explicit TransmitTable(QWidget *parent = nullptr) : LightGridTable<QTableView>(parent) {}

    void dataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight, const QVector<int> &roles) override;
};
