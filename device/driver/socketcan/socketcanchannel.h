// One open channel: sockets on a kernel interface, a thread that empties the receiving one, and two bounded queues.
#pragma once

#include "device/driver/acceptancefilter.h"
#include "device/driver/boundedqueue.h"
#include "device/driver/socketcan/caninterfaces.h"
#include "device/driver/socketcan/cansocket.h"
#include "device/driver/socketcan/frameclock.h"
#include "device/driver/socketcan/noticebox.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <thread>

// One thread may transmit and another receive while a third sets the filter or stops the channel.
class SocketCanChannel
{
public:
    // openedMonotonic: the time that stamps count from, see FrameClock. notices must outlive the channel.
    SocketCanChannel(CanInterface interface, bool listenOnly, std::int64_t openedMonotonic, NoticeBox *notices);
    ~SocketCanChannel(); // stops

    const CanInterface &interface() const { return interface_; }
    bool running() const { return running_; } // from a start that succeeded to the stop; any thread

    // Opens the sockets; false, with a notice, when the interface is missing or down or refuses. Once only.
    bool start();
    // Wakes and refuses whoever waits, and joins the thread.
    void stop();
    void setFilter(const AcceptanceFilter &filter);
    // Frames that found no room, in the kernel or here, since the last call.
    std::uint64_t takeLost() { return lost_.exchange(0); }

    // The state as the kernel tells it, where it does, else as the error frames have left it.
    BusReport report(BusQuestion question);

    // Answer: how many of the frames the kernel took. Waits for room, a second at most altogether.
    std::uint32_t transmit(const CanTransmitRecord *records, std::uint32_t count);
    std::uint32_t transmit(const CanFdTransmitRecord *records, std::uint32_t count);
    std::uint32_t receive(CanReceiveRecord *records, std::uint32_t capacity, std::uint32_t waitMs);
    std::uint32_t receive(CanFdReceiveRecord *records, std::uint32_t capacity, std::uint32_t waitMs);

private:
    using Clock = std::chrono::steady_clock;
    enum class Drained { All, Stopped, Removed };

    bool refuse(int error);
    void tellOnce(DriverNotice::Kind kind, std::atomic<bool> *told);
    void tellDown();
    void tellIfBack();
    void run();
    Drained drain(FrameReader *reader);
    Drained readFailed(int error);
    void store(const FrameReader &reader, int frames);
    bool storeEvent(const FrameReader &reader, int i, std::uint64_t time);
    void countDropped();
    bool send(const canfd_frame &frame, std::size_t bytes, bool heardHere, Clock::time_point deadline);
    bool waitForRoom(int socket, int error, Clock::time_point deadline);
    template <typename Record> std::uint32_t transmitRecords(const Record *records, std::uint32_t count);
    template <typename Record>
    std::uint32_t receiveRecords(BoundedQueue<Record> *queue, Record *records, std::uint32_t capacity,
                                 std::uint32_t waitMs);

    const CanInterface interface_;
    const bool listenOnly_;
    NoticeBox *const notices_;
    FrameClock clock_;          // the thread's
    Descriptor main_;           // receives, and sends what is not to be heard here
    Descriptor selfHeard_;      // sends what is
    Descriptor stopEvent_;      // readable once the channel stops
    Descriptor downEvent_;      // readable once the interface was told to be down
    std::uint32_t dropped_ = 0; // the kernel's count so far; the thread's
    std::atomic<bool> running_{false};
    std::atomic<bool> toldDown_{false}; // until the interface is up again
    std::atomic<bool> toldMissing_{false};
    std::atomic<std::uint64_t> lost_{0};

    std::mutex guard_; // the filter, the queues and the state
    std::condition_variable arrived_;
    AcceptanceFilter filter_;
    BoundedQueue<CanReceiveRecord> classic_;
    BoundedQueue<CanFdReceiveRecord> fd_;
    BoundedQueue<BusEvent> events_;
    std::uint64_t lostEvents_ = 0;
    ChannelState state_;
    std::thread thread_;
};
