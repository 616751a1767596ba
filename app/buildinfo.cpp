#include "app/buildinfo.h"

#include <QDate>
#include <QLocale>

namespace buildinfo
{

QString version()
{
    return QStringLiteral("V1.17");
}

QString isoDate(const QString &compilerDate)
{
    const QDate date = QLocale::c().toDate(compilerDate.simplified(), QStringLiteral("MMM d yyyy"));
    return QLocale::c().toString(date, QStringLiteral("yyyy-MM-dd"));
}

QString buildDate()
{
    return isoDate(QStringLiteral(__DATE__));
}

QString buildTime()
{
    return QStringLiteral(__TIME__);
}

} // namespace buildinfo
