// Kestrix.dll in memory, with all its operations bound. Windows only.
#pragma once

#include "device/driver/kestrix/kestrixordinals.h"
#include "device/driver/kestrix/stackkeepingcall.h"

#include <optional>
#include <string>

struct HINSTANCE__; // what the system's HMODULE points to

// The library's entry points; each answers 0 while no library is loaded.
struct KestrixOperations {
#define OSTREL_POINTER(ordinal, name, result, parameters) LibraryFunction<result parameters> name;
    OSTREL_KESTRIX_OPERATIONS(OSTREL_POINTER)
#undef OSTREL_POINTER
};

class KestrixLibrary
{
public:
    KestrixLibrary() = default;
    KestrixLibrary(const KestrixLibrary &) = delete;
    KestrixLibrary &operator=(const KestrixLibrary &) = delete;
    ~KestrixLibrary() { unload(); }

    // Loads Kestrix.dll from that folder (full path, no search elsewhere) and binds every operation, or none.
    // The answer tells what is missing; empty on success and when a library is loaded already.
    std::optional<DriverNotice> load(const std::wstring &folder);
    const KestrixOperations &operations() const { return operations_; }

private:
    void unload();
    std::string bind(); // the missing operations, "12 (TransmitCan), 64 (ResetDriver)"

    HINSTANCE__ *module_ = nullptr;
    KestrixOperations operations_;
};

// The folder of the running executable, without a trailing separator.
std::wstring executableFolder();
