#include "cli/messages.h"

#include "cli/platform.h"

#include <atomic>
#include <cstdio>
#include <mutex>

namespace
{

std::mutex outputLock; // guards the standard error and the line below
int shownLength = 0;
std::atomic<bool> hidden{false};

// The line under way is overwritten with blanks.
void clearLine()
{
    if (shownLength > 0)
        std::fprintf(stderr, "\r%*s\r", shownLength, "");
    shownLength = 0;
}

} // namespace

void tell(const QString &message)
{
    const std::lock_guard<std::mutex> guard(outputLock);
    clearLine();
    std::fprintf(stderr, "ostrel-cli: %s\n", message.toLocal8Bit().constData());
    std::fflush(stderr);
}

void showProgressLine(const QString &line)
{
    if (!progressIsShown())
        return;
    const std::lock_guard<std::mutex> guard(outputLock);
    clearLine();
    std::fputs(line.toLocal8Bit().constData(), stderr);
    std::fflush(stderr);
    shownLength = line.size();
}

bool progressIsShown()
{
    static const bool terminal = isTerminal(stderr);
    return terminal && !hidden;
}

void hideProgress()
{
    hidden = true;
}
