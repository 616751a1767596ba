// Tells the thread sanitizer of the order that Qt's locks and queued signals make. The Qt of the distribution is not
// built with it, so it would see none of them and report every access that they guard. Each function stands in front
// of the one of the library and calls it; only this program's own calls come through here.
#include <QCoreApplication>
#include <QMutex>
#include <QReadWriteLock>
#include <QSemaphore>
#include <QThread>
#include <QVariant>

#include <sanitizer/tsan_interface.h>

#include <dlfcn.h>

#include <cstdlib>

// Of the sanitizer's run-time library, which has no header for them.
extern "C" {
void AnnotateIgnoreReadsBegin(const char *file, int line);
void AnnotateIgnoreReadsEnd(const char *file, int line);
void AnnotateIgnoreWritesBegin(const char *file, int line);
void AnnotateIgnoreWritesEnd(const char *file, int line);
}

namespace
{

char queuedSignals; // stands for all queues of events together

template <typename Function> Function libraryOf(Function &known, const char *symbol)
{
    Function found = __atomic_load_n(&known, __ATOMIC_RELAXED);
    if (!found) {
        found = reinterpret_cast<Function>(dlsym(RTLD_NEXT, symbol));
        if (!found)
            abort();
        __atomic_store_n(&known, found, __ATOMIC_RELAXED);
    }
    return found;
}

// Sees every event of the GUI thread before its receiver does.
class QueueWatcher : public QObject
{
public:
    using QObject::QObject;
    bool eventFilter(QObject *, QEvent *) override
    {
        __tsan_acquire(&queuedSignals);
        return false;
    }
};

void watchQueue()
{
    QCoreApplication *application = QCoreApplication::instance();
    application->installEventFilter(new QueueWatcher(application));
}
Q_COREAPP_STARTUP_FUNCTION(watchQueue)

// The toolkit's file dialogs look at folders in a thread that runs nothing of ours: what it reads and writes, under
// locks inside Qt, is none of this program's races. Direct connections run in the thread itself.
void leaveOutAccessesOf(QThread *thread)
{
    QObject::connect(
        thread, &QThread::started, thread,
        [] {
            AnnotateIgnoreReadsBegin(__FILE__, __LINE__);
            AnnotateIgnoreWritesBegin(__FILE__, __LINE__);
        },
        Qt::DirectConnection);
    QObject::connect(
        thread, &QThread::finished, thread,
        [] {
            AnnotateIgnoreWritesEnd(__FILE__, __LINE__);
            AnnotateIgnoreReadsEnd(__FILE__, __LINE__);
        },
        Qt::DirectConnection);
}

} // namespace

// The test library's watchdog, the end of a thread inside Qt, and the last release of a queued signal's argument or of
// a text, on either side, whose reference count goes down inside Qt; and what the worker threads' signals write inside
// Qt, into events and the list of them that Qt guards by a lock of its own; and the C library's time zone, which it
// guards by a lock that is no pthread mutex.
extern "C" const char *__tsan_default_suppressions()
{
    return "race:libQt5Test.so\nrace:QWaitCondition::\nrace:QMetaType::destroy\n"
           "race:QTypedArrayData<unsigned short>::deallocate\n"
           "race:^recvThread::log\nrace:^recvThread::errorID\nrace:^sendThread::log\nrace:^sendThread::endSend\n"
           "race:^tzset_internal\n";
}

// Calls the library's function of the same signature.
#define OSTREL_LIBRARY(result, symbol, ...)                                                                            \
    using Function = result (*)(__VA_ARGS__);                                                                          \
    static Function known = nullptr;                                                                                   \
    const Function library = libraryOf(known, symbol)

void QMutex::lock() QT_MUTEX_LOCK_NOEXCEPT
{
    OSTREL_LIBRARY(void, "_ZN6QMutex4lockEv", QMutex *);
    library(this);
    __tsan_acquire(this);
}

bool QMutex::tryLock(int timeout) QT_MUTEX_LOCK_NOEXCEPT
{
    OSTREL_LIBRARY(bool, "_ZN6QMutex7tryLockEi", QMutex *, int);
    const bool locked = library(this, timeout);
    if (locked)
        __tsan_acquire(this);
    return locked;
}

void QMutex::unlock() noexcept
{
    OSTREL_LIBRARY(void, "_ZN6QMutex6unlockEv", QMutex *);
    __tsan_release(this);
    library(this);
}

void QBasicMutex::lockInternal() QT_MUTEX_LOCK_NOEXCEPT
{
    OSTREL_LIBRARY(void, "_ZN11QBasicMutex12lockInternalEv", QBasicMutex *);
    library(this);
    __tsan_acquire(this);
}

void QBasicMutex::unlockInternal() noexcept
{
    OSTREL_LIBRARY(void, "_ZN11QBasicMutex14unlockInternalEv", QBasicMutex *);
    __tsan_release(this);
    library(this);
}

void QReadWriteLock::lockForRead()
{
    OSTREL_LIBRARY(void, "_ZN14QReadWriteLock11lockForReadEv", QReadWriteLock *);
    library(this);
    __tsan_acquire(this);
}

void QReadWriteLock::lockForWrite()
{
    OSTREL_LIBRARY(void, "_ZN14QReadWriteLock12lockForWriteEv", QReadWriteLock *);
    library(this);
    __tsan_acquire(this);
}

void QReadWriteLock::unlock()
{
    OSTREL_LIBRARY(void, "_ZN14QReadWriteLock6unlockEv", QReadWriteLock *);
    __tsan_release(this);
    library(this);
}

void QSemaphore::acquire(int count)
{
    OSTREL_LIBRARY(void, "_ZN10QSemaphore7acquireEi", QSemaphore *, int);
    library(this, count);
    __tsan_acquire(this);
}

bool QSemaphore::tryAcquire(int count, int timeout)
{
    OSTREL_LIBRARY(bool, "_ZN10QSemaphore10tryAcquireEii", QSemaphore *, int, int);
    const bool acquired = library(this, count, timeout);
    if (acquired)
        __tsan_acquire(this);
    return acquired;
}

void QSemaphore::release(int count)
{
    OSTREL_LIBRARY(void, "_ZN10QSemaphore7releaseEi", QSemaphore *, int);
    __tsan_release(this);
    library(this, count);
}

void QThread::start(Priority priority)
{
    OSTREL_LIBRARY(void, "_ZN7QThread5startENS_8PriorityE", QThread *, Priority);
    constexpr char watched[] = "endIsWatched";
    if (!property(watched).isValid()) {
        setProperty(watched, true);
        if (inherits("QFileInfoGatherer"))
            leaveOutAccessesOf(this);
        connect(
            this, &QThread::finished, this, [this] { __tsan_release(this); }, Qt::DirectConnection);
    }
    library(this, priority);
}

bool QThread::wait(QDeadlineTimer deadline)
{
    OSTREL_LIBRARY(bool, "_ZN7QThread4waitE14QDeadlineTimer", QThread *, QDeadlineTimer);
    const bool ended = library(this, deadline);
    if (ended)
        __tsan_acquire(this);
    return ended;
}

bool QThread::wait(unsigned long milliseconds)
{
    OSTREL_LIBRARY(bool, "_ZN7QThread4waitEm", QThread *, unsigned long);
    const bool ended = library(this, milliseconds);
    if (ended)
        __tsan_acquire(this);
    return ended;
}

void QMetaObject::activate(QObject *sender, const QMetaObject *meta, int signal, void **arguments)
{
    OSTREL_LIBRARY(void, "_ZN11QMetaObject8activateEP7QObjectPKS_iPPv", QObject *, const QMetaObject *, int, void **);
    __tsan_release(&queuedSignals);
    library(sender, meta, signal, arguments);
    __tsan_release(&queuedSignals); // direct slots
}

void QCoreApplication::postEvent(QObject *receiver, QEvent *event, int priority)
{
    OSTREL_LIBRARY(void, "_ZN16QCoreApplication9postEventEP7QObjectP6QEventi", QObject *, QEvent *, int);
    __tsan_release(&queuedSignals);
    library(receiver, event, priority);
}
