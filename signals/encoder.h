// Puts values into a message's bytes: the exact inverse of the decoder.
#pragma once

#include "signals/database.h"

#include <optional>
#include <vector>

enum class EncodeOutcome : std::uint8_t {
    Exact,
    Rounded, // the nearest value that the signal can carry
    Clamped, // to the nearest limit
    Refused, // the payload is as it was
};

enum class EncodeRefusal : std::uint8_t {
    None,
    UnknownSignal,        // no such index
    NotFinite,            // not a number, or infinite
    BeyondPayload,        // the payload is too short for the signal
    ConflictingSelectors, // another signal or value given needs another value of the multiplexer
    NeverSelected,        // no value of its multiplexer selects it
};

struct EncodeResult {
    EncodeOutcome outcome = EncodeOutcome::Refused;
    EncodeRefusal refusal = EncodeRefusal::None;
    double physical = 0; // what the payload carries now; 0 when refused
};

// Why a value was refused, in the current language; empty for None.
QString refusalText(EncodeRefusal refusal);

enum class EncodeLimits : std::uint8_t {
    Representable, // what the bits can carry
    Declared,      // within minimum and maximum too, where the signal has them
};

struct SignalInput {
    int signal = -1; // index in the message
    double physical = 0;
    std::optional<std::int64_t> raw; // instead of `physical`: exact, as SignalValue has it
};

class MessageEncoder
{
public:
    // The definition must live as long.
    explicit MessageEncoder(const MessageDefinition &message) : message_(&message) {}

    // The message's length, at most a frame's 64 bytes.
    unsigned payloadLength() const;
    // Zeros, then every signal's start value that is always there, then of what these select.
    void start(std::uint8_t *payload, unsigned length) const;

    // One signal; whether it is selected is not asked.
    EncodeResult set(const SignalInput &input, std::uint8_t *payload, unsigned length,
                     EncodeLimits limits = EncodeLimits::Representable) const;
    // Several signals, and the multiplexers that select them: one that is not given gets the first value that selects
    // what is given, unless the payload selects it already. Results in the order of the inputs.
    std::vector<EncodeResult> encode(const std::vector<SignalInput> &inputs, std::uint8_t *payload, unsigned length,
                                     EncodeLimits limits = EncodeLimits::Representable) const;

private:
    struct Choice { // of a multiplexer's value
        std::int64_t value;
        bool given; // by the caller
    };
    EncodeRefusal choose(int signal, QVector<std::optional<Choice>> *choices, const std::uint8_t *payload,
                         unsigned length) const;

    const MessageDefinition *message_;
};
