#include "signals/databasewatcher.h"

#include <QFileInfo>

namespace
{
constexpr int kQuietMs = 300;
}

DatabaseWatcher::DatabaseWatcher(QObject *parent) : QObject(parent)
{
    quiet_.setSingleShot(true);
    quiet_.setInterval(kQuietMs);
    const auto restart = [this] { quiet_.start(); };
    connect(&watcher_, &QFileSystemWatcher::fileChanged, this, restart);
    connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, restart);
    connect(&quiet_, &QTimer::timeout, this, [this] {
        renew();
        Q_EMIT changed();
    });
}

void DatabaseWatcher::watch(const QStringList &paths)
{
    paths_ = paths;
    const QStringList before = watcher_.files() + watcher_.directories();
    if (!before.isEmpty())
        watcher_.removePaths(before);
    renew();
}

// A file that is replaced drops out of the watcher; its folder tells that it is back.
void DatabaseWatcher::renew()
{
    for (const QString &path : qAsConst(paths_)) {
        const QString folder = QFileInfo(path).absolutePath();
        if (QFileInfo::exists(path) && !watcher_.files().contains(path))
            watcher_.addPath(path);
        if (QFileInfo::exists(folder) && !watcher_.directories().contains(folder))
            watcher_.addPath(folder);
    }
}
