// Proves that the program and a Kestrix.dll fit together: the binding by ordinal, either calling convention, the
// records, and what is told when the library is no good. Beside the executable: Kestrix.dll (the simulated adapter, its
// operations __stdcall), KestrixCdecl.dll (the same, __cdecl) and Incomplete.dll. Without Qt, so that a failure is the
// binding's own.
// "test_kestrixabi speed" tells the frames a second that go through the library instead.
#include "device/driver/kestrix/kestrixdriver.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iterator>
#include <thread>

namespace
{

int passed = 0;
int failed = 0;

void check(bool condition, const std::string &what)
{
    ++(condition ? passed : failed);
    if (!condition)
        std::printf("FAIL %s\n", what.c_str());
}

// --- the stack ----------------------------------------------------------------------------------------------------

// Calls a function with 32-bit arguments the way a stdcall caller does and leaves the clean-up to it. unbalance: by how
// many bytes the stack then stood off, 0 when the callee took exactly its arguments. Repaired before going on.
std::uint32_t measuredCall(void *function, const std::uint32_t *arguments, std::uint32_t count, std::int32_t *unbalance)
{
    std::uint32_t result;
    std::int32_t difference;
    asm volatile("movl %%esp, %%ebx\n\t"
                 "1: testl %%ecx, %%ecx\n\t"
                 "jz 2f\n\t"
                 "pushl -4(%%esi,%%ecx,4)\n\t"
                 "decl %%ecx\n\t"
                 "jmp 1b\n\t"
                 "2: call *%%edi\n\t"
                 "movl %%ebx, %%edx\n\t"
                 "subl %%esp, %%edx\n\t"
                 "movl %%ebx, %%esp"
                 : "=a"(result), "=d"(difference), "+c"(count)
                 : "S"(arguments), "D"(function)
                 : "ebx", "memory", "cc");
    *unbalance = difference;
    return result;
}

std::uint32_t word(const void *pointer)
{
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(pointer));
}

enum class Convention { Stdcall, Cdecl };

// Every operation, called directly, leaves the stack as its convention has it: the two libraries do differ. Through the
// program's own way of calling the stack stands as before, a million times.
void stackIsKept(const KestrixOperations &library, Convention convention, Driver::Handle device, Driver::Handle channel)
{
    constexpr int kCalls = 1000000;
    static CanTransmitRecord classic{};
    static CanFdTransmitRecord fd{};
    static CanReceiveRecord classicRead[4];
    static CanFdReceiveRecord fdRead[4];
    static DeviceInfoRecord info;
    static ChannelInitRecord init{};
    constexpr std::uint32_t kNoDevice = 99;
    const PropertyInterface *properties = library.GetPropertyInterface(device);
    void *setValue = reinterpret_cast<void *>(properties->SetValue);

    struct Case {
        const char *name;
        void *function;
        std::vector<std::uint32_t> arguments;
        std::uint32_t answer;
    };
    // What would take real time a million times (opening, wire time) is called so that it is refused at once.
    const Case cases[] = {
        {"OpenDevice", library.OpenDevice.address(), {kDeviceType, kNoDevice, 0}, 0},
        {"CloseDevice", library.CloseDevice.address(), {0}, 0},
        {"GetDeviceInfo", library.GetDeviceInfo.address(), {device, word(&info)}, kDriverSuccess},
        {"GetDeviceStatus", library.GetDeviceStatus.address(), {device}, kStatusPresent},
        {"InitChannel", library.InitChannel.address(), {0, 0, word(&init)}, 0},
        {"StartChannel", library.StartChannel.address(), {0}, 0},
        {"ResetChannel", library.ResetChannel.address(), {0}, 0},
        {"TransmitCan", library.TransmitCan.address(), {channel, word(&classic), 0}, 0},
        {"ReceiveCan", library.ReceiveCan.address(), {channel, word(classicRead), 4, 0}, 0},
        {"TransmitCanFd", library.TransmitCanFd.address(), {channel, word(&fd), 0}, 0},
        {"ReceiveCanFd", library.ReceiveCanFd.address(), {channel, word(fdRead), 4, 0}, 0},
        {"GetPropertyInterface", library.GetPropertyInterface.address(), {device}, word(properties)},
        {"UpdateDevice", library.UpdateDevice.address(), {0}, 0},
        {"SetArbitrationBaud", library.SetArbitrationBaud.address(), {device, 0, 0}, kDriverSuccess},
        {"SetDataBaud", library.SetDataBaud.address(), {device, 0, 0}, kDriverSuccess},
        {"SetCanFdStandard", library.SetCanFdStandard.address(), {device, 0, 0}, kDriverSuccess},
        {"SetValue", setValue, {word("0/no_such_path"), word("0")}, 0},
        // Last: what it does to an open device is the library's own business.
        {"ResetDriver", library.ResetDriver.address(), {}, kDriverSuccess},
    };
    for (const Case &one : cases) {
        const auto count = static_cast<std::uint32_t>(one.arguments.size());
        const std::uint32_t leftThere = convention == Convention::Cdecl ? count * sizeof(std::uint32_t) : 0;
        std::int32_t unbalance = 0;
        measuredCall(one.function, one.arguments.data(), count, &unbalance);
        check(unbalance == static_cast<std::int32_t>(leftThere), std::string(one.name) + " has its convention");

        const std::uint32_t call[] = {word(one.function), word(one.arguments.data()), count};
        int unbalanced = 0;
        int unexpected = 0;
        for (int i = 0; i < kCalls; ++i) {
            const std::uint32_t answer =
                measuredCall(reinterpret_cast<void *>(ostrelStackKeepingCall), call, std::size(call), &unbalance);
            unbalanced += unbalance != sizeof call; // its own arguments, which it leaves to its caller
            unexpected += answer != one.answer;
        }
        check(unbalanced == 0, std::string(one.name) + " leaves the stack as it was");
        check(unexpected == 0, std::string(one.name) + " answers as expected a million times");
    }
}

// A million calls as the program makes them, arguments and all: settings that are refused or taken by their value.
void aMillionOrdinaryCalls(const std::string &name, const std::wstring &folder)
{
    constexpr std::uint32_t kCalls = 1000000;
    KestrixDriver driver(folder);
    const Driver::Handle device = driver.OpenDevice(kDeviceType, 0, 0);
    const PropertyInterface *properties = driver.GetPropertyInterface(device);
    check(properties != nullptr, name + ": opens");
    std::uint32_t unexpected = 0;
    for (std::uint32_t i = 0; properties && i < kCalls; ++i) {
        const std::uint32_t channel = i % (kChannelCount + 1);
        unexpected += driver.SetDataBaud(device, channel, 0) != (channel < kChannelCount ? kDriverSuccess : 0);
        unexpected += properties->SetValue("1/filter_clear", i % 2 ? "0" : "x") != i % 2;
    }
    check(unexpected == 0, name + ": answers two million mixed calls as expected");
    driver.CloseDevice(device);
}

// --- frames -------------------------------------------------------------------------------------------------------

// Asks again until something came or two seconds are over.
template <typename Record, typename Receive> bool receiveOne(Record *record, Receive receive)
{
    for (int attempt = 0; attempt < 2000; ++attempt) {
        if (receive(record) == 1)
            return true;
        Sleep(1);
    }
    return false;
}

template <typename Library>
bool startBoth(Library &library, Driver::Handle device, Driver::Handle (&channels)[kChannelCount])
{
    bool good = true;
    for (std::uint32_t index = 0; index < kChannelCount; ++index) {
        ChannelInitRecord init{};
        init.channelType = 1;
        good = good && library.SetCanFdStandard(device, index, 0) == kDriverSuccess &&
               library.SetArbitrationBaud(device, index, 0) == kDriverSuccess &&
               library.SetDataBaud(device, index, 0) == kDriverSuccess;
        channels[index] = library.InitChannel(device, index, &init);
        good = good && channels[index] != 0 && library.StartChannel(channels[index]) == kDriverSuccess;
    }
    return good;
}

// One session as the program runs it: open, set up, a classic and an FD frame from the first channel to the second,
// filters, close. afterwards gets the open device and its first channel before the end. Library: anything with the
// operations, through its "." names.
template <typename Library>
void session(const std::string &name, Library &library,
             const std::function<void(Driver::Handle, Driver::Handle)> &afterwards = {})
{
    const Driver::Handle device = library.OpenDevice(kDeviceType, 0, 0);
    check(device != 0, name + ": device opens");
    DeviceInfoRecord info{};
    check(library.GetDeviceInfo(device, &info) == kDriverSuccess && info.firmwareVersion != 0 &&
              info.channelCount == kChannelCount,
          name + ": device information is filled in");
    check(library.GetDeviceStatus(device) == kStatusPresent, name + ": device is present");

    const PropertyInterface *properties = library.GetPropertyInterface(device);
    check(properties && properties->SetValue, name + ": property interface");
    if (!properties || !properties->SetValue)
        return;
    const LibraryFunction<std::uint32_t(const char *, const char *)> setValue(
        reinterpret_cast<void *>(properties->SetValue));
    check(setValue("1/filter_clear", "0") == kDriverSuccess, name + ": a known path is taken");
    check(setValue("1/no_such_path", "0") != kDriverSuccess, name + ": an unknown path is refused");

    Driver::Handle channels[kChannelCount] = {};
    check(startBoth(library, device, channels), name + ": both channels start");

    CanTransmitRecord classic{};
    classic.id = 0x12345678 | kIdExtendedFlag;
    classic.length = kClassicDataBytes;
    std::memcpy(classic.data, "\x01\x02\x03\x04\xA5\xB6\xC7\xD8", kClassicDataBytes);
    check(library.TransmitCan(channels[0], &classic, 1) == 1, name + ": classic frame is sent");
    CanReceiveRecord classicRead{};
    const bool classicCame = receiveOne(
        &classicRead, [&](CanReceiveRecord *record) { return library.ReceiveCan(channels[1], record, 1, 0); });
    check(classicCame && classicRead.id == classic.id && classicRead.length == classic.length &&
              std::memcmp(classicRead.data, classic.data, sizeof classic.data) == 0,
          name + ": classic frame arrives whole");

    CanFdTransmitRecord fd{};
    fd.id = 0x7FF;
    fd.length = kFdDataBytes;
    fd.flags = kFdBitRateSwitch;
    for (std::size_t i = 0; i < kFdDataBytes; ++i)
        fd.data[i] = static_cast<std::uint8_t>(i * 7);
    check(library.TransmitCanFd(channels[0], &fd, 1) == 1, name + ": FD frame is sent");
    CanFdReceiveRecord fdRead{};
    const bool fdCame = receiveOne(
        &fdRead, [&](CanFdReceiveRecord *record) { return library.ReceiveCanFd(channels[1], record, 1, 0); });
    check(fdCame && fdRead.id == fd.id && fdRead.length == fd.length && fdRead.flags == fd.flags &&
              std::memcmp(fdRead.data, fd.data, sizeof fd.data) == 0,
          name + ": FD frame arrives whole");
    check(fdRead.timeStamp > classicRead.timeStamp && fdRead.timeStamp - classicRead.timeStamp < 60000000,
          name + ": time stamps are microseconds in order");

    if (afterwards)
        afterwards(device, channels[0]);
    for (const Driver::Handle channel : channels)
        library.ResetChannel(channel);
    library.CloseDevice(device);
    check(library.GetDeviceStatus(device) != kStatusPresent, name + ": closed device does not answer");
}

// --- the library's file -------------------------------------------------------------------------------------------

class Folder
{
public:
    explicit Folder(const wchar_t *name) : path_(executableFolder() + L'\\' + name)
    {
        CreateDirectoryW(path_.c_str(), nullptr);
        DeleteFileW(library().c_str());
    }
    const std::wstring &path() const { return path_; }
    std::wstring library() const { return path_ + L"\\Kestrix.dll"; }
    void put(const std::vector<char> &content) const
    {
        FILE *file = _wfopen(library().c_str(), L"wb");
        check(file && std::fwrite(content.data(), 1, content.size(), file) == content.size(), "test library written");
        if (file)
            std::fclose(file);
    }

private:
    std::wstring path_;
};

std::vector<char> contentOf(const wchar_t *name)
{
    std::vector<char> content;
    if (FILE *file = _wfopen((executableFolder() + L'\\' + name).c_str(), L"rb")) {
        char block[4096];
        while (const std::size_t read = std::fread(block, 1, sizeof block, file))
            content.insert(content.end(), block, block + read);
        std::fclose(file);
    }
    return content;
}

// The same image marked as one for 64-bit processors.
std::vector<char> for64Bit(std::vector<char> image)
{
    constexpr std::size_t kHeaderOffsetAt = 0x3C;
    constexpr std::size_t kSignatureBytes = 4;
    const std::uint16_t machine = IMAGE_FILE_MACHINE_AMD64;
    std::uint32_t header = 0;
    std::memcpy(&header, image.data() + kHeaderOffsetAt, sizeof header);
    std::memcpy(image.data() + header + kSignatureBytes, &machine, sizeof machine);
    return image;
}

void expectFailure(const std::string &name, KestrixDriver &driver, DriverNotice::Kind kind, const std::string &detail)
{
    // As the device layer opens: once more after a reset.
    check(driver.OpenDevice(kDeviceType, 0, 0) == 0, name + ": opening fails");
    driver.ResetDriver();
    check(driver.OpenDevice(kDeviceType, 0, 0) == 0, name + ": the second try fails");
    const std::vector<DriverNotice> notices = driver.takeNotices();
    check(notices.size() == 1, name + ": one notice");
    check(!notices.empty() && notices[0].kind == kind && notices[0].detail.find(detail) != std::string::npos,
          name + ": the notice names what is missing: " + (notices.empty() ? "" : notices[0].detail));
    if (!notices.empty())
        std::printf("     %s: %s\n", name.c_str(), notices[0].detail.c_str());
    check(driver.takeNotices().empty(), name + ": told once");
    check(driver.GetDeviceStatus(1) == 0 && driver.GetPropertyInterface(1) == nullptr && driver.CloseDevice(1) == 0,
          name + ": everything else answers 0");
}

void libraryFileIsJudged()
{
    const std::vector<char> good = contentOf(L"Kestrix.dll");
    check(!good.empty(), "Kestrix.dll is beside the test");
    if (good.empty())
        return;
    const Folder folder(L"\u5EA7\u6905 ab"); // Chinese characters and a blank
    KestrixDriver driver(folder.path());
    check(driver.deviceNames() ==
              std::vector<std::string>{"Halden-D2 #0", "Halden-D2 #1", "Halden-D2 #2", "Halden-D2 #3"},
          "four devices are on offer, library or not");

    expectFailure("no library", driver, DriverNotice::Kind::LibraryMissing, "Kestrix.dll");
    folder.put({'n', 'o', ' ', 'l', 'i', 'b', 'r', 'a', 'r', 'y'});
    expectFailure("no library at all", driver, DriverNotice::Kind::LibraryUnusable, "Kestrix.dll");
    folder.put(for64Bit(good));
    expectFailure("64-bit library", driver, DriverNotice::Kind::LibraryUnusable, "Kestrix.dll");
    folder.put(contentOf(L"Incomplete.dll"));
    expectFailure("incomplete library", driver, DriverNotice::Kind::OrdinalMissing,
                  "12 (TransmitCan), 64 (ResetDriver)");
    folder.put(good);
    session("library that turned up later", driver);
    const std::vector<DriverNotice> notices = driver.takeNotices();
    check(notices.size() == 1 && notices[0].kind == DriverNotice::Kind::NotHardware,
          "a good library, but no adapter: that is told");
}

// --- bare ordinals ------------------------------------------------------------------------------------------------

void exportsAreOrdinalsOnly(HMODULE module)
{
    constexpr unsigned kLast = 70;
    std::string found;
    for (unsigned ordinal = 1; ordinal <= kLast; ++ordinal)
        if (GetProcAddress(module, MAKEINTRESOURCEA(ordinal)))
            found += std::to_string(ordinal) + " ";
    check(found == "1 2 3 4 5 6 7 12 13 14 15 16 32 33 34 35 64 ", "the exported ordinals are " + found);
    for (const char *name : {"OpenDevice", "_OpenDevice@12", "OpenDevice@12", "ResetDriver"})
        check(!GetProcAddress(module, name), std::string("no export is called ") + name);
}

// --- speed --------------------------------------------------------------------------------------------------------

// Both channels send the shortest FD frames as fast as the bus takes them; tells what arrives in all.
int tellSpeed()
{
    KestrixDriver driver;
    const Driver::Handle device = driver.OpenDevice(kDeviceType, 0, 0);
    Driver::Handle channels[kChannelCount] = {};
    if (device == 0 || !startBoth(driver, device, channels)) {
        std::printf("cannot open\n");
        return EXIT_FAILURE;
    }
    constexpr std::uint32_t kBatch = 100;
    constexpr auto kLength = std::chrono::seconds(5);
    const auto end = std::chrono::steady_clock::now() + kLength;
    std::vector<std::thread> senders;
    for (const Driver::Handle channel : channels)
        senders.emplace_back([&driver, channel, end] {
            std::vector<CanFdTransmitRecord> records(kBatch);
            for (CanFdTransmitRecord &record : records)
                record.flags = kFdBitRateSwitch;
            while (std::chrono::steady_clock::now() < end)
                driver.TransmitCanFd(channel, records.data(), kBatch);
        });
    std::uint64_t received = 0;
    std::vector<CanFdReceiveRecord> buffer(1000);
    while (std::chrono::steady_clock::now() < end) {
        for (const Driver::Handle channel : channels)
            received += driver.ReceiveCanFd(channel, buffer.data(), static_cast<std::uint32_t>(buffer.size()), 0);
        Sleep(1);
    }
    for (std::thread &sender : senders)
        sender.join();
    driver.CloseDevice(device);
    std::printf("%llu frames/s\n", static_cast<unsigned long long>(received / kLength.count()));
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char **argv)
{
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    _putenv("OSTREL_SIM_TRACE=off"); // a quiet bus
    if (argc > 1 && std::strcmp(argv[1], "speed") == 0)
        return tellSpeed();

    libraryFileIsJudged();
    const Folder cdeclFolder(L"cdecl");
    cdeclFolder.put(contentOf(L"KestrixCdecl.dll"));
    const struct {
        const char *name;
        Convention convention;
        std::wstring folder;
    } builds[] = {{"stdcall", Convention::Stdcall, executableFolder()},
                  {"cdecl", Convention::Cdecl, cdeclFolder.path()}};
    for (const auto &[name, convention, folder] : builds) {
        {
            KestrixDriver driver(folder);
            session(std::string(name) + " through the driver", driver);
        }
        aMillionOrdinaryCalls(name, folder);
        KestrixLibrary library;
        check(!library.load(folder), std::string(name) + ": the library binds");
        HMODULE module = GetModuleHandleW((folder + L"\\Kestrix.dll").c_str());
        check(module != nullptr, std::string(name) + ": it is the one from its folder");
        if (!module)
            continue;
        exportsAreOrdinalsOnly(module);
        session(std::string(name) + " bare", library.operations(), [&](Driver::Handle device, Driver::Handle channel) {
            stackIsKept(library.operations(), convention, device, channel);
        });
    }

    std::printf("%d passed, %d failed\n", passed, failed);
    return failed == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
