#include "traces/recordernames.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace
{

constexpr int kDigits = 4;

QString stem(const QFileInfo &info)
{
    return info.completeBaseName() + QLatin1Char('_');
}

QString ending(const QFileInfo &info)
{
    return info.suffix().isEmpty() ? QString() : QLatin1Char('.') + info.suffix();
}

} // namespace

QString numberedName(const QString &path, int number)
{
    const QFileInfo info(path);
    return info.dir().filePath(stem(info) + QStringLiteral("%1").arg(number, kDigits, 10, QLatin1Char('0')) +
                               ending(info));
}

std::map<int, QString> numberedFiles(const QString &path)
{
    const QFileInfo info(path);
    const QString before = stem(info);
    const QString after = ending(info);
    std::map<int, QString> files;
    for (const QString &name : info.dir().entryList(QDir::Files | QDir::Hidden)) {
        if (!name.startsWith(before) || !name.endsWith(after) || name.size() < before.size() + after.size())
            continue;
        const QString digits = name.mid(before.size(), name.size() - before.size() - after.size());
        bool number = false;
        const int value = digits.toInt(&number);
        if (number && value > 0 && name == QFileInfo(numberedName(path, value)).fileName())
            files.emplace(value, info.dir().filePath(name));
    }
    return files;
}
