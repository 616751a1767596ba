// The books of a soak: every frame that came out of the driver or went into it must be counted, and captured when a
// capture asked for it.
#pragma once

#include "countingdriver.h"
#include "windowdriver.h"

#include <QString>
#include <QStringList>

class SoakAccounts
{
public:
    SoakAccounts(CountingDriver &driver, WindowDriver &user) : driver_(driver), user_(user) {}

    // Frames counted since the beginning, also across resets of the totals.
    quint64 received(unsigned channel) const;
    quint64 transmitted(unsigned channel) const;
    quint64 counted() const;

    void resetTotals(); // clicks the window's own button

    // One capture at a time; mode as in WindowDriver::startCapture. Stopping compares the rows of the file with the
    // frames counted meanwhile and removes the file.
    void startCapture(const QString &path, int mode);
    void stopCapture();
    bool capturing() const { return !path_.isEmpty(); }

    // Rows sent from files may be shown without the driver having taken them: an unequal number is no error then.
    void fileWasSent() { filesSent_ = true; }

    // Adds up what the operation log tells as lost; called before every clearing of the log.
    void readLog();

    // The window that counts as well, from before the first frame on.
    void watch(const QWidget *statistics) { statistics_ = statistics; }

    // The closing of the books, with the device closed and nothing pending: prints them, false when they do not
    // balance.
    bool balance();

private:
    void balanceStatistics(unsigned channel);

    CountingDriver &driver_;
    WindowDriver &user_;
    const QWidget *statistics_ = nullptr;
    quint64 receivedBefore_[kChannelCount] = {}; // the last reset
    quint64 transmittedBefore_[kChannelCount] = {};
    QString path_;
    int mode_ = 0;
    quint64 countedAtStart_ = 0;
    quint64 captured_ = 0; // rows of captures of all frames
    quint64 filtered_ = 0; // frames counted while a capture asked for filtered ones only
    quint64 filteredRows_ = 0;
    int captures_ = 0;
    quint64 toldLost_ = 0;
    bool filesSent_ = false;
    QStringList faults_;
};
