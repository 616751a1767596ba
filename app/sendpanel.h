// One channel's send panel: edits a frame template, stores it, checks it and hands it to the channel's send thread.
#pragma once

#include <QGroupBox>

#include <memory>

class sendThread;

namespace Ui
{
class SendPanel;
}

class SendPanel : public QGroupBox
{
    Q_OBJECT

public:
    // 0-based channel; the thread is not owned and outlives the panel. Widgets are named with "ch1" or "ch2" in front.
    SendPanel(uint channel, sendThread *thread, QWidget *parent = nullptr);
    ~SendPanel() override;

    // Fills the fields from the settings; nothing while sending.
    void restore();

    // From the start of a run, of the panel's own or of a file, until endSend().
    bool isSending() const { return state_ != State::Idle; }
    // endSend arrives before the run has returned: waits for that. False when it does not return.
    bool waitForThread();

    // A file is being sent: nothing but the stop button is usable, and that asks for the end of the file.
    void beginFileSend();
    // The run has ended. The send button comes back only while the channel is open.
    void endSend();

    // Opening a channel enables its send button, unless the panel is sending.
    void setSendEnabled(bool enabled);
    void deviceClosed() { setSendEnabled(false); }

    // As narrow as its texts allow: the room beside is for others.
    QSize sizeHint() const override { return minimumSizeHint(); }

public slots:
    // What the buttons do.
    void send();
    void stopSending();
    void editDataBytes();

signals:
    void logLine(const QString &text); // for the window's own lines in the operation log
    void fileSendRequested();          // the user asks for the file dialog
    void fileStopRequested();          // the stop button, while a file is being sent

protected:
    void changeEvent(QEvent *event) override;

private:
    enum class State { Idle, Sending, SendingFile };

    QString key(const char *name) const; // "ch1" or "ch2" and the name
    void nameWidgets();
    void installValidators();
    void connectWidgets();
    void showTexts();

    void store() const;
    bool checkIdentifier(uint *identifier);
    void handOver(uint identifier);
    void enterState(State state);

    void normalizeData();
    void cutDataToLength(int index);
    void showProtocol(int index);
    void showFrameType(int index);

    const uint channel_;
    sendThread *const thread_;
    State state_ = State::Idle;
    std::unique_ptr<Ui::SendPanel> ui_;
};
