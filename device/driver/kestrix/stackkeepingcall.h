// Calls into the adapter's library whatever its calling convention. Windows only.
#pragma once

#include <cstdint>
#include <type_traits>

#if defined(__i386__)
// Calls `function` with `count` arguments of 32 bits and answers what it answers. The stack pointer is put back after
// the call, so it does not matter whether the arguments were taken off by the function (__stdcall) or left to its
// caller (__cdecl); the two differ in nothing else.
extern "C" std::uint32_t __cdecl ostrelStackKeepingCall(const void *function, const std::uint32_t *arguments,
                                                        std::uint32_t count);
#endif

template <typename Signature> class LibraryFunction;

// A function of the library, bound at run time. Every argument and the answer has 32 bits in a 32-bit program; where
// there is one convention only, it is an ordinary call.
template <typename Result, typename... Parameters> class LibraryFunction<Result(Parameters...)>
{
public:
    LibraryFunction() = default;
    explicit LibraryFunction(void *address) : address_(address) {}

    explicit operator bool() const { return address_ != nullptr; }
    void *address() const { return address_; }

    // Zero when nothing is bound.
    Result operator()(Parameters... arguments) const
    {
        if (!address_)
            return Result();
#if defined(__i386__)
        static_assert(sizeof(Result) == sizeof(std::uint32_t));
        static_assert(((sizeof(Parameters) == sizeof(std::uint32_t)) && ...));
        // Never empty: an array of no elements is no C++.
        const std::uint32_t words[sizeof...(Parameters) + 1] = {word(arguments)...};
        const std::uint32_t answer = ostrelStackKeepingCall(address_, words, sizeof...(Parameters));
        if constexpr (std::is_pointer_v<Result>)
            return reinterpret_cast<Result>(answer);
        else
            return answer;
#else
        return reinterpret_cast<Result (*)(Parameters...)>(address_)(arguments...);
#endif
    }

private:
    template <typename Value> static std::uint32_t word(Value value)
    {
        if constexpr (std::is_pointer_v<Value>)
            return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(value));
        else
            return value;
    }

    void *address_ = nullptr;
};
