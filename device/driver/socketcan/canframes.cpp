#include "device/driver/socketcan/canframes.h"

#include <algorithm>
#include <cstring>

static_assert(kIdMask == CAN_EFF_MASK && kIdExtendedFlag == CAN_EFF_FLAG && kIdRemoteFlag == CAN_RTR_FLAG,
              "the identifier word is the kernel's own");
static_assert(kFdBitRateSwitch == CANFD_BRS && kFdDataBytes == CANFD_MAX_DLEN && kClassicDataBytes == CAN_MAX_DLEN);
static_assert(offsetof(can_frame, data) == offsetof(canfd_frame, data) &&
              offsetof(can_frame, len) == offsetof(canfd_frame, len));

std::size_t toKernelFrame(const BusFrame &frame, canfd_frame *kernelFrame)
{
    *kernelFrame = canfd_frame{};
    kernelFrame->can_id = frame.id;
    kernelFrame->len = frame.length;
    std::memcpy(kernelFrame->data, frame.data, sizeof frame.data);
    if (!frame.fd)
        return CAN_MTU;
    kernelFrame->flags = frame.bitRateSwitch ? CANFD_BRS : 0;
    return CANFD_MTU;
}

bool fromKernelFrame(const canfd_frame &kernelFrame, std::size_t bytes, BusFrame *frame)
{
    if ((bytes != CAN_MTU && bytes != CANFD_MTU) || (kernelFrame.can_id & CAN_ERR_FLAG) != 0)
        return false;
    *frame = BusFrame();
    frame->fd = bytes == CANFD_MTU;
    const bool extended = (kernelFrame.can_id & CAN_EFF_FLAG) != 0;
    frame->id = kernelFrame.can_id & (CAN_EFF_FLAG | CAN_RTR_FLAG | (extended ? CAN_EFF_MASK : CAN_SFF_MASK));
    if (frame->fd) {
        frame->id &= ~kIdRemoteFlag; // there are no remote FD frames
        frame->bitRateSwitch = (kernelFrame.flags & CANFD_BRS) != 0;
        frame->errorStateIndicator = (kernelFrame.flags & CANFD_ESI) != 0;
    }
    frame->length = std::min<std::uint8_t>(kernelFrame.len, frame->fd ? kFdDataBytes : kClassicDataBytes);
    if (!frame->remote())
        std::memcpy(frame->data, kernelFrame.data, frame->length);
    return true;
}
