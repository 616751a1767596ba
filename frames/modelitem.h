// One frame as one row of the frame list: ready-made texts, made once in the worker that handled the frame.
#pragma once

#include "traces/columntitles.h"

#include <QList>
#include <QMetaType>
#include <QString>
#include <QStringList>

#include <array>

enum FrameDirection : unsigned { Transmitted = 0, Received = 1 };

struct ModelItem {
    unsigned channel = 0; // 0-based
    unsigned direction = Transmitted;
    QString indexText;  // filled by the main window
    QString systemTime; // filled by the main window, "hh:mm:ss.zzz"
    QString timeStamp;
    QString channelText; // 1-based
    QString dirText;
    QString idText;
    QString formatText;
    QString typeText;
    QString dlcText;
    QString protocolText;
    QString dataText;
};

Q_DECLARE_METATYPE(QList<ModelItem>)

// Makes lists of items fit for queued signals; the worker threads do it when they are built.
void registerFrameTypes();

// The eleven texts of one row, in column order.
using FrameRow = std::array<QString, FrameColumnCount>;

// Copies (or moves) the texts of an item into a row.
FrameRow toFrameRow(const ModelItem &item);
FrameRow toFrameRow(ModelItem &&item);
// The text of one column of an item.
const QString &columnText(const ModelItem &item, FrameColumn column);
