#include "cli/inputfiles.h"

#include "cli/arguments.h"
#include "cli/platform.h"
#include "traces/traceformats.h"

#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <thread>

namespace
{

constexpr int kMostJobs = 256;

bool isReadable(TraceFormat format)
{
    const auto &all = traceFormats();
    return std::any_of(all.begin(), all.end(),
                       [format](const TraceFormatEntry &entry) { return entry.format == format && entry.read; });
}

// standard: what "-" is, where the system has a name for it.
std::filesystem::path nativePath(const QString &path, [[maybe_unused]] const char *standard)
{
#ifdef _WIN32
    return path == QLatin1String("-") ? std::wstring() : path.toStdWString();
#else
    return path == QLatin1String("-") ? standard : QFile::encodeName(path).toStdString();
#endif
}

} // namespace

QByteArray formatNames()
{
    QByteArray names;
    for (const TraceFormatEntry &entry : traceFormats())
        names += (names.isEmpty() ? "" : ", ") + QByteArray(entry.name);
    return names;
}

void addInputOptions(Arguments &arguments, bool sideBySide)
{
    arguments.add("input-format", "The format of the inputs; without it, it is found by their content.", "FORMAT");
    if (sideBySide)
        arguments.add("j jobs", "Work on so many files at once; one for each core when not given.", "N");
}

std::optional<TraceFormat> formatOption(Arguments &arguments, const char *name)
{
    if (!arguments.isSet(name))
        return std::nullopt;
    const auto format = traceFormatFromText(arguments.text(name));
    if (!format)
        arguments.wrongValue(name, QStringLiteral("is none of ") + QLatin1String(formatNames()));
    return format;
}

std::optional<TraceFormat> inputFormat(Arguments &arguments)
{
    const auto format = formatOption(arguments, "input-format");
    if (format && !isReadable(*format))
        arguments.wrongValue("input-format", QStringLiteral("can only be written"));
    return format;
}

int jobCount(Arguments &arguments)
{
    const auto given = arguments.integer("jobs", 1, kMostJobs);
    return given ? static_cast<int>(*given) : std::max(1, QThread::idealThreadCount());
}

void refuseInput(Arguments &arguments, const QString &output, const QStringList &read)
{
    std::error_code none;
    const std::filesystem::path written = nativePath(output, "/dev/stdout");
    if (!std::filesystem::is_regular_file(written, none))
        return;
    for (const QString &path : read)
        if (std::filesystem::equivalent(written, nativePath(path, "/dev/stdin"), none))
            arguments.wrong(output + QStringLiteral(" is read as well"));
}

std::uint64_t totalBytes(const QStringList &paths)
{
    std::uint64_t sum = 0;
    for (const QString &path : paths) {
        const QFileInfo file(path);
        if (!file.isFile())
            return 0;
        sum += static_cast<std::uint64_t>(file.size());
    }
    return sum;
}

void runSideBySide(int count, int atOnce, const std::function<void(int)> &job)
{
    std::atomic<int> next{0};
    const auto work = [&] {
        for (int index = next++; index < count && !interrupted(); index = next++)
            job(index);
    };
    std::vector<std::thread> helpers;
    for (int i = 1; i < std::min(atOnce, count); ++i)
        helpers.emplace_back(work);
    work();
    for (std::thread &helper : helpers)
        helper.join();
}
