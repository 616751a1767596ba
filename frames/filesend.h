// One run of a CSV file of frames onto the bus: its passes, its pace, and what to tell at the end.
#pragma once

#include "frames/csvreader.h"
#include "frames/logtext.h"
#include "frames/rowclock.h"
#include "frames/stopflag.h"

#include <QString>

struct CsvFrame;

// File interval that asks for the recorded timing.
constexpr unsigned kRecordedTiming = 0xFFFFFFFF;
// File channel that asks for the channel written in each row.
constexpr unsigned kChannelOfRow = 2;

class FileSend
{
public:
    struct Request {
        QString path;
        int repeat = 0;        // passes; -1: until stopped
        unsigned interval = 0; // milliseconds before every row, or kRecordedTiming
        unsigned channel = 0;  // 0, 1 or kChannelOfRow
    };

    FileSend(const Request &request, StopFlag &stop, LogSink log);

    // Sends until the passes are done, the flag is set, no channel is open, a pass has found no frame or the file
    // cannot be read. Waits while the list of pending frames is at its ceiling. Logs all the way.
    void run();

private:
    // What a pass came to.
    struct Pass {
        bool foundFrame = false;
        bool waited = false;
        bool taken = false;      // at least one frame by the driver
        quint64 invalidRows = 0; // that are no frame
        quint64 rowsWithoutTime = 0;
    };

    void sendPasses();
    Pass sendPass();
    // The next row that is a frame and the channel it goes to; false at the end of the file.
    bool nextFrame(CsvFrame &frame, unsigned &channel, Pass &pass);
    // Waits until the row is due and has room; false when the run is to end instead.
    bool waitForTurn(const CsvFrame &frame, Pass &pass);
    void announce(RowClock::Clock::time_point due) const;
    // Whether the driver took the row; it is shown in any case.
    bool sendRow(const CsvFrame &frame, unsigned channel) const;
    void tellRows(const Pass &pass);
    void tellEnd() const;

    const Request request_;
    StopFlag &stop_;
    const LogSink log_;
    CsvReader reader_;
    RowClock rowClock_;
    bool nothingFound_ = false; // the last pass found no frame
    quint64 notTaken_ = 0;
    Pass told_; // the largest numbers of rows that this run has logged
};
