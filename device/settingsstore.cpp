#include "device/settingsstore.h"

#include "device/apppaths.h"
#include "device/language.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QMutex>
#include <QMutexLocker>
#include <QSaveFile>
#include <QSettings>
#include <QTextStream>

#include <vector>

namespace
{

struct Notice {
    enum class Kind { Damaged, KeptAside, NotKeptAside, FolderMade, NotSaved } kind;
    QString path;
    QString reason; // the system's, where there is one
};

struct Store {
    QMutex mapLock;  // guards all but the file; held for look-ups only
    QMutex fileLock; // keeps two writers of the file apart; never taken while mapLock is held
    QString path;
    QMap<QString, QString> map;
    bool damaged = false;  // the file holds what was not understood and has not been kept aside
    bool notSaved = false; // told, until a write succeeds
    std::vector<Notice> notices;
};

Store &store()
{
    static Store theStore;
    return theStore;
}

const QString kLanguageKey = QStringLiteral("Language");

// false, and no entries, when a part of the line is not exactly key,value.
bool parse(const QString &line, QMap<QString, QString> &map)
{
    if (line.isEmpty())
        return true;
    for (const QString &part : line.split(QLatin1Char(';'))) {
        const QStringList pair = part.split(QLatin1Char(','));
        if (pair.size() != 2) {
            map.clear();
            return false;
        }
        map.insert(pair.at(0), pair.at(1));
    }
    return true;
}

QString lineOf(const Notice &notice)
{
    const QString path = QDir::toNativeSeparators(notice.path);
    switch (notice.kind) {
    case Notice::Kind::Damaged:
        return text3("设置文件已损坏，未被采用：%1", "設置檔案已損壞，未被採用：%1",
                     "The settings file is damaged and was ignored: %1")
            .arg(path);
    case Notice::Kind::KeptAside:
        return text3("已损坏的设置文件另存为：%1", "已損壞的設置檔案另存為：%1",
                     "The damaged settings file is kept as: %1")
            .arg(path);
    case Notice::Kind::NotKeptAside:
        return text3("设置未保存，已损坏的设置文件无法另存为：%1", "設置未保存，已損壞的設置檔案無法另存為：%1",
                     "Settings not saved, the damaged settings file cannot be kept as: %1")
            .arg(path);
    case Notice::Kind::FolderMade:
        return text3("已创建设置文件夹：%1", "已建立設置資料夾：%1", "Settings folder created: %1").arg(path);
    case Notice::Kind::NotSaved:
        return text3("设置无法保存：%1（%2）", "設置無法保存：%1（%2）", "Settings cannot be saved: %1 (%2)")
            .arg(path, notice.reason);
    }
    return {};
}

void tell(const Notice &notice)
{
    const QMutexLocker lock(&store().mapLock);
    const bool notSaved = notice.kind == Notice::Kind::NotSaved || notice.kind == Notice::Kind::NotKeptAside;
    if (!(notSaved && store().notSaved))
        store().notices.push_back(notice);
    store().notSaved = store().notSaved || notSaved;
}

// Copies the damaged file to a name beside it that is still free.
bool keepAside(const QString &path)
{
    const QFileInfo file(path);
    QString copy;
    for (int number = 1; copy.isEmpty() || QFileInfo::exists(copy); ++number)
        copy = file.dir().filePath(
            QStringLiteral("%1.damaged%2.%3").arg(file.completeBaseName()).arg(number).arg(file.suffix()));
    const bool kept = QFile::copy(path, copy);
    tell({kept ? Notice::Kind::KeptAside : Notice::Kind::NotKeptAside, copy, {}});
    return kept;
}

// Written aside and renamed, so that nobody ever finds half a file.
bool writeFile(const QString &path, const QString &text)
{
    const QDir folder = QFileInfo(path).absoluteDir();
    if (!folder.exists() && folder.mkpath(QStringLiteral(".")))
        tell({Notice::Kind::FolderMade, folder.path(), {}});
    QSaveFile file(path);
    file.setDirectWriteFallback(true); // in a folder that takes no new file, better written in place than not at all
    const QByteArray bytes = text.toUtf8();
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    tell({Notice::Kind::NotSaved, path, file.errorString()});
    return false;
}

QString languageFromFile(const QString &defaultValue)
{
    const QStringList &names = catalogueNames();
    const int defaultIndex = qMax(0, names.indexOf(defaultValue));
    const QSettings file(applicationDir() + QStringLiteral("/language/config.ini"), QSettings::IniFormat);
    const int index = file.value(QStringLiteral("LAST/Sel"), defaultIndex).toInt();
    return names.at(index >= 0 && index < names.size() ? index : defaultIndex);
}

} // namespace

namespace settings
{

void load(const QString &path)
{
    QString line;
    QFile file(path);
    if (file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        QTextStream in(&file);
        in.setCodec("UTF-8");
        line = in.readLine();
    }
    QMap<QString, QString> map;
    const bool damaged = !parse(line, map);
    {
        const QMutexLocker lock(&store().mapLock);
        store().path = path;
        store().map.swap(map);
        store().damaged = damaged;
        store().notSaved = false;
        store().notices.clear();
    }
    if (damaged)
        tell({Notice::Kind::Damaged, path, {}});
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
    bool damaged = false;
    {
        const QMutexLocker lock(&store().mapLock);
        path = store().path;
        map = store().map;
        damaged = store().damaged;
    }
    if (damaged && !keepAside(path))
        return;
    QString text;
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry)
        text += entry.key() + QLatin1Char(',') + entry.value() + QLatin1Char(';');
    text.chop(1);

    const bool saved = writeFile(path, text);
    const QMutexLocker lock(&store().mapLock);
    store().damaged = false;
    if (saved)
        store().notSaved = false;
}

QStringList takeNotices()
{
    std::vector<Notice> notices;
    {
        const QMutexLocker lock(&store().mapLock);
        notices.swap(store().notices);
    }
    QStringList lines;
    for (const Notice &notice : notices)
        lines.append(lineOf(notice));
    return lines;
}

QString channelKey(unsigned channel, const char *name)
{
    return QStringLiteral("ch") + QString::number(channel + 1) + QStringLiteral("param") + QLatin1String(name);
}

} // namespace settings
