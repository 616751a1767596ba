#include "everydialog.h"

#include "app/mainmenu.h"
#include "app/mainwindow.h"
#include "app/siftdialog.h"
#include "device/filterdialog.h"
#include "device/infdialog.h"
#include "device/opendlg.h"
#include "device/paradialog.h"
#include "device/valuedialog.h"
#include "dialogs/datadlg.h"
#include "dialogs/filedlg.h"
#include "dialogs/listsenddlg.h"
#include "dialogs/savefiledlg.h"
#include "upgrade/updatedlg.h"

#include <QAction>
#include <QLabel>
#include <QPushButton>

#include <cstring>

namespace
{
template <typename Window, typename... Arguments> WindowMaker maker(const char *name, Arguments... arguments)
{
    return {name, [=]() -> std::unique_ptr<QWidget> { return std::make_unique<Window>(arguments...); }};
}

std::unique_ptr<QWidget> makeInformation()
{
    DeviceInfoRecord record{};
    record.hardwareVersion = 0x120;
    record.firmwareVersion = 0x212;
    record.driverVersion = 0x310;
    record.interfaceVersion = 0x117;
    record.channelCount = 2;
    std::strncpy(record.serialNumber, "HD2-0000-00012345", sizeof record.serialNumber);
    std::strncpy(record.hardwareType, "Halden-D2 CAN FD", sizeof record.hardwareType - 1);
    return std::make_unique<INfDialog>(record);
}

// The menu's entries bring their own titles.
std::unique_ptr<QWidget> makeValueEntry(const char *action, int value)
{
    const MainWindow window;
    auto dialog = std::make_unique<valueDialog>();
    dialog->setEntry(0, entryTitle(*window.findChild<QAction *>(QLatin1String(action))), 1, 1000000, value);
    return dialog;
}

std::unique_ptr<QWidget> makeValueFilter()
{
    auto dialog = std::make_unique<SiftDialog>();
    dialog->fill({"0x00000123", "0x000002B0", "0x00000316", "0x18FF50E5"}, 5);
    return dialog;
}

// Upgrading: the dialog's longest text. Whoever shows it must let no timer run: there is no adapter to restart.
std::unique_ptr<QWidget> makeRunningUpgrade()
{
    auto dialog = std::make_unique<UpdateDlg>(QStringLiteral("V2.10"), QString());
    dialog->findChild<QPushButton *>(QStringLiteral("pushButton"))->click();
    return dialog;
}

// A file that cannot be written shows the dialog's hint.
std::unique_ptr<QWidget> makeCaptureFile()
{
    auto dialog = std::make_unique<savefileDlg>();
    dialog->findChild<QLabel *>(QStringLiteral("hintLabel"))->show();
    return dialog;
}
} // namespace

const QVector<WindowMaker> &everyWindow()
{
    static const QVector<WindowMaker> windows = {
        maker<MainWindow>("main-window"),
        maker<OpenDlg>("device-operations", 0),
        maker<ParaDialog>("parameters", true, false, 0),
        maker<ParaDialog>("parameters-view", false, true, int(ParaDialog::BothChannels)),
        maker<FilterDialog>("acceptance-filter", 1, QString("0-100-1FF|0-7E8-7E8|1-18FF0000-18FFFFFF")),
        {"device-information", makeInformation},
        {"value-entry", [] { return makeValueEntry("actionListBuffer", 1000); }},
        {"value-entry-scan", [] { return makeValueEntry("actionScanTime", 50); }},
        {"value-entry-frames", [] { return makeValueEntry("actionFramesPerReceive", 1000); }},
        maker<DataDlg>("data-editor", QByteArray::fromHex("0011223344556677"), 8U),
        maker<fileDlg>("file-send"),
        maker<listSendDlg>("list-send"),
        {"capture-file", makeCaptureFile},
        {"display-filter", makeValueFilter},
        maker<UpdateDlg>("firmware-upgrade", QString("V2.10"), QString()),
        {"firmware-upgrade-running", makeRunningUpgrade},
    };
    return windows;
}
