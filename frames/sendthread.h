// Transmits on one channel: one configured frame a number of times, or the frames of a CSV file. Waits while the list
// of pending frames is at its ceiling.
#pragma once

#include "frames/filesend.h"
#include "frames/logtext.h"
#include "frames/modelitem.h"
#include "frames/stopflag.h"

#include "device/driver/wirerecords.h"

#include <QThread>

#include <array>

// Largest frames-per-send value; the send panels ask for 1.
constexpr uint kMaxFramesPerSend = 1000;

class sendThread : public QThread
{
    Q_OBJECT

public:
    explicit sendThread(uint channel, QObject *parent = nullptr); // 0-based channel
    ~sendThread() override;                                       // stops the thread and waits for it

    // Count mode; while idle. data: 64 bytes are read. count -1: until stopped. framesPerSend is brought into
    // 1..kMaxFramesPerSend, length to at most 64. interval in milliseconds.
    void setSend(uint id, int idIncrement, uint extended, uint canFd, quint8 bitRateSwitch, const quint8 *data,
                 uint length, int dataIncrement, qint64 count, uint framesPerSend, uint interval, uint remote,
                 uint transmitType);
    // File mode; while idle. repeat -1: until stopped. interval in milliseconds or kRecordedTiming. channel 0, 1 or
    // kChannelOfRow.
    void setFileSend(const QString &path, int repeat, uint interval, uint channel);
    // Ends the run, also out of a sleep; returns at once.
    void stop();
    // The size of the next batch; while idle. The last batch of a run leaves it at what was left to send.
    uint framesPerSend() const { return framesPerSend_; }

signals:
    // After every run; arrives before run() has returned: wait() before the next start().
    void endSend(uint channel);
    void log(QString msg);
    void sendedData(QList<ModelItem> modelList, uint channel);

protected:
    void run() override;

private:
    enum class Mode { Count, File };

    void runCount();
    template <typename Record> void sendCounted(const LogText &failure);
    template <typename Record> void nextFrame(Record &record);
    void runFile();
    // A line that begins with the word for "channel" and the number.
    void sayChannel(const LogText &text);

    const uint channel_;
    const LogSink log_;
    StopFlag stop_;
    Mode mode_ = Mode::Count;

    // Count mode
    uint id_ = 0; // of the next frame, without flag bits
    bool idIncrement_ = false;
    uint extended_ = 0;
    bool canFd_ = false;
    quint8 bitRateSwitch_ = 0;
    std::array<quint8, kFdDataBytes> data_{}; // of the next frame
    uint length_ = 0;
    bool dataIncrement_ = false;
    qint64 count_ = 0; // frames still to send
    uint interval_ = 0;
    uint framesPerSend_ = 0;
    uint remote_ = 0;
    uint transmitType_ = 0;
    bool keepSending_ = false;

    FileSend::Request file_; // file mode
};
