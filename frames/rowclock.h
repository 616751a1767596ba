// When the rows of a recorded file are due.
#pragma once

#include <QtGlobal>

#include <chrono>

// The previous row's time is one for the whole process: two files replayed at once disturb each other's pace.
class RowClock
{
public:
    using Clock = std::chrono::steady_clock;

    // Forgets the previous row: the next one is due at once and the following ones count from it.
    void clear();
    // Takes the next row, by its time of day in milliseconds (0: none), and tells when it is due: as long after the
    // first row as the recording says, so that the cost of sleeping and sending does not add up. A time that goes back
    // is the next day.
    Clock::time_point nextDue(quint64 timeOfDay);

private:
    quint64 firstTime_ = 0;
    Clock::time_point firstMoment_;
};
