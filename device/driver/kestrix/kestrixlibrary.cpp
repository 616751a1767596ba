#include "device/driver/kestrix/kestrixlibrary.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace
{

constexpr wchar_t kFileName[] = L"Kestrix.dll";
constexpr char kFileNameText[] = "Kestrix.dll";

std::string utf8(const std::wstring &text)
{
    const int length = static_cast<int>(text.size());
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(bytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, &result[0], bytes, nullptr, nullptr);
    return result;
}

// The system's own words in the user's language and its error number, on one line.
std::string systemReason(DWORD error)
{
    const wchar_t *inserts[] = {kFileName, L"", L"", L""};
    wchar_t *buffer = nullptr;
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_ARGUMENT_ARRAY,
                       nullptr, error, 0, reinterpret_cast<wchar_t *>(&buffer), 0,
                       reinterpret_cast<va_list *>(const_cast<wchar_t **>(inserts))); // an array, as the flag says
    std::wstring text(buffer ? buffer : L"", length);
    LocalFree(buffer);
    while (!text.empty() && (text.back() == L'\n' || text.back() == L'\r' || text.back() == L' '))
        text.pop_back();
    return utf8(text) + (text.empty() ? "" : " ") + "(" + std::to_string(error) + ")";
}

// Keeps the system from putting up a box of its own about a broken library.
class QuietErrors
{
public:
    QuietErrors() { SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &previous_); }
    ~QuietErrors() { SetThreadErrorMode(previous_, nullptr); }
    QuietErrors(const QuietErrors &) = delete;
    QuietErrors &operator=(const QuietErrors &) = delete;

private:
    DWORD previous_ = 0;
};

} // namespace

std::optional<DriverNotice> KestrixLibrary::load(const std::wstring &folder)
{
    if (module_)
        return std::nullopt;
    const std::wstring path = folder + L'\\' + kFileName;
    if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES)
        return DriverNotice{DriverNotice::Kind::LibraryMissing, kFileNameText};

    const QuietErrors quiet;
    // What the library itself needs is looked for in its own folder too.
    module_ = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (!module_) {
        const DWORD error = GetLastError();
        return DriverNotice{DriverNotice::Kind::LibraryUnusable, kFileNameText + (": " + systemReason(error))};
    }
    const std::string missing = bind();
    if (missing.empty())
        return std::nullopt;
    unload();
    return DriverNotice{DriverNotice::Kind::OrdinalMissing, missing};
}

std::string KestrixLibrary::bind()
{
    std::string missing;
    const auto resolve = [&](unsigned ordinal, const char *name) {
        // The ordinal travels in the low word of the name's pointer.
        void *address = reinterpret_cast<void *>(GetProcAddress(module_, MAKEINTRESOURCEA(ordinal)));
        if (!address)
            missing += (missing.empty() ? "" : ", ") + std::to_string(ordinal) + " (" + name + ")";
        return address;
    };
#define OSTREL_BIND(ordinal, name, result, parameters)                                                                 \
    operations_.name = decltype(operations_.name)(resolve(ordinal, #name));
    OSTREL_KESTRIX_OPERATIONS(OSTREL_BIND)
#undef OSTREL_BIND
    return missing;
}

void KestrixLibrary::unload()
{
    operations_ = {};
    if (module_)
        FreeLibrary(module_);
    module_ = nullptr;
}

std::wstring executableFolder()
{
    std::wstring path(MAX_PATH, L'\0');
    DWORD length = GetModuleFileNameW(nullptr, &path[0], static_cast<DWORD>(path.size()));
    while (length == path.size()) { // cut off
        path.resize(path.size() * 2);
        length = GetModuleFileNameW(nullptr, &path[0], static_cast<DWORD>(path.size()));
    }
    path.resize(length);
    const std::size_t separator = path.find_last_of(L'\\');
    return separator == std::wstring::npos ? std::wstring(L".") : path.substr(0, separator);
}
