#include "frames/pendingframes.h"

#include <QMutex>
#include <QMutexLocker>

namespace
{
QMutex pendingFramesLock; // held for an append or a take, never across a driver call
QList<ModelItem> pendingFrames;
} // namespace

void appendPendingFrames(const QList<ModelItem> &batch)
{
    if (batch.isEmpty())
        return;
    const QMutexLocker lock(&pendingFramesLock);
    pendingFrames.append(batch);
}

QList<ModelItem> takePendingFrames()
{
    QList<ModelItem> taken;
    const QMutexLocker lock(&pendingFramesLock);
    taken.swap(pendingFrames);
    return taken;
}
