#include "upgrade/bootvolumes.h"

#include "upgrade/filesync.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>

namespace
{

const QString kBootDriveName = QStringLiteral("CRP DISABLD");
const QString kTargetName = QStringLiteral("firmware.bin");
constexpr qint64 kMaxImageBytes = 64 * 1024 * 1024; // far above any image; keeps a stray file out of memory

bool writeWhole(const QByteArray &image, const QString &path)
{
    QFile target(path);
    if (!target.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    if (target.write(image) != image.size() || !target.flush() || !syncToDrive(target))
        return false;
    target.close();
    return target.error() == QFileDevice::NoError && QFileInfo(path).size() == image.size();
}

} // namespace

QList<MountedVolume> systemVolumes()
{
    QList<MountedVolume> volumes;
    for (const QStorageInfo &storage : QStorageInfo::mountedVolumes())
        volumes.append({storage.rootPath(), storage.name()});
    return volumes;
}

QStringList bootDriveRoots(const QList<MountedVolume> &volumes)
{
    QStringList roots;
    for (const MountedVolume &volume : volumes)
        if (volume.name.contains(kBootDriveName))
            roots.append(volume.rootPath);
    return roots;
}

QByteArray readFirmwareImage(const QString &path)
{
    QFile source(path);
    if (!source.open(QIODevice::ReadOnly) || source.size() > kMaxImageBytes)
        return {};
    const QByteArray image = source.readAll();
    return source.error() == QFileDevice::NoError && image.size() == source.size() ? image : QByteArray();
}

bool writeFirmware(const QByteArray &image, const QString &driveRoot)
{
    const QString path = QDir(driveRoot).filePath(kTargetName);
    if (QFile::exists(path) && !QFile::remove(path))
        return false;
    if (writeWhole(image, path))
        return true;
    QFile::remove(path);
    return false;
}
