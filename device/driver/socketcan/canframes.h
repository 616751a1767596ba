// Between the kernel's CAN frames and the frames that the driver's records stand for.
#pragma once

#include "device/driver/busevent.h"
#include "device/driver/busframe.h"

#include <linux/can.h>

#include <cstddef>

// A classic frame takes the first CAN_MTU bytes of a canfd_frame: the two share their layout.

// Answers the bytes to hand to the kernel: CAN_MTU or CANFD_MTU.
std::size_t toKernelFrame(const BusFrame &frame, canfd_frame *kernelFrame);
// bytes: the size the kernel handed out. false for what is neither a data nor a remote frame: error frames, other
// sizes.
bool fromKernelFrame(const canfd_frame &kernelFrame, std::size_t bytes, BusFrame *frame);
// The same for an error frame; false for all others.
bool fromKernelFrame(const canfd_frame &kernelFrame, std::size_t bytes, BusEvent *event);
