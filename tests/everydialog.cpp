#include "everydialog.h"

#include "analysis/recordwindow.h"
#include "analysis/statisticswindow.h"
#include "app/mainmenu.h"
#include "app/mainwindow.h"
#include "app/siftdialog.h"
#include "device/dialogs/filterdialog.h"
#include "device/dialogs/infdialog.h"
#include "device/dialogs/opendlg.h"
#include "device/dialogs/paradialog.h"
#include "device/dialogs/valuedialog.h"
#include "dialogs/datadlg.h"
#include "dialogs/filedlg.h"
#include "dialogs/listsenddlg.h"
#include "dialogs/savefiledlg.h"
#include "upgrade/updatedlg.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace
{
template <typename Window, typename... Arguments> WindowMaker maker(const char *name, Arguments... arguments)
{
    return {name, [=]() -> std::unique_ptr<QWidget> { return std::make_unique<Window>(arguments...); }};
}

constexpr DeviceInfoRecord kInformation = {
    0x120, 0x212, 0x310, 0x117, 0, kChannelCount, "HD2-0000-00012345", "Halden-D2 CAN FD"};

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

// One entry of every mode.
std::unique_ptr<QWidget> makeTransmitList()
{
    TransmitList list;
    const TransmitMode modes[] = {TransmitMode::Periodic, TransmitMode::Counted, TransmitMode::Response,
                                  TransmitMode::OnRequest};
    for (const TransmitMode mode : modes) {
        auto entry = std::make_shared<TransmitEntry>();
        entry->serial = newTransmitSerial();
        entry->name = QStringLiteral("M%1").arg(list.size() + 1);
        entry->mode = mode;
        entry->frame.id = 0x120 + static_cast<unsigned>(list.size());
        entry->frame.length = kClassicDataBytes;
        list << entry;
    }
    auto dialog = std::make_unique<listSendDlg>();
    dialog->document()->model()->setList(list);
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

// A window beside the main one gets its texts when it is opened.
template <typename Window> std::unique_ptr<QWidget> makeBeside()
{
    auto window = std::make_unique<Window>(nullptr);
    window->open();
    window->hide();
    return window;
}

// The path is nobody's language.
std::unique_ptr<QWidget> makeRecord()
{
    auto window = makeBeside<RecordWindow>();
    window->findChild<QLineEdit *>(QStringLiteral("pathEdit"))->setText(QStringLiteral("D:/CAN.blf"));
    return window;
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
        maker<INfDialog>("device-information", kInformation),
        {"value-entry", [] { return makeValueEntry("actionListBuffer", 1000); }},
        {"value-entry-scan", [] { return makeValueEntry("actionScanTime", 50); }},
        {"value-entry-frames", [] { return makeValueEntry("actionFramesPerReceive", 1000); }},
        maker<DataDlg>("data-editor", QByteArray::fromHex("0011223344556677"), 8U),
        maker<fileDlg>("file-send"),
        {"list-send", makeTransmitList},
        {"capture-file", makeCaptureFile},
        {"display-filter", makeValueFilter},
        maker<UpdateDlg>("firmware-upgrade", QString("V2.10"), QString()),
        {"firmware-upgrade-running", makeRunningUpgrade},
        {"statistics", makeBeside<StatisticsWindow>},
        {"record", makeRecord},
    };
    return windows;
}
