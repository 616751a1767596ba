// An open file descriptor with one owner.
#pragma once

#include <unistd.h>

#include <utility>

class Descriptor
{
public:
    explicit Descriptor(int descriptor = -1) : descriptor_(descriptor) {}
    Descriptor(Descriptor &&other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor()
    {
        if (valid())
            close(descriptor_);
    }

    bool valid() const { return descriptor_ >= 0; }
    int get() const { return descriptor_; }

private:
    int descriptor_;
};
