// The stored text of a filter: the device layer takes or refuses it, the dialog shows what it can, and what the dialog
// hands back is shown again the same.
#include "device/devicelayer.h"
#include "device/dialogs/filterdialog.h"
#include "device/driver/simulated/simulateddriver.h"
#include "fuzz/require.h"

#include <QApplication>
#include <QTableWidget>

namespace
{
int rowsOf(const FilterDialog &dialog)
{
    return dialog.findChild<QTableWidget *>(QStringLiteral("tableWidget"))->rowCount();
}
} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QApplication application(*argc, *argv);
    SimulatorOptions options;
    options.traffic = SimulatorOptions::Traffic::Off;
    setDriver(std::make_unique<SimulatedDriver>(options));
    require(openDevice(kDeviceType, 0, 0) && initChannel(0, 0));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<int>(size));
    const bool taken = applyFilterRows(0, text);
    require(!taken || applyFilterRows(0, text));
    if (size > 256) // a dialog of many rows only takes long
        return 0;
    FilterDialog first(1, text);
    QMetaObject::invokeMethod(&first, "on_btnConfirm_clicked");
    FilterDialog second(1, first.rowText());
    require(rowsOf(second) <= rowsOf(first));
    QMetaObject::invokeMethod(&second, "on_btnConfirm_clicked");
    require(second.rowText() == first.rowText());
    return 0;
}
