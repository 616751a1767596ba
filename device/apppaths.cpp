#include "device/apppaths.h"

#include <QCoreApplication>

namespace
{
QString &chosenDir()
{
    static QString dir;
    return dir;
}
} // namespace

QString applicationDir()
{
    return chosenDir().isEmpty() ? QCoreApplication::applicationDirPath() : chosenDir();
}

void setApplicationDir(const QString &path)
{
    chosenDir() = path;
}
