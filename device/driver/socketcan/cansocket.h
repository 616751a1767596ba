// Raw CAN sockets bound to one kernel interface.
#pragma once

#include "device/driver/socketcan/descriptor.h"

#include <cstddef>
#include <cstdint>
#include <memory>

struct canfd_frame;

// Both answer an invalid descriptor and set *error (errno) on failure. The sockets never block and take FD frames.

// Hears everything on the interface but what is sent through itself, error frames included; stamps every frame, and has
// as large a buffer as the kernel allows.
Descriptor openReceivingSocket(int interfaceIndex, int *error);
// Hears nothing. What goes out here is heard by the receiving socket.
Descriptor openSendingSocket(int interfaceIndex, int *error);

// The frames that found no room in the socket's buffer since it was opened, modulo 2^32.
std::uint32_t framesDropped(int socket);

// Reads frames with their time stamps, many at a time.
class FrameReader
{
public:
    FrameReader();
    ~FrameReader();
    FrameReader(const FrameReader &) = delete;
    FrameReader &operator=(const FrameReader &) = delete;

    // Answers how many frames were read, or -1 with errno set (EAGAIN: none is there).
    int read(int socket);
    const canfd_frame &frame(int i) const;
    std::size_t bytes(int i) const;      // of the frame, as the kernel gives it
    std::int64_t wallStamp(int i) const; // nanoseconds of the wall clock

private:
    struct Buffers;
    std::unique_ptr<Buffers> buffers_;
};
