#include "upgrade/filesync.h"

#include <QFile>

#ifdef Q_OS_WIN
#include <io.h>
#include <windows.h>

bool syncToDrive(const QFile &file)
{
    return FlushFileBuffers(reinterpret_cast<HANDLE>(_get_osfhandle(file.handle()))) != 0;
}
#else
#include <unistd.h>

bool syncToDrive(const QFile &file)
{
    return fsync(file.handle()) == 0;
}
#endif
