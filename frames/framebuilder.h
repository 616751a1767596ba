// Makes the row texts of a frame, once, in the thread that handled it, in the language of that moment.
#pragma once

#include "frames/modelitem.h"

#include "device/driver/wirerecords.h"

// Each appends one item for one raw record. channel is 0-based. A byte count above what the record can hold is cut
// to it, in the text too. Any thread.
void appendItem(QList<ModelItem> &batch, const CanReceiveRecord &record, unsigned channel);
void appendItem(QList<ModelItem> &batch, const CanFdReceiveRecord &record, unsigned channel);
void appendItem(QList<ModelItem> &batch, const CanTransmitRecord &record, unsigned channel);
void appendItem(QList<ModelItem> &batch, const CanFdTransmitRecord &record, unsigned channel);

// A device time stamp as seconds with four decimals: QString::number(microseconds * 0.000001, 'f', 4).
QString secondsText(quint64 microseconds);
