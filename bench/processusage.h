// What this process has used so far. Linux; zero elsewhere.
#pragma once

#include <QFile>

#include <ctime>

struct ProcessUsage {
    double cpuSeconds = 0;
    double residentBytes = 0;

    double residentMiB() const { return residentBytes / (1024 * 1024); }

    static ProcessUsage now()
    {
        ProcessUsage usage;
        usage.cpuSeconds = static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
        QFile status(QStringLiteral("/proc/self/status"));
        if (status.open(QIODevice::ReadOnly))
            for (const QByteArray &line : status.readAll().split('\n'))
                if (line.startsWith("VmRSS:"))
                    usage.residentBytes = line.mid(6).simplified().split(' ').value(0).toDouble() * 1024;
        return usage;
    }
};
