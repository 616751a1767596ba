#include "analysis/signaldatabases.h"

#include "device/apppaths.h"
#include "device/language.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>

namespace
{
const QString kDatabasesKey = QStringLiteral("signals/databases");
const QString kPathKey = QStringLiteral("path");
const QString kChannelsKey = QStringLiteral("channels");
constexpr int kMostProblemsTold = 10; // of one file
} // namespace

std::shared_ptr<SignalDatabases> SignalDatabases::shared()
{
    static std::weak_ptr<SignalDatabases> theirs;
    std::shared_ptr<SignalDatabases> databases = theirs.lock();
    if (!databases) {
        databases.reset(new SignalDatabases);
        theirs = databases;
    }
    return databases;
}

SignalDatabases::SignalDatabases()
{
    connect(&watcher_, &DatabaseWatcher::changed, this, &SignalDatabases::reload);
}

void SignalDatabases::start()
{
    if (started_)
        return;
    started_ = true;
    QSettings kept;
    QVector<QPair<QString, DatabaseChannels>> entries;
    const int count = kept.beginReadArray(kDatabasesKey);
    for (int i = 0; i < count; ++i) {
        kept.setArrayIndex(i);
        const int channels = qBound(1, kept.value(kChannelsKey).toInt(), int(DatabaseChannels::Both));
        entries.append({kept.value(kPathKey).toString(), DatabaseChannels(channels)});
    }
    kept.endArray();
    if (entries.isEmpty())
        return;
    for (const auto &[path, channels] : qAsConst(entries))
        tell(set_.add(path, channels));
    watcher_.watch(set_.paths());
    emit changed();
}

bool SignalDatabases::isEmpty() const
{
    return started_ ? set_.entries().empty() : QSettings().value(kDatabasesKey + QStringLiteral("/size")).toInt() == 0;
}

void SignalDatabases::add(const QString &path, DatabaseChannels channels)
{
    tell(set_.add(QFileInfo(path).absoluteFilePath(), channels));
    apply();
}

void SignalDatabases::remove(const QString &path)
{
    if (set_.remove(path))
        apply();
}

void SignalDatabases::setChannels(const QString &path, DatabaseChannels channels)
{
    if (set_.setChannels(path, channels))
        apply();
}

void SignalDatabases::apply()
{
    QSettings kept;
    kept.remove(kDatabasesKey);
    kept.beginWriteArray(kDatabasesKey);
    int index = 0;
    for (const DatabaseSet::Entry &entry : set_.entries()) {
        kept.setArrayIndex(index++);
        kept.setValue(kPathKey, entry.path);
        kept.setValue(kChannelsKey, int(entry.channels));
    }
    kept.endArray();
    watcher_.watch(set_.paths());
    emit changed();
}

void SignalDatabases::reload()
{
    const QVector<DatabaseSet::Outcome> outcomes = set_.reloadChanged();
    bool loaded = false;
    for (const DatabaseSet::Outcome &outcome : outcomes) {
        tell(outcome);
        loaded = loaded || outcome.change == DatabaseSet::Change::Loaded;
    }
    if (loaded)
        emit changed();
}

void SignalDatabases::tell(const DatabaseSet::Outcome &outcome)
{
    const QString name = QDir::toNativeSeparators(outcome.path);
    if (outcome.change == DatabaseSet::Change::Loaded)
        emit log(text3("已载入信号数据库：%1", "已載入訊號資料庫：%1", "Signal database loaded: %1").arg(name));
    else if (outcome.change == DatabaseSet::Change::Kept)
        emit log(text3("无法载入信号数据库：%1", "無法載入訊號資料庫：%1", "Signal database cannot be loaded: %1")
                     .arg(name));
    const QString file = QFileInfo(outcome.path).fileName();
    for (int i = 0; i < qMin(outcome.problems.size(), kMostProblemsTold); ++i)
        emit log(QStringLiteral("%1: %2").arg(file, problemText(outcome.problems.at(i))));
    if (outcome.problems.size() > kMostProblemsTold)
        emit log(text3("%1：另有%2个问题", "%1：另有%2個問題", "%1: %2 more problems")
                     .arg(file)
                     .arg(outcome.problems.size() - kMostProblemsTold));
}

QString SignalDatabases::unusedVehicleDatabase() const
{
    const QString path = QFileInfo(applicationDir() + QStringLiteral("/databases/vehicle.dbc")).absoluteFilePath();
    return set_.paths().contains(path) || !QFileInfo::exists(path) ? QString() : path;
}
