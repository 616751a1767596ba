// Sends the entries of a transmit list from one thread, each at moments of its own that never add up errors: the next
// moment is the last one plus the interval, whenever the frame really went. Of equal moments the list's order decides.
#pragma once

#include "frames/logtext.h"
#include "frames/stopflag.h"
#include "transmit/transmitrun.h"

#include "device/driver/driver.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

class TransmitListener;

// When a list ends by itself.
struct TransmitLimits {
    std::uint64_t frames = 0;              // once so many have been taken by the driver; 0: no limit
    std::chrono::milliseconds duration{0}; // moments so late after the start, or later, are not sent at; 0: no limit
};

class TransmitEngine
{
public:
    // log: lines for the operation log, called in the engine's thread.
    explicit TransmitEngine(LogSink log);
    ~TransmitEngine(); // stops
    TransmitEngine(const TransmitEngine &) = delete;
    TransmitEngine &operator=(const TransmitEngine &) = delete;

    // The owner's thread: setEntries, start and stop.
    // The list as it stands now, also while it runs. Entries are recognised by their serials and keep counts and pace.
    void setEntries(const TransmitList &entries);
    void start(const TransmitLimits &limits = {});
    // Nothing is sent any more, but for one frame that may be on its way to the driver.
    void stop();
    // From start() to stop(). Any thread.
    bool isRunning() const { return running_; }
    // Whether the list may yet send by itself, or a frame is on its way to the driver: false once counted entries are
    // through, a limit is reached, or no entry is on. Any thread.
    bool hasWork() const;

    // Sends this entry once, whether the list runs or the entry is on. Any thread.
    void request(unsigned serial);
    // In the list's order. Any thread.
    std::vector<TransmitCounts> counts() const;
    // What every planned moment counts from. Any thread.
    TransmitClock::time_point startedAt() const;

private:
    struct Moment {
        TransmitRun::Due due;
        std::size_t index;
        // Whether this one comes after the other: for a heap with the first moment on top.
        bool operator<(const Moment &other) const
        {
            return due.at != other.due.at ? due.at > other.due.at : index > other.index;
        }
    };
    using Lock = std::unique_lock<std::mutex>;

    void run();
    void fillHeap();
    void push(std::size_t index);
    void lookAtChannels(Lock &lock, TransmitClock::time_point now);
    void sendFirst(Lock &lock, TransmitClock::time_point now);
    bool isThrough() const;
    void heard(const RawFrame *frames, std::size_t count);
    void listenIfNeeded();

    const LogSink log_;
    std::atomic<bool> running_{false};
    StopFlag stop_; // ends the wait for room in the frame list

    mutable std::mutex lock_; // guards what follows
    std::condition_variable wake_;
    bool quit_ = false;
    std::vector<TransmitRun> runs_;                    // in the list's order
    std::unordered_map<unsigned, std::size_t> places_; // of the serials in runs_
    std::vector<std::size_t> answering_;
    std::vector<Moment> heap_;
    bool open_[kChannelCount] = {};
    TransmitLimits limits_;
    std::uint64_t taken_ = 0; // since the start
    bool sending_ = false;    // a frame is on its way to the driver
    TransmitClock::time_point startedAt_;
    TransmitClock::time_point nextLook_;

    std::unique_ptr<TransmitListener> listener_; // the owner's thread
    std::thread thread_;
};
