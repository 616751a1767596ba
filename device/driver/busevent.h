// What a channel tells beside its frames: error frames, and the state of its controller.
#pragma once

#include <cstdint>
#include <vector>

// Classes of an error frame and what its bytes say, numbered as SocketCAN does; several may be set at once.
namespace buserror
{
constexpr std::uint32_t kTransmitTimeout = 0x001;
constexpr std::uint32_t kLostArbitration = 0x002; // byte 0: at which bit, 0 unknown
constexpr std::uint32_t kController = 0x004;      // byte 1: the flags below
constexpr std::uint32_t kProtocol = 0x008;        // byte 2: the flags below; byte 3: where in the frame
constexpr std::uint32_t kTransceiver = 0x010;     // byte 4
constexpr std::uint32_t kNoAcknowledge = 0x020;
constexpr std::uint32_t kBusOff = 0x040;
constexpr std::uint32_t kBusError = 0x080;
constexpr std::uint32_t kRestarted = 0x100;
constexpr std::uint32_t kCounters = 0x200; // byte 6: transmit error counter; byte 7: receive error counter

enum Byte {
    ArbitrationBit,
    ControllerFlags,
    ProtocolFlags,
    ProtocolPlace,
    Transceiver,
    TransmitErrors = 6,
    ReceiveErrors
};

// Byte 1.
constexpr std::uint8_t kReceiveOverflow = 0x01;
constexpr std::uint8_t kTransmitOverflow = 0x02;
constexpr std::uint8_t kReceiveWarning = 0x04;
constexpr std::uint8_t kTransmitWarning = 0x08;
constexpr std::uint8_t kReceivePassive = 0x10;
constexpr std::uint8_t kTransmitPassive = 0x20;
constexpr std::uint8_t kErrorActive = 0x40;

// Byte 2.
constexpr std::uint8_t kSingleBit = 0x01;
constexpr std::uint8_t kForm = 0x02;
constexpr std::uint8_t kStuff = 0x04;
constexpr std::uint8_t kOnTransmission = 0x80;
// Byte 3.
constexpr std::uint8_t kAcknowledgeSlot = 0x19;
} // namespace buserror

constexpr std::size_t kBusEventBytes = 8;

// One error frame, or a change of the controller's state that is told like one.
struct BusEvent {
    std::uint64_t timeStamp = 0; // microseconds, on the clock of the channel's received frames
    std::uint32_t classes = 0;   // buserror::
    std::uint8_t data[kBusEventBytes] = {};
};

enum class ControllerState : std::uint8_t { Unknown, ErrorActive, ErrorWarning, ErrorPassive, BusOff };

struct ChannelState {
    ControllerState controller = ControllerState::Unknown;
    bool countersKnown = false;
    std::uint16_t transmitErrors = 0; // 0 while unknown
    std::uint16_t receiveErrors = 0;
};

// The state that an event leaves: what it does not speak of stays.
ChannelState stateAfter(const ChannelState &state, const BusEvent &event);

struct BusReport {
    ChannelState state;
    std::uint32_t arbitrationRate = 0; // bit/s, where the driver did not get its rates from the program; 0: unknown
    std::uint32_t dataRate = 0;        // the same of the data phase
    std::vector<BusEvent> events;      // oldest first
    std::uint64_t lost = 0;            // events that found no room since they were last taken
};
