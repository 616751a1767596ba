#include "device/settingsstore.h"

#include "device/apppaths.h"

#include <QFile>
#include <QMap>
#include <QMutex>
#include <QMutexLocker>
#include <QSaveFile>
#include <QSettings>
#include <QTextStream>

namespace
{

struct Store {
    QMutex mapLock;  // guards path and map; held for look-ups only
    QMutex fileLock; // keeps two writers of the file apart; never taken while mapLock is held
    QString path;
    QMap<QString, QString> map;
};

Store &store()
{
    static Store theStore;
    return theStore;
}

const QString kLanguageKey = QStringLiteral("Language");

QMap<QString, QString> parse(const QString &line)
{
    QMap<QString, QString> map;
    if (line.isEmpty())
        return map;
    for (const QString &part : line.split(QLatin1Char(';'))) {
        const QStringList pair = part.split(QLatin1Char(','));
        if (pair.size() != 2)
            return {};
        map.insert(pair.at(0), pair.at(1));
    }
    return map;
}

QString languageFromFile(const QString &defaultValue)
{
    const QStringList &names = settings::catalogueNames();
    const int defaultIndex = qMax(0, names.indexOf(defaultValue));
    const QSettings file(applicationDir() + QStringLiteral("/language/config.ini"), QSettings::IniFormat);
    const int index = file.value(QStringLiteral("LAST/Sel"), defaultIndex).toInt();
    return names.at(index >= 0 && index < names.size() ? index : defaultIndex);
}

} // namespace

namespace settings
{

const QStringList &catalogueNames()
{
    static const QStringList names{QStringLiteral("CN.qm"), QStringLiteral("CNF.qm"), QStringLiteral("EN.qm")};
    return names;
}

void load(const QString &path)
{
    QString line;
    QFile file(path);
    if (file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        QTextStream in(&file);
        in.setCodec("UTF-8");
        line = in.readLine();
    }
    QMap<QString, QString> map = parse(line);

    const QMutexLocker lock(&store().mapLock);
    store().path = path;
    store().map.swap(map);
}

QString value(const QString &key, const QString &defaultValue)
{
    {
        const QMutexLocker lock(&store().mapLock);
        const auto found = store().map.constFind(key);
        if (found != store().map.constEnd())
            return *found;
        if (key != kLanguageKey) {
            store().map.insert(key, defaultValue);
            return defaultValue;
        }
    }
    return languageFromFile(defaultValue);
}

unsigned number(const QString &key, const QString &defaultValue)
{
    return value(key, defaultValue).toUInt();
}

void setValue(const QString &key, const QString &value, bool writeNow)
{
    QString exchanged = value; // what was stored is released after the lock
    {
        const QMutexLocker lock(&store().mapLock);
        QString &stored = store().map[key];
        if (stored != value)
            stored.swap(exchanged);
    }
    if (writeNow)
        save();
}

void save()
{
    const QMutexLocker fileGuard(&store().fileLock);
    QString path;
    QMap<QString, QString> map;
    {
        const QMutexLocker lock(&store().mapLock);
        path = store().path;
        map = store().map;
    }
    QString text;
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry)
        text += entry.key() + QLatin1Char(',') + entry.value() + QLatin1Char(';');
    text.chop(1);

    // Written aside and renamed, so that nobody ever finds half a file.
    QSaveFile file(path);
    file.setDirectWriteFallback(true); // in a folder that takes no new file, better written in place than not at all
    if (!file.open(QIODevice::WriteOnly))
        return;
    file.write(text.toUtf8());
    file.commit();
}

QString channelKey(unsigned channel, const char *name)
{
    return QStringLiteral("ch") + QString::number(channel + 1) + QStringLiteral("param") + QLatin1String(name);
}

} // namespace settings
