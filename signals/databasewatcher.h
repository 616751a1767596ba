// Tells when one of some files may have changed on the disk, also when it was replaced by another one of its name.
#pragma once

#include <QFileSystemWatcher>
#include <QStringList>
#include <QTimer>

class DatabaseWatcher : public QObject
{
    Q_OBJECT

public:
    explicit DatabaseWatcher(QObject *parent = nullptr);

    void watch(const QStringList &paths); // these and no others

Q_SIGNALS:
    // Once, when the files have been left alone for a moment; DatabaseSet::reloadChanged() finds what is new.
    void changed();

private:
    void renew();

    QStringList paths_;
    QFileSystemWatcher watcher_;
    QTimer quiet_;
};
