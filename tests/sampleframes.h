// Frames as the workers hand them over.
#pragma once

#include "frames/framebuilder.h"
#include "frames/mytablemodel.h"

// A classic received frame with one data byte.
inline ModelItem receivedFrame(std::uint32_t id, std::uint8_t data = 0, unsigned channel = 0)
{
    QList<ModelItem> batch;
    CanReceiveRecord record{};
    record.id = id;
    record.length = 1;
    record.data[0] = data;
    appendItem(batch, record, channel);
    return batch.first();
}

inline ModelItem sentFrame(std::uint32_t id, std::uint8_t data = 0, unsigned channel = 0)
{
    QList<ModelItem> batch;
    CanTransmitRecord record{};
    record.id = id;
    record.length = 1;
    record.data[0] = data;
    appendItem(batch, record, channel);
    return batch.first();
}

// A row per number: its identifier and its data byte.
inline QList<FrameRow> rows(const QList<std::uint8_t> &numbers)
{
    QList<FrameRow> made;
    for (const std::uint8_t number : numbers)
        made << toFrameRow(receivedFrame(number, number));
    return made;
}

// The texts of one column, row by row.
inline QStringList columnTexts(const MyTableModel &model, int column)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        texts << model.cellText(row, column);
    return texts;
}
