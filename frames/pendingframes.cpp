#include "frames/pendingframes.h"

#include "frames/stopflag.h"

#include <QMutex>
#include <QMutexLocker>

#include <atomic>
#include <utility>

namespace
{
constexpr unsigned kRoomPollMs = 5;
QMutex pendingFramesLock; // held for an append or a take, never across a driver call
QList<ModelItem> pendingFrames;
std::atomic<int> pendingCount{0}; // written under the lock
std::atomic<bool> windowTakes{true};
} // namespace

void setPendingFramesTaken(bool taken)
{
    windowTakes = taken;
}

bool pendingFramesTaken()
{
    return windowTakes;
}

bool pendingFramesHaveRoom()
{
    return pendingCount < kPendingCeiling;
}

bool waitForPendingRoom(StopFlag &stop, const std::function<bool()> &goOn)
{
    while (!pendingFramesHaveRoom())
        if (!stop.sleepFor(kRoomPollMs, goOn))
            return false;
    return true;
}

void appendPendingFrames(QList<ModelItem> batch)
{
    if (batch.isEmpty())
        return;
    const QMutexLocker lock(&pendingFramesLock);
    pendingCount += batch.size();
    if (pendingFrames.isEmpty()) {
        pendingFrames.swap(batch);
        return;
    }
    for (ModelItem &item : batch) {
        pendingFrames.append(ModelItem());
        pendingFrames.last() = std::move(item);
    }
}

QList<ModelItem> takePendingFrames()
{
    QList<ModelItem> taken;
    const QMutexLocker lock(&pendingFramesLock);
    taken.swap(pendingFrames);
    pendingCount = 0;
    return taken;
}
