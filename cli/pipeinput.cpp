#include "cli/pipeinput.h"

qint64 PipeInput::readData(char *data, qint64 capacity)
{
    const qint64 got = readPipe(descriptor_, data, capacity);
    if (got >= 0)
        return got;
    ended_ = true;
    failed_ = got < -1;
    return -1;
}
