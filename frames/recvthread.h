// Drains one channel: polls the driver every millisecond and hands every frame on as a ModelItem.
#pragma once

#include "frames/modelitem.h"

#include "device/driver/wirerecords.h"

#include <QThread>

#include <atomic>

class recvThread : public QThread
{
    Q_OBJECT

public:
    explicit recvThread(uint channel, QObject *parent = nullptr); // 0-based channel
    ~recvThread() override;                                       // stops the thread and waits for it

    // Both arguments are ignored on purpose: wait time 1, capacity 1000, whatever is asked.
    void setRecvParams(uint scanTime, uint framesPerRead);
    // Asks the thread to end after the pass under way; does not wait.
    void stop();
    // Forgets the identifiers that the continuity check compares with. GUI thread, also while running.
    void clearLastIds();

signals:
    void recvData(QList<ModelItem> modelList, uint channel);
    void log(QString msg);
    void errorID(uint lastID, uint ID);

protected:
    void run() override;

private:
    const uint channel_;
    std::atomic<bool> stop_{false};
};
