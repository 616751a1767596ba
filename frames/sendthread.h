// Transmits on one channel: one configured frame a number of times, or the frames of a CSV file.
#pragma once

#include "frames/modelitem.h"

#include "device/driver/wirerecords.h"

#include <QThread>

// File interval that asks for the recorded timing.
constexpr uint kRecordedTiming = 0xFFFFFFFF;
// File channel that asks for the channel written in each row.
constexpr uint kChannelOfRow = 2;
// Largest frames-per-send value; the send panels ask for 1.
constexpr uint kMaxFramesPerSend = 1000;

class sendThread : public QThread
{
    Q_OBJECT

public:
    explicit sendThread(uint channel, QObject *parent = nullptr); // 0-based channel
    ~sendThread() override;                                       // stops the thread and waits for it

    // Count mode; while idle. data: 64 bytes are read. count -1: until stopped. interval in milliseconds.
    void setSend(uint id, int idIncrement, uint extended, uint canFd, quint8 bitRateSwitch, const quint8 *data,
                 uint length, int dataIncrement, qint64 count, uint framesPerSend, uint interval, uint remote,
                 uint transmitType);
    // File mode; while idle. repeat -1: until stopped. interval in milliseconds or kRecordedTiming.
    void setFileSend(const QString &path, int repeat, uint interval, uint channel);
    // Ends the run, also out of a sleep; returns at once.
    void stop();

signals:
    // After every run; arrives before run() has returned: wait() before the next start().
    void endSend(uint channel);
    void log(QString msg);
    void sendedData(QList<ModelItem> modelList, uint channel);

protected:
    void run() override;
};
