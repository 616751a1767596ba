// The text of the data fields: normalising twice changes nothing more, and the bytes of the text stay the same.
#include "fuzz/require.h"
#include "transmit/datatext.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<int>(size));
    const QString normal = normalizedDataText(text);
    require(normalizedDataText(normal) == normal);
    const QByteArray bytes = dataBytes(normal);
    require(dataBytes(dataText(bytes)) == bytes);
    dataBytes(text);
    for (const int length : {-1, 0, 1, 8, 64, 65})
        require(firstDataBytes(normal, length).size() <= normal.size());
    return 0;
}
