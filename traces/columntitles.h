// The frame list's eleven columns, which are those of a CSV row, and their titles.
#pragma once

#include <QStringList>

enum FrameColumn {
    IndexColumn,
    SystemTimeColumn,
    TimeStampColumn,
    ChannelColumn,
    DirectionColumn,
    IdColumn,
    FormatColumn,
    TypeColumn,
    DlcColumn,
    ProtocolColumn,
    DataColumn,
    FrameColumnCount
};

// In the current language, in the order of FrameColumn.
QStringList columnTitles();
// In the given language.
QStringList columnTitles(unsigned languageCode);
