// Drains one channel: polls the driver every millisecond and hands every frame on, raw to the tap and as a ModelItem to
// the window when there is one (setPendingFramesTaken()). While the list of pending frames is at its ceiling, frames
// stay in the driver.
#pragma once

#include "frames/buswatch.h"
#include "frames/modelitem.h"
#include "traces/rawframe.h"

#include "device/driver/wirerecords.h"

#include <QElapsedTimer>
#include <QThread>

#include <atomic>
#include <vector>

class recvThread : public QThread
{
    Q_OBJECT

public:
    explicit recvThread(uint channel, QObject *parent = nullptr); // 0-based channel
    ~recvThread() override;                                       // stops the thread and waits for it

    // Both arguments are ignored on purpose: wait time 1, capacity 1000, whatever is asked.
    void setRecvParams(uint scanTime, uint framesPerRead);
    // Asks the thread to end after the pass under way; does not wait. Before start(): the next run ends at once.
    void stop();
    // Stops, waits for the end, and leaves the thread fit for start(), whether it was running or not.
    void stopAndWait();
    // Forgets the identifiers that the continuity check compares with. GUI thread, also while running.
    void clearLastIds();
    // Error frames that the driver had no room for in the last run; to be asked when it has ended.
    std::uint64_t lostErrorFrames() const { return busWatch_.lost(); }

signals:
    void recvData(QList<ModelItem> modelList, uint channel);
    void log(QString msg);
    void errorID(uint lastID, uint ID);

protected:
    void run() override;

private:
    // Logs that reading pauses, once per burst of pauses.
    void tellPause();
    void buildBatch(const CanReceiveRecord *records, uint count);
    void buildBatch(const CanFdReceiveRecord *records, uint count);
    template <typename Record> void build(const Record *records, uint count, std::atomic<std::uint32_t> &lastId);
    // Teaches the adapter's clock, and hands the frames to the tap when somebody reads it.
    template <typename Record> void passTap(const Record *records, uint count);
    // Compares one pair of consecutive identifier words when the user has armed the check, and disarms it.
    void checkContinuity(std::uint32_t id, std::atomic<std::uint32_t> &lastId);

    const uint channel_;
    std::atomic<bool> stop_{false};
    std::atomic<uint> waitTime_; // stored only: receive calls never wait
    std::atomic<uint> readCapacity_;
    // Raw identifier words of the last frames that went through the check, 0 = none yet.
    std::atomic<std::uint32_t> lastClassicId_{0};
    std::atomic<std::uint32_t> lastFdId_{0};
    std::vector<RawFrame> rawBatch_; // of passTap(); the running thread's
    BusWatch busWatch_;              // the running thread's
    QElapsedTimer lastPause_;        // since reading last had to pause; the running thread's
};
