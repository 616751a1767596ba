// Recordings for other programs to read: trace_convert INPUT [OUTPUT] writes INPUT's frames into OUTPUT, in the format
// of its name, or shows them a line each. INPUT "generated" stands for frames of every kind, "common" for
// those of them that other programs know: no DLC above 8 in classic frames, no FD remote frames, no FD frames without
// data, no error frames without a class.
#include "tracecontract.h"

#include <QCoreApplication>
#include <QFile>
#include <QTextStream>

#include <algorithm>
#include <cstdio>

namespace
{

constexpr std::int64_t kGeneratedStart = 1398128223803317000;

int fail(const QString &reason)
{
    QTextStream(stderr) << "trace_convert: " << reason << '\n';
    return 1;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() < 2)
        return fail(QStringLiteral("INPUT [OUTPUT]"));
    ReadTrace read;
    read.frames = everyKindOfFrame();
    read.start = kGeneratedStart;
    if (arguments[1] == QLatin1String("common")) {
        const auto unknown = [](const RawFrame &frame) {
            return frame.rawDlc > 0 || (frame.fd && (frame.remote || frame.length == 0)) ||
                   (frame.error && frame.id == 0);
        };
        read.frames.erase(std::remove_if(read.frames.begin(), read.frames.end(), unknown), read.frames.end());
    } else if (arguments[1] != QLatin1String("generated")) {
        QFile input(arguments[1]);
        if (!input.open(QIODevice::ReadOnly))
            return fail(input.errorString());
        read = readTrace(&input, {}, arguments[1]);
        if (!read.opened || read.error)
            return fail(read.opened ? read.error->place + QStringLiteral(": ") + read.error->reason : read.openError);
    }
    if (arguments.size() == 2) {
        for (const RawFrame &frame : read.frames)
            std::printf("%.6f %s\n", double(read.start.value_or(0) + frame.time) / 1e9, qPrintable(frameText(frame)));
        return 0;
    }
    const auto format = traceFormatOfName(arguments[2]);
    QFile output(arguments[2]);
    if (!format || !output.open(QIODevice::WriteOnly))
        return fail(QStringLiteral("cannot write ") + arguments[2]);
    TraceWriterOptions options;
    options.startUtc = read.start;
    output.write(writeTrace(*format, read.frames, options).bytes);
    return 0;
}
