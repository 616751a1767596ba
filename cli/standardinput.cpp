#include "cli/standardinput.h"

#include "cli/platform.h"

qint64 StandardInput::readData(char *data, qint64 capacity)
{
    const qint64 got = readStandardInput(data, capacity);
    if (got >= 0)
        return got;
    ended_ = true;
    failed_ = got < -1;
    return -1;
}
