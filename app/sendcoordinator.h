// What the two send panels and the file dialog share: a file is sent by channel 1's send thread, and while it is,
// neither panel sends anything else. GUI thread.
#pragma once

#include <QObject>

class SendPanel;
class fileDlg;
class sendThread;

class SendCoordinator : public QObject
{
    Q_OBJECT

public:
    // Nothing is owned. The panels' wishes are connected here; the window passes on the dialog's send and stop and the
    // threads' endSend.
    SendCoordinator(SendPanel *panel1, SendPanel *panel2, sendThread *thread1, fileDlg *dialog,
                    QObject *parent = nullptr);

signals:
    void logLine(QString message);

public slots:
    // Refused while anything is being sent: the log says so, and the dialog goes back to idle.
    void startFileSend(const QString &path, int count, int interval, int channel);
    // Ends the file under way; nothing without one.
    void stopFileSend();
    // A run of the channel has ended, or a file, which ends channel 0 and then channel 1.
    void endSend(uint channel);
    // Shows the file dialog, or brings it to the front.
    void showFileDialog();

private:
    bool maySendFile() const;

    SendPanel *const panels_[2];
    sendThread *const fileThread_;
    fileDlg *const dialog_;
    bool sendingFile_ = false;
    int secondEndsDue_ = 0; // files started whose end has not reached the second panel yet
};
