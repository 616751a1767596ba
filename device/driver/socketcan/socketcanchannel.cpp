#include "device/driver/socketcan/socketcanchannel.h"

#include "device/driver/socketcan/canframes.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace
{

using namespace std::chrono_literals;

constexpr std::size_t kQueueRecords = 1 << 16; // of each kind
constexpr std::size_t kMostEvents = 4096;      // error frames that wait to be taken
constexpr auto kTransmitPatience = 1s;
// The kernel does not tell when a full transmit queue has room again: look so often.
constexpr std::chrono::nanoseconds kQueueFullPause = 250us;
constexpr int kLookAgainMs = 50; // whether an interface that is down is up again
constexpr int kNoLimit = -1;

timespec toTimespec(std::chrono::nanoseconds span)
{
    span = std::max(span, 0ns);
    return {static_cast<std::time_t>(span / 1s), static_cast<long>((span % 1s).count())};
}

bool isSelfReceived(std::uint32_t transmitType)
{
    return transmitType == static_cast<std::uint32_t>(TransmitType::SelfReceive) ||
           transmitType == static_cast<std::uint32_t>(TransmitType::SingleSelfReceive);
}

} // namespace

SocketCanChannel::SocketCanChannel(CanInterface interface, bool listenOnly, std::int64_t openedMonotonic,
                                   NoticeBox *notices)
    : interface_(std::move(interface)),
      listenOnly_(listenOnly),
      notices_(notices),
      clock_(openedMonotonic),
      classic_(kQueueRecords),
      fd_(kQueueRecords),
      events_(kMostEvents)
{
}

SocketCanChannel::~SocketCanChannel()
{
    stop();
}

bool SocketCanChannel::refuse(int error)
{
    notices_->put(DriverNotice::Kind::InterfaceRefused,
                  interface_.name + ": " + std::generic_category().message(error));
    return false;
}

// A down or removed interface gives its error once to every socket, to a sender or a receiver, then to every sender.
void SocketCanChannel::tellOnce(DriverNotice::Kind kind, std::atomic<bool> *told)
{
    if (!told->exchange(true))
        notices_->put(kind, interface_.name);
}

void SocketCanChannel::tellDown()
{
    tellOnce(DriverNotice::Kind::InterfaceDown, &toldDown_);
    eventfd_write(downEvent_.get(), 1); // the thread may sleep: it was a sender that met the error
}

void SocketCanChannel::tellIfBack()
{
    eventfd_t ignored = 0;
    eventfd_read(downEvent_.get(), &ignored);
    CanInterface now;
    if (toldDown_ && findCanInterface(interface_.name, &now) && now.index == interface_.index && now.up) {
        toldDown_ = false;
        notices_->put(DriverNotice::Kind::InterfaceBack, interface_.name);
    }
}

bool SocketCanChannel::start()
{
    if (running_)
        return true;
    CanInterface now;
    if (!findCanInterface(interface_.name, &now) || now.index != interface_.index) {
        notices_->put(DriverNotice::Kind::InterfaceMissing, interface_.name);
        return false;
    }
    if (!now.up) {
        notices_->put(DriverNotice::Kind::InterfaceDown, interface_.name);
        return false;
    }
    int error = 0;
    main_ = openReceivingSocket(interface_.index, &error);
    if (!main_.valid())
        return refuse(error);
    selfHeard_ = openSendingSocket(interface_.index, &error);
    if (!selfHeard_.valid())
        return refuse(error);
    stopEvent_ = Descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    downEvent_ = Descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!stopEvent_.valid() || !downEvent_.valid())
        return refuse(errno);
    if (!now.fd) // classic frames work all the same
        notices_->put(DriverNotice::Kind::InterfaceNotFd, interface_.name);
    running_ = true;
    thread_ = std::thread(&SocketCanChannel::run, this);
    return true;
}

void SocketCanChannel::stop()
{
    {
        const std::lock_guard<std::mutex> lock(guard_);
        running_ = false;
    }
    if (!thread_.joinable())
        return;
    eventfd_write(stopEvent_.get(), 1);
    arrived_.notify_all();
    thread_.join();
}

void SocketCanChannel::setFilter(const AcceptanceFilter &filter)
{
    const std::lock_guard<std::mutex> lock(guard_);
    filter_ = filter;
}

// --- receiving --------------------------------------------------------------------------------------------------

void SocketCanChannel::run()
{
    FrameReader reader;
    pollfd watched[] = {{main_.get(), POLLIN, 0}, {stopEvent_.get(), POLLIN, 0}, {downEvent_.get(), POLLIN, 0}};
    while (running_) {
        if (poll(watched, std::size(watched), toldDown_ ? kLookAgainMs : kNoLimit) < 0)
            continue; // a signal
        if (toldDown_ || watched[2].revents != 0)
            tellIfBack();
        if (drain(&reader) == Drained::Removed)
            watched[0].fd = -1; // nothing more will come: wait for the stop
    }
}

SocketCanChannel::Drained SocketCanChannel::drain(FrameReader *reader)
{
    while (running_) {
        const int frames = reader->read(main_.get());
        if (frames > 0) {
            store(*reader, frames);
        } else if (errno == EAGAIN) {
            countDropped();
            return Drained::All;
        } else if (errno == ENETDOWN) {
            tellDown();
        } else if (errno != EINTR) {
            tellOnce(DriverNotice::Kind::InterfaceMissing, &toldMissing_);
            return Drained::Removed;
        }
    }
    return Drained::Stopped;
}

void SocketCanChannel::store(const FrameReader &reader, int frames)
{
    clock_.look();
    std::uint64_t noRoom = 0;
    {
        const std::lock_guard<std::mutex> lock(guard_);
        BusFrame frame;
        for (int i = 0; i < frames; ++i) {
            const std::uint64_t time = clock_.microseconds(reader.wallStamp(i));
            if (storeEvent(reader, i, time) || !fromKernelFrame(reader.frame(i), reader.bytes(i), &frame) ||
                !filter_.passes(frame))
                continue;
            if (CanFdReceiveRecord *fdRecord = frame.fd ? fd_.push() : nullptr)
                fillRecord(frame, time, fdRecord);
            else if (CanReceiveRecord *record = frame.fd ? nullptr : classic_.push())
                fillRecord(frame, time, record);
            else
                ++noRoom;
        }
    }
    lost_ += noRoom;
    arrived_.notify_all();
}

// With guard_ held; false when the frame is no error frame.
bool SocketCanChannel::storeEvent(const FrameReader &reader, int i, std::uint64_t time)
{
    BusEvent event;
    if (!fromKernelFrame(reader.frame(i), reader.bytes(i), &event))
        return false;
    event.timeStamp = time;
    state_ = stateAfter(state_, event);
    if (BusEvent *room = events_.push())
        *room = event;
    else
        ++lostEvents_;
    return true;
}

BusReport SocketCanChannel::report(BusQuestion question)
{
    BusReport report;
    if (!running_)
        return report;
    CanInterface now; // asked before the lock is taken: the receiving thread needs it
    const bool told = findCanInterface(interface_.name, &now) && now.index == interface_.index;
    if (told) {
        report.arbitrationRate = now.bitRate;
        report.dataRate = now.dataBitRate;
    }
    const std::lock_guard<std::mutex> lock(guard_);
    if (told && now.state.controller != ControllerState::Unknown)
        state_.controller = now.state.controller;
    if (told && now.state.countersKnown) {
        state_.countersKnown = true;
        state_.transmitErrors = now.state.transmitErrors;
        state_.receiveErrors = now.state.receiveErrors;
    }
    report.state = state_;
    if (question == BusQuestion::StateAndEvents) {
        report.events.resize(events_.size());
        events_.take(report.events.data(), report.events.size());
        report.lost = std::exchange(lostEvents_, 0);
    }
    return report;
}

void SocketCanChannel::countDropped()
{
    const std::uint32_t dropped = framesDropped(main_.get());
    lost_ += static_cast<std::uint32_t>(dropped - dropped_);
    dropped_ = dropped;
}

template <typename Record>
std::uint32_t SocketCanChannel::receiveRecords(BoundedQueue<Record> *queue, Record *records, std::uint32_t capacity,
                                               std::uint32_t waitMs)
{
    if (!records || capacity == 0)
        return 0;
    std::unique_lock<std::mutex> lock(guard_);
    if (waitMs > 0)
        arrived_.wait_for(lock, std::chrono::milliseconds(waitMs), [&] { return !running_ || !queue->empty(); });
    return running_ ? static_cast<std::uint32_t>(queue->take(records, capacity)) : 0;
}

std::uint32_t SocketCanChannel::receive(CanReceiveRecord *records, std::uint32_t capacity, std::uint32_t waitMs)
{
    return receiveRecords(&classic_, records, capacity, waitMs);
}

std::uint32_t SocketCanChannel::receive(CanFdReceiveRecord *records, std::uint32_t capacity, std::uint32_t waitMs)
{
    return receiveRecords(&fd_, records, capacity, waitMs);
}

// --- transmitting -----------------------------------------------------------------------------------------------

template <typename Record> std::uint32_t SocketCanChannel::transmitRecords(const Record *records, std::uint32_t count)
{
    if (!records || listenOnly_)
        return 0;
    const Clock::time_point deadline = Clock::now() + kTransmitPatience;
    std::uint32_t taken = 0;
    BusFrame frame;
    canfd_frame kernelFrame;
    while (taken < count && toBusFrame(records[taken], &frame)) {
        // The kernel has no single shot of its own: it is a mode of the interface, for every frame.
        const std::size_t bytes = toKernelFrame(frame, &kernelFrame);
        if (!send(kernelFrame, bytes, isSelfReceived(records[taken].transmitType), deadline))
            break;
        ++taken;
    }
    return taken;
}

std::uint32_t SocketCanChannel::transmit(const CanTransmitRecord *records, std::uint32_t count)
{
    return transmitRecords(records, count);
}

std::uint32_t SocketCanChannel::transmit(const CanFdTransmitRecord *records, std::uint32_t count)
{
    return transmitRecords(records, count);
}

bool SocketCanChannel::send(const canfd_frame &frame, std::size_t bytes, bool heardHere, Clock::time_point deadline)
{
    // A socket does not hear its own frames but those of others on the same interface.
    const int socket = heardHere ? selfHeard_.get() : main_.get();
    bool wasDown = false;
    while (running_) {
        if (::send(socket, &frame, bytes, MSG_DONTWAIT) == static_cast<ssize_t>(bytes)) {
            return true;
        }
        const int error = errno;
        if (error == ENETDOWN && !wasDown) {
            wasDown = true; // perhaps only the socket's memory of it: try again
        } else if (error == ENETDOWN) {
            tellDown();
            return false;
        } else if (error == ENODEV || error == ENXIO) {
            tellOnce(DriverNotice::Kind::InterfaceMissing, &toldMissing_);
            return false;
        } else if (error != EINTR && !waitForRoom(socket, error, deadline)) {
            return false;
        }
    }
    return false;
}

bool SocketCanChannel::waitForRoom(int socket, int error, Clock::time_point deadline)
{
    const Clock::time_point now = Clock::now();
    if ((error != ENOBUFS && error != EAGAIN) || now >= deadline)
        return false;
    const bool queueFull = error == ENOBUFS;
    pollfd watched[] = {{stopEvent_.get(), POLLIN, 0}, {queueFull ? -1 : socket, POLLOUT, 0}};
    std::chrono::nanoseconds wait = deadline - now;
    if (queueFull)
        wait = std::min(wait, kQueueFullPause);
    const timespec limit = toTimespec(wait);
    ppoll(watched, std::size(watched), &limit, nullptr);
    return true;
}
