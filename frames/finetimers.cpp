#include "frames/finetimers.h"

#include <QtGlobal>

#ifdef Q_OS_WIN

#include <windows.h>

#include <timeapi.h>

namespace
{
constexpr UINT kResolutionMs = 1;
}

FineTimers::FineTimers()
{
    timeBeginPeriod(kResolutionMs);
}

FineTimers::~FineTimers()
{
    timeEndPeriod(kResolutionMs);
}

#else // sleeps end in time anyway

FineTimers::FineTimers() {}

FineTimers::~FineTimers() {}

#endif
