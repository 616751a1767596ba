// Hands on what is received, without delay: for entries that answer.
#pragma once

#include "frames/tap.h"

#include <functional>
#include <thread>

class TransmitListener
{
public:
    using Heard = std::function<void(const RawFrame *frames, std::size_t count)>;

    // heard is called in the listener's thread until it is destroyed, which waits for a call under way.
    explicit TransmitListener(Heard heard);
    ~TransmitListener();
    TransmitListener(const TransmitListener &) = delete;
    TransmitListener &operator=(const TransmitListener &) = delete;

private:
    void run();

    const Heard heard_;
    TapReader reader_;
    std::thread thread_;
};
