#include "app/sendcoordinator.h"

#include "app/sendpanel.h"
#include "device/language.h"
#include "dialogs/filedlg.h"
#include "frames/sendthread.h"

static_assert(static_cast<uint>(-1) == kRecordedTiming);

SendCoordinator::SendCoordinator(SendPanel *panel1, SendPanel *panel2, sendThread *thread1, fileDlg *dialog,
                                 QObject *parent)
    : QObject(parent), panels_{panel1, panel2}, fileThread_(thread1), dialog_(dialog)
{
    for (SendPanel *panel : panels_) {
        connect(panel, &SendPanel::fileSendRequested, this, &SendCoordinator::showFileDialog);
        connect(panel, &SendPanel::fileStopRequested, this, &SendCoordinator::stopFileSend);
    }
}

bool SendCoordinator::maySendFile() const
{
    const bool secondPanelBusy = panels_[1]->isSending() && secondEndsDue_ == 0;
    return !sendingFile_ && !panels_[0]->isSending() && !secondPanelBusy && panels_[0]->waitForThread() &&
           panels_[1]->waitForThread();
}

void SendCoordinator::startFileSend(const QString &path, int count, int interval, int channel)
{
    if (!maySendFile()) {
        emit logLine(text3("文件未发送：正在发送其他数据！", "檔案未發送：正在發送其他數據！",
                           "File not sent: other data are being sent!"));
        dialog_->setIdle();
        return;
    }
    sendingFile_ = true;
    ++secondEndsDue_;
    fileThread_->setFileSend(path, count, static_cast<uint>(interval), static_cast<uint>(channel));
    for (SendPanel *panel : panels_)
        panel->beginFileSend();
    fileThread_->start();
}

void SendCoordinator::stopFileSend()
{
    if (sendingFile_)
        fileThread_->stop();
}

void SendCoordinator::endSend(uint channel)
{
    if (channel == 0) {
        sendingFile_ = false;
        dialog_->setIdle();
        panels_[0]->endSend();
        return;
    }
    // The next file may have been started when channel 1 ended; its panels stay as they are.
    if (secondEndsDue_ > 0 && --secondEndsDue_ > 0)
        return;
    panels_[1]->endSend();
}

void SendCoordinator::showFileDialog()
{
    dialog_->show();
    dialog_->raise();
    dialog_->activateWindow();
}
