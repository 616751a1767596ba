#include "testfolder.h"

#include "device/apppaths.h"
#include "device/language.h"
#include "device/settingsstore.h"

#include <QDir>
#include <QFile>
#include <QSettings>

TestFolder::TestFolder()
{
    for (const char *folder : {"config", "language", "help/Chinese", "help/English", "firmware"})
        QDir(dir_.path()).mkpath(QLatin1String(folder));
    setApplicationDir(dir_.path());
    // Never the settings of the user who runs the tests.
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, path(QStringLiteral("desktop")));
    setLanguageCode(SimplifiedChinese);
    settings::load(settingsPath());
}

TestFolder::~TestFolder()
{
    setApplicationDir({});
}

QString TestFolder::path(const QString &relative) const
{
    return dir_.filePath(relative);
}

void TestFolder::write(const QString &relative, const QByteArray &content) const
{
    QFile file(path(relative));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
}

QByteArray TestFolder::read(const QString &relative) const
{
    QFile file(path(relative));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void TestFolder::useSettings(const QByteArray &line) const
{
    write(QStringLiteral("config/setdb.txt"), line);
    settings::load(settingsPath());
}

void TestFolder::copyCatalogues() const
{
    for (const QString &name : catalogueNames())
        if (!QFile::copy(QStringLiteral(OSTREL_CATALOGUE_DIR "/") + name, path(QStringLiteral("language/") + name)))
            qFatal("no catalogue %s", qPrintable(name));
}
