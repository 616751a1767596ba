#include "everydialog.h"

#include "analysis/comparisonwindow.h"
#include "analysis/databasedialog.h"
#include "analysis/plotview.h"
#include "analysis/plotwindow.h"
#include "analysis/recordingwindow.h"
#include "analysis/recordwindow.h"
#include "analysis/signalhub.h"
#include "analysis/signalswindow.h"
#include "analysis/statisticswindow.h"
#include "app/mainmenu.h"
#include "app/mainwindow.h"
#include "app/siftdialog.h"
#include "device/dialogs/filterdialog.h"
#include "device/dialogs/infdialog.h"
#include "device/dialogs/opendlg.h"
#include "device/dialogs/paradialog.h"
#include "device/dialogs/valuedialog.h"
#include "device/driver/simulated/trafficsource.h"
#include "dialogs/datadlg.h"
#include "dialogs/filedlg.h"
#include "dialogs/listsenddlg.h"
#include "dialogs/messagedlg.h"
#include "dialogs/savefiledlg.h"
#include "upgrade/updatedlg.h"

#include <QAction>
#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTimer>
#include <QTreeView>

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

// A copy, so that no picture shows where this tree lies.
QString vehicleDatabaseCopy()
{
    const QString copy = QDir::temp().filePath(QStringLiteral("vehicle.dbc"));
    QFile::copy(QStringLiteral(OSTREL_VEHICLE_DATABASE), copy);
    return copy;
}

// Names that are words of no language.
QString gearbox()
{
    const QString path = QDir::temp().filePath(QStringLiteral("gearbox.dbc"));
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write("BO_ 790 GEARBOX: 8 ECU\n"
               " SG_ COUNTER : 0|8@1+ (1,0) [0|255] \"\" X\n"
               " SG_ GEAR : 8|4@1- (1,0) [-1|5] \"\" X\n"
               " SG_ SPEED : 23|16@0+ (0.25,0) [0|8000] \"km/h\" X\n"
               " SG_ OIL_TEMP : 32|8@1+ (1,-40) [-40|215] \"\xC2\xB0"
               "C\" X\n"
               "VAL_ 790 GEAR -1 \"R\" 0 \"N\" 1 \"D\" ;\n"
               "BA_DEF_ BO_ \"GenMsgCycleTime\" INT 0 10000;\nBA_ \"GenMsgCycleTime\" BO_ 790 50;\n");
    return path;
}

std::shared_ptr<DatabaseSet> databaseOf(const QString &path)
{
    auto set = std::make_shared<DatabaseSet>();
    set->add(path, DatabaseChannels::Both);
    return set;
}

DatabaseAccess accessTo(const std::shared_ptr<DatabaseSet> &set)
{
    return {[set] { return set->entries(); }, [set] { return set->lookup(); }, [](QWidget *) {}};
}

// One entry of every mode, and one that a database knows.
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
    const auto set = databaseOf(gearbox());
    list << entryOfMessage(set->entries().front().database->content.messages.front(), 0);
    auto dialog = std::make_unique<listSendDlg>();
    dialog->document()->model()->setList(list);
    dialog->setDatabases(accessTo(set));
    auto *table = dialog->findChild<QTableView *>(QStringLiteral("tableView"));
    table->setCurrentIndex(table->model()->index(list.size() - 1, NameColumn));
    return dialog;
}

// Upgrading: the dialog's longest text. Whoever shows it must let no timer run: there is no adapter to restart.
// Stands still before its first step.
std::unique_ptr<QWidget> makeRunningUpgrade()
{
    auto dialog = std::make_unique<UpdateDlg>(QStringLiteral("V2.10"), QString());
    dialog->findChild<QPushButton *>(QStringLiteral("pushButton"))->click();
    dialog->findChild<QTimer *>()->stop();
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

// The windows of signals show a drive of the built-in vehicle; `hub` becomes the window's.
constexpr BusTime kNsPerSecondOfBus = 1000000000;
constexpr BusTime kDrive = 30 * kNsPerSecondOfBus;

std::unique_ptr<SignalHub> makeHub()
{
    auto hub = std::make_unique<SignalHub>();
    hub->start();
    hub->databases()->add(vehicleDatabaseCopy(), DatabaseChannels::Both);
    return hub;
}

void drive(SignalHub *hub)
{
    const auto vehicle = makeBuiltInVehicle();
    vehicle->restart(0, BusSettings{1000000, 5000000, 0});
    for (; vehicle->due() < kDrive; vehicle->sent(vehicle->due())) {
        const BusFrame &frame = vehicle->frame();
        RawFrame raw;
        raw.time = std::int64_t(vehicle->due());
        raw.id = frame.identifier();
        raw.extended = frame.extended();
        raw.remote = frame.remote();
        raw.fd = frame.fd;
        raw.length = frame.length;
        std::copy(std::begin(frame.data), std::end(frame.data), raw.data);
        hub->store().consume(&raw, 1);
    }
}

std::unique_ptr<QWidget> makeSignals()
{
    auto hub = makeHub();
    drive(hub.get());
    auto window = std::make_unique<SignalsWindow>(hub.get(), nullptr);
    hub.release()->setParent(window.get());
    window->resize(QSize(970, 490) * window->logicalDpiX() / 96);
    auto *tree = window->findChild<QTreeView *>(QStringLiteral("signalTree"));
    const QModelIndex channel = tree->model()->index(0, 0);
    for (int message = 0; message < 2; ++message)
        tree->expand(tree->model()->index(message, 0, channel));
    return window;
}

std::unique_ptr<QWidget> makePlot()
{
    auto hub = makeHub();
    auto window = std::make_unique<PlotWindow>(hub.get(), 1, nullptr);
    window->addSignals({{1, 196, false, QStringLiteral("EngineSpeed")},
                        {1, 209, false, QStringLiteral("VehicleSpeed")},
                        {1, 790, false, QStringLiteral("Gear")}});
    drive(hub.get());
    hub.release()->setParent(window.get());
    window->resize(QSize(900, 490) * window->logicalDpiX() / 96);
    window->takePoints();
    window->findChild<PlotView *>()->fit();
    window->findChild<QPushButton *>(QStringLiteral("cursorsButton"))->click();
    return window;
}

QString smallRecording(const char *name)
{
    const QString path = QDir::temp().filePath(QLatin1String(name));
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    for (const char *data : {"123#0011", "18FF50E5#0102030405060708", "456##1AABB"})
        file.write(QByteArray("(1700000000.000000) can0 ") + data + "\n");
    return path;
}

// With everything that it can show.
std::unique_ptr<QWidget> makeRecording()
{
    QString error;
    std::unique_ptr<QWidget> window(RecordingWindow::openFile(smallRecording("drive.log"), nullptr, &error));
    window->findChild<QPushButton *>(QStringLiteral("recordingReplay"))->click();
    window->hide();
    return window;
}

std::unique_ptr<QWidget> makeComparison()
{
    QString error;
    const std::unique_ptr<RecordingWindow> recording(
        RecordingWindow::openFile(smallRecording("drive.log"), nullptr, &error));
    std::unique_ptr<QWidget> window(recording->compareWith(smallRecording("drive2.log"), &error));
    const auto *align = window->findChild<QPushButton *>(QStringLiteral("comparisonAlign"));
    while (!align->isEnabled()) // once both are indexed
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    window->hide();
    return window;
}

std::unique_ptr<QWidget> makeDatabases()
{
    auto hub = makeHub();
    auto dialog = std::make_unique<DatabaseDialog>(hub->databases());
    hub.release()->setParent(dialog.get());
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
        maker<INfDialog>("device-information", kInformation),
        {"value-entry", [] { return makeValueEntry("actionListBuffer", 1000); }},
        {"value-entry-scan", [] { return makeValueEntry("actionScanTime", 50); }},
        {"value-entry-frames", [] { return makeValueEntry("actionFramesPerReceive", 1000); }},
        maker<DataDlg>("data-editor", QByteArray::fromHex("0011223344556677"), 8U),
        maker<fileDlg>("file-send"),
        {"list-send", makeTransmitList},
        {"list-send-messages",
         [] { return std::make_unique<MessageDlg>(accessTo(databaseOf(vehicleDatabaseCopy()))); }},
        {"capture-file", makeCaptureFile},
        {"display-filter", makeValueFilter},
        maker<UpdateDlg>("firmware-upgrade", QString("V2.10"), QString()),
        {"firmware-upgrade-running", makeRunningUpgrade},
        {"statistics", makeBeside<StatisticsWindow>},
        {"record", makeRecord},
        {"signals", makeSignals},
        {"plot", makePlot},
        {"signal-databases", makeDatabases},
        {"recording", makeRecording},
        {"comparison", makeComparison},
    };
    return windows;
}
