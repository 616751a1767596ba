#include "device/driver/socketcan/cansocket.h"

#include "device/driver/timeunits.h"

#include <linux/can.h>
#include <linux/can/raw.h>
#include <linux/sock_diag.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <ctime>

namespace
{
constexpr int kReceiveBufferBytes = 16 << 20;

template <typename Value> bool setOption(int socket, int level, int option, const Value &value)
{
    return setsockopt(socket, level, option, &value, sizeof value) == 0;
}

Descriptor failure(int *error)
{
    *error = errno;
    return Descriptor();
}

bool bindTo(int socket, int interfaceIndex)
{
    sockaddr_can address{};
    address.can_family = AF_CAN;
    address.can_ifindex = interfaceIndex;
    return bind(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
}

Descriptor openSocket()
{
    return Descriptor(socket(PF_CAN, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, CAN_RAW));
}

bool takesFdFrames(int socket)
{
    return setOption(socket, SOL_CAN_RAW, CAN_RAW_FD_FRAMES, 1);
}

} // namespace

Descriptor openReceivingSocket(int interfaceIndex, int *error)
{
    Descriptor socket = openSocket();
    constexpr can_err_mask_t kEveryErrorFrame = CAN_ERR_MASK;
    if (!socket.valid() || !takesFdFrames(socket.get()) ||
        !setOption(socket.get(), SOL_CAN_RAW, CAN_RAW_ERR_FILTER, kEveryErrorFrame) ||
        !setOption(socket.get(), SOL_SOCKET, SO_TIMESTAMPNS, 1))
        return failure(error);
    // The second way is capped for ordinary users; the frames then wait in the channel's queues, not in the kernel.
    if (!setOption(socket.get(), SOL_SOCKET, SO_RCVBUFFORCE, kReceiveBufferBytes))
        setOption(socket.get(), SOL_SOCKET, SO_RCVBUF, kReceiveBufferBytes);
    if (!bindTo(socket.get(), interfaceIndex))
        return failure(error);
    return socket;
}

Descriptor openSendingSocket(int interfaceIndex, int *error)
{
    Descriptor socket = openSocket();
    if (!socket.valid() || !takesFdFrames(socket.get()) ||
        setsockopt(socket.get(), SOL_CAN_RAW, CAN_RAW_FILTER, nullptr, 0) != 0 || !bindTo(socket.get(), interfaceIndex))
        return failure(error);
    return socket;
}

std::uint32_t framesDropped(int socket)
{
    std::uint32_t memory[SK_MEMINFO_VARS] = {};
    socklen_t bytes = sizeof memory;
    getsockopt(socket, SOL_SOCKET, SO_MEMINFO, memory, &bytes);
    return memory[SK_MEMINFO_DROPS];
}

struct FrameReader::Buffers {
    static constexpr int kFrames = 128;

    mmsghdr messages[kFrames];
    iovec parts[kFrames];
    canfd_frame frames[kFrames];
    alignas(cmsghdr) char controls[kFrames][CMSG_SPACE(sizeof(timespec))];
};

FrameReader::FrameReader() : buffers_(std::make_unique<Buffers>()) {}

FrameReader::~FrameReader() = default;

int FrameReader::read(int socket)
{
    for (int i = 0; i < Buffers::kFrames; ++i) {
        buffers_->parts[i] = {&buffers_->frames[i], sizeof buffers_->frames[i]};
        msghdr &header = buffers_->messages[i].msg_hdr;
        header = msghdr{};
        header.msg_iov = &buffers_->parts[i];
        header.msg_iovlen = 1;
        header.msg_control = buffers_->controls[i];
        header.msg_controllen = sizeof buffers_->controls[i];
    }
    return recvmmsg(socket, buffers_->messages, Buffers::kFrames, MSG_DONTWAIT, nullptr);
}

const canfd_frame &FrameReader::frame(int i) const
{
    return buffers_->frames[i];
}

std::size_t FrameReader::bytes(int i) const
{
    return buffers_->messages[i].msg_len;
}

std::int64_t FrameReader::wallStamp(int i) const
{
    msghdr &header = buffers_->messages[i].msg_hdr;
    for (cmsghdr *control = CMSG_FIRSTHDR(&header); control; control = CMSG_NXTHDR(&header, control))
        if (control->cmsg_level == SOL_SOCKET && control->cmsg_type == SO_TIMESTAMPNS) {
            timespec stamp{};
            std::memcpy(&stamp, CMSG_DATA(control), sizeof stamp);
            return stamp.tv_sec * kNanosecondsPerSecond + stamp.tv_nsec;
        }
    return INT64_MAX; // no stamp: as if it came now
}
