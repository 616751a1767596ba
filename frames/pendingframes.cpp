#include "frames/pendingframes.h"

#include <QMutex>
#include <QMutexLocker>

#include <utility>

namespace
{
QMutex pendingFramesLock; // held for an append or a take, never across a driver call
QList<ModelItem> pendingFrames;
} // namespace

void appendPendingFrames(QList<ModelItem> batch)
{
    if (batch.isEmpty())
        return;
    const QMutexLocker lock(&pendingFramesLock);
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
    return taken;
}
