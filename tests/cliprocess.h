// The command line as its users run it: the built program, the simulated adapter, files and pipes.
#pragma once

#include "tracecontract.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

namespace cli
{

constexpr int kTimeoutMs = 60000;

struct Ended {
    int code = -1;
    QByteArray out;
    QByteArray errors;
};

inline QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

// `traffic`: "off" for a quiet bus, empty for the simulated vehicle.
inline void start(QProcess *process, const QStringList &arguments, const char *traffic = "off")
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("OSTREL_DRIVER"), QStringLiteral("simulated"));
    environment.insert(QStringLiteral("OSTREL_SIM_TRACE"), QLatin1String(traffic));
    process->setProcessEnvironment(environment);
    process->start(QStringLiteral(OSTREL_CLI), arguments);
}

inline Ended end(QProcess *process)
{
    Ended ended;
    if (process->waitForFinished(kTimeoutMs) && process->exitStatus() == QProcess::NormalExit)
        ended.code = process->exitCode();
    ended.out = process->readAllStandardOutput();
    ended.errors = process->readAllStandardError();
    return ended;
}

inline Ended run(const QStringList &arguments, const QByteArray &input = {}, const char *traffic = "off")
{
    QProcess process;
    start(&process, arguments, traffic);
    process.write(input);
    process.closeWriteChannel();
    return end(&process);
}

// A throw-away folder for what a test's commands read and write.
class Folder
{
public:
    // A whole path stays as it is.
    QString path(const QString &name) const { return QDir(folder_.path()).filePath(name); }
    // The whole path of the file.
    QString write(const QString &name, const QByteArray &content) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(name));
        return file.fileName();
    }
    ReadTrace read(const QString &name) const
    {
        QFile file(path(name));
        file.open(QIODevice::ReadOnly);
        return readTrace(&file, {}, name);
    }

private:
    QTemporaryDir folder_;
};

} // namespace cli
