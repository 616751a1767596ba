// The one place that knows what a row of a CSV frame file looks like: written by the capture, read by the file send.
// Files are UTF-8: a first line of column titles, then index,="system time",nine other texts per frame, each line ended
// by one line feed. No quoting, no escaping.
#pragma once

#include "frames/modelitem.h"

#include "device/driver/wirerecords.h"

#include <QStringList>

#include <cstddef>

// Goes before the first line of a new file, so that spreadsheet programs read it as UTF-8.
constexpr char kUtf8Mark[] = "\xEF\xBB\xBF";

// The line of the column titles, line feed included.
QString csvHeaderLine(const QStringList &titles);
// Appends the row of one frame, line feed included. Gather a round of rows and encode them at once with toUtf8().
void appendCsvRow(QString &rows, const ModelItem &item);
void appendCsvRow(QString &rows, const FrameRow &row);

// One row, ready for the driver.
struct CsvFrame {
    static constexpr unsigned kNoChannel = 0xFF;

    bool hasTime = false;          // false: the time cannot be read
    std::uint32_t timeMs = 0;      // since midnight; 0 without a time
    std::uint32_t id = 0;          // identifier word with its flags
    unsigned channel = kNoChannel; // 0 or 1 when the row's channel is "1" or "2"
    bool canFd = false;
    bool bitRateSwitch = false;
    std::uint8_t length = 0; // at most what a record of its kind holds
    std::uint8_t data[kFdDataBytes] = {};
};

// Reads one line (UTF-8, without its line end). Rows of all three languages are recognised, whatever language runs; the
// time may stand bare or as ="hh:mm:ss.zzz". false when the line is no frame: fewer than eleven fields, no "0x" before
// the identifier, an identifier that is no number or out of its kind's range, a length that is no number, a data byte
// that is no hexadecimal number. The length is taken modulo 256, then cut to 8 (classic) or 64 (FD); bytes that are
// missing are 0.
bool parseCsvRow(const char *line, std::size_t size, CsvFrame &frame);

// The driver record of a row, transmit type normal.
void toRecord(const CsvFrame &frame, CanTransmitRecord &record);
void toRecord(const CsvFrame &frame, CanFdTransmitRecord &record);
