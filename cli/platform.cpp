#include "cli/platform.h"

#include <atomic>
#include <initializer_list>

#ifdef _WIN32

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#else

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#endif

namespace
{

std::atomic<int> interruptCount{0};
std::atomic<int> allowedInterrupts{1}; // with the next one the program ends

// false when this interrupt is one too many.
bool takeInterrupt()
{
    return ++interruptCount <= allowedInterrupts.load(std::memory_order_relaxed);
}

} // namespace

bool interrupted()
{
    return interruptCount.load(std::memory_order_relaxed) > 0;
}

bool interruptedTwice()
{
    return interruptCount.load(std::memory_order_relaxed) > 1;
}

void allowSecondInterrupt()
{
    allowedInterrupts = 2;
}

#ifdef _WIN32

namespace
{

BOOL WINAPI onControl(DWORD)
{
    return takeInterrupt() ? TRUE : FALSE;
}

} // namespace

void prepareStandardStreams()
{
    for (std::FILE *stream : {stdin, stdout})
        _setmode(_fileno(stream), _O_BINARY);
}

bool isTerminal(std::FILE *stream)
{
    return _isatty(_fileno(stream)) != 0;
}

long long readPipe(int descriptor, char *data, long long capacity)
{
    constexpr long long largest = 1 << 20;
    const int got = _read(descriptor, data, static_cast<unsigned>(capacity < largest ? capacity : largest));
    return got > 0 ? got : got == 0 ? -1 : -2;
}

void watchInterrupts()
{
    SetConsoleCtrlHandler(onControl, TRUE);
}

#else

namespace
{

constexpr int kInputWaitMs = 200;

static_assert(std::atomic<int>::is_always_lock_free, "a signal handler sets it");

void onSignal(int number)
{
    if (takeInterrupt())
        return;
    std::signal(number, SIG_DFL);
    std::raise(number);
}

} // namespace

void prepareStandardStreams()
{
    std::signal(SIGPIPE, SIG_IGN);
    // In the place of a closed stream stands one of the wrong direction.
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(descriptor, F_GETFD) < 0 && open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY) < 0)
            return;
}

bool isTerminal(std::FILE *stream)
{
    return isatty(fileno(stream)) != 0;
}

long long readPipe(int descriptor, char *data, long long capacity)
{
    pollfd waiting{descriptor, POLLIN, 0};
    const int ready = poll(&waiting, 1, kInputWaitMs);
    if (ready == 0 || (ready < 0 && errno == EINTR))
        return 0;
    const ssize_t got = read(descriptor, data, static_cast<size_t>(capacity));
    if (got > 0)
        return got;
    if (got == 0)
        return -1;
    return errno == EINTR || errno == EAGAIN ? 0 : -2;
}

void watchInterrupts()
{
    struct sigaction action {
    };
    action.sa_handler = onSignal;
    action.sa_flags = 0; // waits are not resumed
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

#endif
