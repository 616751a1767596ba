// The settings file: whatever it holds, values can be read and written, and what was saved is loaded again.
#include "device/settingsstore.h"
#include "fuzz/require.h"

#include <QFile>
#include <QTemporaryDir>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("setdb.txt"));
    QFile file(path);
    require(file.open(QIODevice::WriteOnly));
    file.write(reinterpret_cast<const char *>(data), static_cast<qint64>(size));
    file.close();

    settings::load(path);
    const QString first = settings::value(QStringLiteral("listCount"), QStringLiteral("1000"));
    settings::number(settings::channelKey(0, "Mode"), QStringLiteral("0"));
    settings::setValue(QStringLiteral("merge"), QStringLiteral("1"), true);
    settings::load(path);
    require(settings::value(QStringLiteral("listCount"), QString()) == first);
    require(settings::number(QStringLiteral("merge"), QStringLiteral("0")) == 1);
    return 0;
}
