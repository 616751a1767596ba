#include "app/mainwindow.h"

#include "app/about.h"
#include "app/analysismenu.h"
#include "app/buildinfo.h"
#include "app/buttonkeys.h"
#include "app/helpdocuments.h"
#include "app/mainmenu.h"
#include "app/operationlog.h"
#include "app/panelarea.h"
#include "app/receiveview.h"
#include "app/sendcoordinator.h"
#include "app/sendpanel.h"
#include "device/apppaths.h"
#include "device/devicelayer.h"
#include "device/dialogs/applyparameters.h"
#include "device/dialogs/deviceinfo.h"
#include "device/dialogs/opendlg.h"
#include "device/dialogs/paradialog.h"
#include "device/dialogs/valuedialog.h"
#include "device/settingsstore.h"
#include "dialogs/filedlg.h"
#include "dialogs/listsenddlg.h"
#include "frames/framesender.h"
#include "frames/recvthread.h"
#include "frames/sendthread.h"
#include "ui_mainwindow.h"
#include "upgrade/upgradeaction.h"
#include "widgets/dialogscaler.h"
#include "widgets/messages.h"

#include <QAction>
#include <QApplication>
#include <QEvent>
#include <QScreen>
#include <QTimer>

namespace
{

constexpr int kWatchIntervalMs = 1000;
constexpr int kLateStartMs = 20;
constexpr unsigned kDefaultRefreshMs = 100;
constexpr unsigned kShortestRefreshMs = 10;
constexpr unsigned kLongestRefreshMs = 10000;
constexpr unsigned kDefaultScanTimeMs = 50;
constexpr unsigned kDefaultFramesPerReceive = 1000;

constexpr QSize kFrame(16, 40); // pixels at 96 DPI that a desktop's window frame may take

constexpr int kLargestTuningValue = 1000000;

// What a value entry is for; also the index that travels with the entered text.
enum TuningValue { ScanTime = 0, FramesPerReceive = 1, ListLimit = 2 };

int refreshInterval()
{
    const unsigned ms = settings::number(QStringLiteral("refreshInterval"), QString::number(kDefaultRefreshMs));
    return static_cast<int>(ms >= kShortestRefreshMs && ms <= kLongestRefreshMs ? ms : kDefaultRefreshMs);
}

bool isOptionOn(const char *key, const char *defaultValue)
{
    return settings::number(QLatin1String(key), QLatin1String(defaultValue)) == 1;
}

} // namespace

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent),
      ui_(std::make_unique<Ui::MainWindow>()),
      scanTime_(kDefaultScanTimeMs),
      framesPerReceive_(kDefaultFramesPerReceive)
{
    ui_->setupUi(this);
    settings::load(applicationDir() + QStringLiteral("/config/setdb.txt"));
    menu_ = new MainMenu(ui_->menuBar);
    analysis_ = new AnalysisMenu(menu_->analysisMenu(), this);
    language_.start();
    createWorkers();
    arrangeWidgets();
    showTitle();
    setLa();
    followScreenDpi();
    restoreOptions();
    connectActions();
    addButtonKeys(this);
    menu_->fillHelpMenu();
    logSettingsNotices();
    startTimers();
}

MainWindow::~MainWindow()
{
    watchTimer_->stop();
    refreshTimer_->stop();
    delete listSend_; // its thread first
    for (const Channel &channel : channels_)
        channel.sender->stop();
    for (const Channel &channel : channels_)
        channel.sender->wait();
    deviceClosed();
    receiveView_->closeCapture();
}

void MainWindow::createWorkers()
{
    for (unsigned index = 0; index < kChannelCount; ++index) {
        auto *receiver = new recvThread(index, this);
        connect(receiver, &recvThread::log, this, &MainWindow::canLog);
        connect(receiver, &recvThread::recvData, this, &MainWindow::recvData);
        connect(receiver, &recvThread::errorID, this, &MainWindow::idNotContinuous);
        auto *sender = new sendThread(index, this);
        connect(sender, &sendThread::log, this, &MainWindow::canLog);
        connect(sender, &sendThread::sendedData, this, &MainWindow::sendedData);
        connect(sender, &sendThread::endSend, this, &MainWindow::endSend);
        channels_[index] = {receiver, sender, nullptr};
    }
}

void MainWindow::arrangeWidgets()
{
    receiveView_ = new ReceiveView(this);
    ui_->splitter->insertWidget(0, receiveView_);
    auto *panels = new PanelArea(this);
    ui_->lowerLayout->addWidget(panels);
    for (unsigned index = 0; index < kChannelCount; ++index) {
        SendPanel *panel = new SendPanel(index, channels_[index].sender, this);
        connect(panel, &SendPanel::logLine, this, &MainWindow::logLine);
        panels->addPanel(panel);
        channels_[index].panel = panel;
    }
    auto *fileDialog = new fileDlg(this);
    sending_ = new SendCoordinator(channels_[0].panel, channels_[1].panel, channels_[0].sender, fileDialog, this);
    connect(sending_, &SendCoordinator::logLine, this, &MainWindow::logLine);
    connect(analysis_, &AnalysisMenu::log, this, &MainWindow::logLine);
    connect(fileDialog, &fileDlg::send, sending_, &SendCoordinator::startFileSend);
    connect(fileDialog, &fileDlg::stop, sending_, &SendCoordinator::stopFileSend);
    log_ = new OperationLog(this);
    ui_->lowerLayout->addWidget(log_, 1);
    ui_->splitter->setStretchFactor(0, 1);
    ui_->splitter->setStretchFactor(1, 0);
    connect(receiveView_, &ReceiveView::logLine, this, &MainWindow::logLine);
}

void MainWindow::connectActions()
{
    const auto on = [this](QAction *action, void (MainWindow::*slot)()) {
        connect(action, &QAction::triggered, this, slot);
    };
    on(menu_->deviceOperations, &MainWindow::openDeviceDialog);
    on(menu_->firmwareUpgrade, &MainWindow::upgradeFirmware);
    on(menu_->listSend, &MainWindow::listSend);
    on(menu_->canSetting, &MainWindow::applyParameters);
    on(menu_->viewParameters, &MainWindow::viewParameters);
    on(menu_->deviceInfo, &MainWindow::getdeviceInfo);
    connect(menu_->fileSend, &QAction::triggered, sending_, &SendCoordinator::showFileDialog);
    connect(menu_->scanTime, &QAction::triggered, this, [this] { enterTuning(ScanTime); });
    connect(menu_->framesPerReceive, &QAction::triggered, this, [this] { enterTuning(FramesPerReceive); });
    connect(menu_->listBuffer, &QAction::triggered, this, [this] { enterTuning(ListLimit); });
    connect(menu_->clearLog, &QAction::triggered, log_, &OperationLog::clear);
    connect(menu_->about, &QAction::triggered, this, [this] { showAbout(this); });
    connect(menu_->helpFolder, &QAction::triggered, this, [this] { openOnDesktop(helpFolderPath(), this); });
    for (unsigned code = 0; code < LanguageCount; ++code)
        connect(menu_->languages[code], &QAction::triggered, this, [this, code](bool checked) {
            if (checked)
                switchLanguage(code);
        });
    connect(menu_->hexTimeStamp, &QAction::toggled, this, [this](bool on) { setOption("timeHex", on); });
    connect(menu_->checkRecvId, &QAction::toggled, this, &MainWindow::setCheckRecvId);
    connect(menu_->mergeSameId, &QAction::toggled, this, [this](bool on) {
        receiveView_->setMerge(on);
        setOption("merge", on);
    });
}

void MainWindow::restoreOptions()
{
    menu_->hexTimeStamp->setChecked(isOptionOn("timeHex", "1"));
    menu_->checkRecvId->setChecked(isOptionOn("recvIDAdd", "0"));
    menu_->mergeSameId->setChecked(isOptionOn("merge", "0"));
    receiveView_->setMerge(menu_->mergeSameId->isChecked());
    if (menu_->checkRecvId->isChecked())
        for (const Channel &channel : channels_)
            channel.receiver->clearLastIds();
    const QString defaultLimit = QString::number(receiveView_->listLimit());
    const qulonglong limit = settings::value(QStringLiteral("listCount"), defaultLimit).toULongLong();
    if (limit >= 1)
        receiveView_->setListLimit(static_cast<unsigned>(qMin<qulonglong>(limit, kLargestTuningValue)));
    menu_->setTuning(scanTime_, framesPerReceive_, receiveView_->listLimit());
    menu_->showLanguage(languageCode());
}

void MainWindow::startTimers()
{
    watchTimer_ = new QTimer(this);
    watchTimer_->setSingleShot(true);
    connect(watchTimer_, &QTimer::timeout, this, &MainWindow::watchDevice);
    watchTimer_->start(kWatchIntervalMs);
    refreshTimer_ = new QTimer(this);
    refreshTimer_->setSingleShot(true);
    connect(refreshTimer_, &QTimer::timeout, this, &MainWindow::refreshDisplay);
    refreshTimer_->start(refreshInterval());
    QTimer::singleShot(kLateStartMs, this, [this] {
        for (const Channel &channel : channels_)
            channel.panel->restore();
    });
}

// --- texts --------------------------------------------------------------------------------------------------------

void MainWindow::setLa()
{
    menu_->setTexts();
    analysis_->setTexts();
    log_->setTexts();
    receiveView_->setHeaderTexts();
}

void MainWindow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange) {
        ui_->retranslateUi(this);
        showTitle();
    }
    QMainWindow::changeEvent(event);
}

void MainWindow::switchLanguage(unsigned code)
{
    if (language_.switchTo(code)) {
        setLa();
        menu_->fillHelpMenu();
    }
    menu_->showLanguage(languageCode());
}

void MainWindow::showTitle()
{
    QString title = QStringLiteral("Ostrel-") + buildinfo::version();
    if (!deviceWatch_.titleText().isEmpty())
        title += QStringLiteral(" - ") + deviceWatch_.titleText();
    setWindowTitle(title);
}

void MainWindow::followScreenDpi()
{
    auto *scaler = new DialogScaler(this);
    connect(scaler, &DialogScaler::scaled, this, [this] { QApplication::setFont(font()); });
    QApplication::setFont(font());
    const QScreen *screen = QApplication::primaryScreen();
    if (screen)
        resize(size().boundedTo(screen->availableSize() - kFrame * screen->logicalDotsPerInch() / kDesignDpi));
}

// --- log ----------------------------------------------------------------------------------------------------------

void MainWindow::canLog(const QString &msg)
{
    log_->addWorkerLine(msg);
}

void MainWindow::logLine(const QString &message)
{
    log_->addWindowLine(message);
}

void MainWindow::logDriverNotices()
{
    for (const DriverNotice &notice : takeDriverNotices()) {
        if (notice.kind == DriverNotice::Kind::FramesLost)
            lossReport_.add(notice);
        else if (notice.kind != DriverNotice::Kind::BuiltInVehicle || AnalysisMenu::lacksDatabases())
            logLine(noticeText(notice));
    }
}

void MainWindow::logSettingsNotices()
{
    for (const QString &line : settings::takeNotices())
        logLine(line);
}

// --- device -------------------------------------------------------------------------------------------------------

void MainWindow::openDeviceDialog()
{
    OpenDlg dialog(deviceIndex_, this);
    openDialog_ = &dialog;
    connect(&dialog, &OpenDlg::deviceOpened, this, &MainWindow::lookAtDevice);
    connect(&dialog, &OpenDlg::deviceClosed, this, &MainWindow::deviceClosed);
    dialog.exec();
    deviceIndex_ = dialog.deviceIndex();
    logDriverNotices();
    for (unsigned channel = 0; channel < kChannelCount; ++channel)
        channelDialogClosed(channel, dialog.channelOpened(channel));
}

void MainWindow::channelDialogClosed(unsigned index, bool opened)
{
    const Channel &channel = channels_[index];
    if (!opened || !isChannelOpen(index)) {
        channel.panel->setSendEnabled(isChannelOpen(index));
        return;
    }
    channel.receiver->stopAndWait();
    channel.receiver->setRecvParams(scanTime_, framesPerReceive_);
    channel.receiver->start(QThread::TimeCriticalPriority);
    channel.panel->setSendEnabled(true);
    logLine(index == 0 ? tr("通道1打开成功！") : tr("通道2打开成功！"));
}

void MainWindow::deviceClosed()
{
    for (const Channel &channel : channels_) {
        channel.panel->deviceClosed();
        channel.receiver->stopAndWait();
    }
    closeDevice();
    logDriverNotices();
    for (const QString &line : lossReport_.finish())
        logLine(line);
    logLine(tr("设备已关闭！"));
    deviceWatch_.forget();
    showTitle();
}

void MainWindow::applyParameters()
{
    ::applyParameters(this, [this](const QString &line) { logLine(line); });
}

void MainWindow::viewParameters()
{
    ParaDialog(false, true, ParaDialog::BothChannels, this).exec();
}

void MainWindow::getdeviceInfo()
{
    showDeviceInfo(this);
}

void MainWindow::upgradeFirmware()
{
    ::upgradeFirmware(static_cast<unsigned>(deviceIndex_), this);
}

void MainWindow::lookAtDevice()
{
    DeviceWatch::Change change = DeviceWatch::Change::None;
    // The list and the replay bar may be sending for hours: the adapter is not asked in the midst of their frames only.
    if (const SendersHalted halted; halted)
        change = deviceWatch_.look();
    switch (change) {
    case DeviceWatch::Change::Gone:
        deviceClosed();
        if (openDialog_)
            openDialog_->initDlg();
        break;
    case DeviceWatch::Change::Shown:
        showTitle();
        break;
    case DeviceWatch::Change::None:
        break;
    }
}

void MainWindow::watchDevice()
{
    bool sending = false;
    for (const Channel &channel : channels_)
        sending = sending || channel.sender->isRunning();
    if (!sending)
        lookAtDevice();
    receiveView_->showRates();
    logDriverNotices();
    logSettingsNotices();
    for (const QString &line : lossReport_.secondPassed())
        logLine(line);
    watchTimer_->start(kWatchIntervalMs);
}

// --- frames -------------------------------------------------------------------------------------------------------

void MainWindow::refreshDisplay()
{
    receiveView_->refresh();
    refreshTimer_->start(refreshInterval());
}

void MainWindow::recvData(const QList<ModelItem> &modelList, uint channel)
{
    receiveView_->recvData(modelList, channel);
}

void MainWindow::sendedData(const QList<ModelItem> &modelList, uint channel)
{
    receiveView_->sendedData(modelList, channel);
}

void MainWindow::endSend(uint channel)
{
    sending_->endSend(channel);
}

void MainWindow::listSend()
{
    if (!listSend_) {
        listSend_ = new listSendDlg(this);
        listSend_->setRowSource([this] { return receiveView_->selectedFrameCsv(); });
        connect(listSend_, &listSendDlg::logLine, this, &MainWindow::logLine);
        analysis_->joinTransmitList(listSend_);
    }
    listSend_->show();
    listSend_->raise();
    listSend_->activateWindow();
}

// --- options ------------------------------------------------------------------------------------------------------

void MainWindow::setOption(const char *key, bool on)
{
    settings::setValue(QLatin1String(key), on ? QStringLiteral("1") : QStringLiteral("0"), true);
}

void MainWindow::setCheckRecvId(bool on)
{
    if (on)
        for (const Channel &channel : channels_)
            channel.receiver->clearLastIds();
    setOption("recvIDAdd", on);
}

void MainWindow::idNotContinuous(uint lastID, uint ID)
{
    menu_->checkRecvId->setChecked(false);
    setOption("recvIDAdd", false); // also when the entry was unticked already
    showWarning(
        this, tipTitle(),
        text3("ID 不连续:上一帧ID:%1,当前ID:%2", "ID 不連續:上一幀ID:%1,當前ID:%2", "ID error:last ID:%1,current ID:%2")
            .arg(QString::number(lastID, 16), QString::number(ID, 16)));
}

void MainWindow::enterTuning(int index)
{
    valueDialog dialog(this);
    switch (index) {
    case ScanTime:
        dialog.setEntry(index, entryTitle(*menu_->scanTime), 0, kLargestTuningValue, static_cast<int>(scanTime_));
        break;
    case FramesPerReceive:
        dialog.setEntry(index, entryTitle(*menu_->framesPerReceive), 1, kLargestTuningValue,
                        static_cast<int>(framesPerReceive_));
        break;
    case ListLimit:
        dialog.setEntry(index, entryTitle(*menu_->listBuffer), 1, kLargestTuningValue,
                        static_cast<int>(receiveView_->listLimit()));
        break;
    }
    connect(&dialog, &valueDialog::getValue, this, &MainWindow::applyTuning);
    dialog.exec();
}

void MainWindow::applyTuning(const QString &text, int index)
{
    const unsigned value = text.toUInt();
    switch (index) {
    case ScanTime:
        scanTime_ = value;
        break;
    case FramesPerReceive:
        framesPerReceive_ = value;
        break;
    case ListLimit:
        receiveView_->setListLimit(qMax(1u, value));
        settings::setValue(QStringLiteral("listCount"), QString::number(receiveView_->listLimit()), true);
        break;
    }
    menu_->setTuning(scanTime_, framesPerReceive_, receiveView_->listLimit());
    for (const Channel &channel : channels_)
        channel.receiver->setRecvParams(scanTime_, framesPerReceive_);
}
