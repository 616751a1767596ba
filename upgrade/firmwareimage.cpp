#include "upgrade/firmwareimage.h"

#include "device/apppaths.h"
#include "device/driver/numbertext.h"

#include <QDebug>
#include <QDir>

#include <algorithm>

namespace
{

enum NameField { ModelField, VersionField, DateField, NameFieldCount };

bool isHexDigit(QChar c)
{
    return (c >= QLatin1Char('0') && c <= QLatin1Char('9')) || (c >= QLatin1Char('A') && c <= QLatin1Char('F')) ||
           (c >= QLatin1Char('a') && c <= QLatin1Char('f'));
}

// 0 when the name carries no version that fits 16 bits.
unsigned versionInName(const QString &fileName)
{
    const QStringList fields = fileName.split(QLatin1Char('-'));
    if (fields.size() != NameFieldCount || !fields.at(VersionField).startsWith(QLatin1Char('V'), Qt::CaseInsensitive))
        return 0;
    QString digits = fields.at(VersionField);
    digits.remove(QLatin1Char('V'), Qt::CaseInsensitive).remove(QLatin1Char('.'));
    // toUShort alone would also take blanks, signs and "0x".
    return std::all_of(digits.cbegin(), digits.cend(), isHexDigit) ? digits.toUShort(nullptr, kHexBase) : 0;
}

} // namespace

FirmwareImage bestFirmwareImage(const QStringList &fileNames)
{
    FirmwareImage best;
    for (const QString &fileName : fileNames) {
        const unsigned version = versionInName(fileName);
        if (version <= best.version)
            continue;
        best = {version, fileName};
        qDebug("%x", version);
    }
    return best;
}

QString firmwareFolder()
{
    return applicationDir() + QStringLiteral("/firmware");
}

FirmwareImage bestFirmwareImage()
{
    return bestFirmwareImage(QDir(firmwareFolder()).entryList({QStringLiteral("*.bin")}, QDir::Files, QDir::Name));
}
