#include "device/driver/socketcan/canframes.h"

#include <linux/can/error.h>

#include <algorithm>
#include <cstring>

static_assert(kIdMask == CAN_EFF_MASK && kIdExtendedFlag == CAN_EFF_FLAG && kIdRemoteFlag == CAN_RTR_FLAG,
              "the identifier word is the kernel's own");
static_assert(kFdBitRateSwitch == CANFD_BRS && kFdDataBytes == CANFD_MAX_DLEN && kClassicDataBytes == CAN_MAX_DLEN);
static_assert(offsetof(can_frame, data) == offsetof(canfd_frame, data) &&
              offsetof(can_frame, len) == offsetof(canfd_frame, len));

static_assert(buserror::kLostArbitration == CAN_ERR_LOSTARB && buserror::kController == CAN_ERR_CRTL &&
                  buserror::kProtocol == CAN_ERR_PROT && buserror::kNoAcknowledge == CAN_ERR_ACK &&
                  buserror::kBusOff == CAN_ERR_BUSOFF && buserror::kRestarted == CAN_ERR_RESTARTED &&
                  buserror::kErrorActive == CAN_ERR_CRTL_ACTIVE &&
                  buserror::kTransmitPassive == CAN_ERR_CRTL_TX_PASSIVE && buserror::kStuff == CAN_ERR_PROT_STUFF &&
                  buserror::kAcknowledgeSlot == CAN_ERR_PROT_LOC_ACK && kBusEventBytes == CAN_ERR_DLC,
              "the error classes are the kernel's own");

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

bool fromKernelFrame(const canfd_frame &kernelFrame, std::size_t bytes, BusEvent *event)
{
    if (bytes != CAN_MTU || (kernelFrame.can_id & CAN_ERR_FLAG) == 0)
        return false;
    *event = BusEvent();
    event->classes = kernelFrame.can_id & CAN_ERR_MASK;
    std::memcpy(event->data, kernelFrame.data, std::min<std::size_t>(kernelFrame.len, kBusEventBytes));
    return true;
}
