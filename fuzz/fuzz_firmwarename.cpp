// Names in the firmware folder: the best image is one of them with a version of 16 bits, or the default.
#include "fuzz/require.h"
#include "upgrade/firmwareimage.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QStringList names =
        QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<int>(size)).split(QLatin1Char('\n'));
    const FirmwareImage none;
    const FirmwareImage best = bestFirmwareImage(names);
    require(best.version >= none.version && best.version <= 0xFFFF);
    require(best.version == none.version ? best.fileName == none.fileName : names.contains(best.fileName));
    return 0;
}
