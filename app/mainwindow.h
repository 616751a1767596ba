// The program's one window: puts the parts together and runs the periodic tasks.
#pragma once

#include "app/devicewatch.h"
#include "app/drivernotices.h"
#include "app/languageswitcher.h"
#include "device/driver/driver.h"
#include "frames/modelitem.h"

#include <QMainWindow>
#include <QPointer>

#include <memory>

class AnalysisMenu;
class MainMenu;
class OpenDlg;
class OperationLog;
class QTimer;
class ReceiveView;
class SendCoordinator;
class SendPanel;
class listSendDlg;
class recvThread;
class sendThread;

namespace Ui
{
class MainWindow;
}

class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override; // ends the workers, closes the device and the capture

    AnalysisMenu *analysisMenu() const { return analysis_; }
    // Applies every text of the window in the current language.
    void setLa();

public slots:
    void canLog(const QString &msg);
    void recvData(const QList<ModelItem> &modelList, uint channel);
    void sendedData(const QList<ModelItem> &modelList, uint channel);
    void endSend(uint channel);
    void getdeviceInfo();

protected:
    void changeEvent(QEvent *event) override;

private:
    // The workers of one channel.
    struct Channel {
        recvThread *receiver;
        sendThread *sender;
        SendPanel *panel;
    };

    void createWorkers();
    void arrangeWidgets();
    void connectActions();
    void restoreOptions();
    void startTimers();
    void followScreenDpi();

    void openDeviceDialog();
    void channelDialogClosed(unsigned channel, bool opened);
    void deviceClosed();
    void applyParameters();
    void viewParameters();
    void upgradeFirmware();
    void listSend();
    void switchLanguage(unsigned code);
    void setOption(const char *key, bool on);
    void setCheckRecvId(bool on);
    void enterTuning(int index);
    void applyTuning(const QString &text, int index);
    void idNotContinuous(uint lastID, uint ID);

    void lookAtDevice();
    void watchDevice();
    void refreshDisplay();
    void showTitle();
    void logDriverNotices();
    void logSettingsNotices();
    void logLine(const QString &message);

    std::unique_ptr<Ui::MainWindow> ui_;
    LanguageSwitcher language_;
    MainMenu *menu_ = nullptr;
    AnalysisMenu *analysis_ = nullptr;
    ReceiveView *receiveView_ = nullptr;
    OperationLog *log_ = nullptr;
    SendCoordinator *sending_ = nullptr;
    listSendDlg *listSend_ = nullptr; // from its first opening on
    Channel channels_[kChannelCount] = {};
    DeviceWatch deviceWatch_;
    LossReport lossReport_;
    QTimer *watchTimer_ = nullptr;   // single-shot, re-armed by each run
    QTimer *refreshTimer_ = nullptr; // the same
    QPointer<OpenDlg> openDialog_;
    int deviceIndex_ = 0; // of the last successful opening
    unsigned scanTime_;
    unsigned framesPerReceive_;
};
