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
#include <poll.h>
#include <unistd.h>

#endif

namespace
{

std::atomic<bool> interruptSeen{false};

} // namespace

bool interrupted()
{
    return interruptSeen.load(std::memory_order_relaxed);
}

#ifdef _WIN32

namespace
{

BOOL WINAPI onControl(DWORD)
{
    return interruptSeen.exchange(true) ? FALSE : TRUE;
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

long long readStandardInput(char *data, long long capacity)
{
    constexpr long long largest = 1 << 20;
    const int got = _read(_fileno(stdin), data, static_cast<unsigned>(capacity < largest ? capacity : largest));
    return got > 0 ? got : got == 0 ? (interrupted() ? 0 : -1) : -2;
}

void watchInterrupts()
{
    SetConsoleCtrlHandler(onControl, TRUE);
}

#else

namespace
{

constexpr int kInputWaitMs = 200;

static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets it");

void onSignal(int)
{
    interruptSeen.store(true, std::memory_order_relaxed);
}

} // namespace

void prepareStandardStreams()
{
    std::signal(SIGPIPE, SIG_IGN);
}

bool isTerminal(std::FILE *stream)
{
    return isatty(fileno(stream)) != 0;
}

long long readStandardInput(char *data, long long capacity)
{
    pollfd waiting{STDIN_FILENO, POLLIN, 0};
    const int ready = poll(&waiting, 1, kInputWaitMs);
    if (ready == 0 || (ready < 0 && errno == EINTR))
        return 0;
    const ssize_t got = read(STDIN_FILENO, data, static_cast<size_t>(capacity));
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
    action.sa_flags = static_cast<int>(SA_RESETHAND); // waits are not resumed
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

#endif
