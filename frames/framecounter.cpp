#include "frames/framecounter.h"

#include <QMutex>
#include <QMutexLocker>

namespace
{
QMutex frameCounterLock;
quint64 frameCounter = 0;
} // namespace

quint64 takeFrameNumbers(quint64 count)
{
    const QMutexLocker lock(&frameCounterLock);
    const quint64 first = frameCounter + 1;
    frameCounter += count;
    return first;
}

void resetFrameCounter()
{
    const QMutexLocker lock(&frameCounterLock);
    frameCounter = 0;
}
