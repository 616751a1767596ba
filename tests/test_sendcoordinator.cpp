#include "sendbench.h"

class TestSendCoordinator : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SendBench> bench_;

    // Sends a file of rows of one frame each, on channel 1 and 2 in turn.
    void sendFile(int rows, int passes, int intervalMs)
    {
        QByteArray content = "header\n";
        for (int row = 0; row < rows; ++row)
            content +=
                "0,=\"10:00:00.000\",0," + QByteArray::number(1 + row % 2) + ",Rx,0x123,标准帧,数据帧,2,CAN,x| 11 22\n";
        bench_->folder.write("frames.csv", content);
        bench_->dialog.findChild<QLineEdit *>("lineEdit")->setText(bench_->folder.path("frames.csv"));
        bench_->dialog.findChild<QComboBox *>("comboBox")->setCurrentIndex(2);
        bench_->dialog.findChild<QSpinBox *>("spinBox")->setValue(passes);
        bench_->dialog.findChild<QSpinBox *>("spinBox_2")->setValue(intervalMs);
        dialogButton("pbSend")->click();
    }
    QPushButton *dialogButton(const char *name) { return bench_->dialog.findChild<QPushButton *>(name); }
    bool dialogIsIdle() { return dialogButton("pbSend")->isEnabled() && !dialogButton("pbStop")->isEnabled(); }
    QString states() { return bench_->state(0) + ", " + bench_->state(1); }
    static constexpr int kHourMs = 3600 * 1000;

private slots:
    void init()
    {
        bench_ = std::make_unique<SendBench>();
        bench_->restore();
        bench_->open();
    }
    void cleanup() { bench_.reset(); }

    void aRunMayStartInsideTheEndOfTheLast()
    {
        SendBench &b = *bench_;
        constexpr int kRuns = 10;
        int runs = 1;
        connect(&b.thread2, &sendThread::endSend, &b.panel2, [&] {
            if (runs < kRuns) {
                ++runs;
                b.button(1, "SendBtn")->click();
            }
        });
        // In the worker, after the end has been told: run() returns late.
        connect(&b.thread2, &sendThread::endSend, [] { QThread::msleep(20); });
        b.button(1, "SendBtn")->click();
        QTRY_COMPARE(b.driver->sentCan(1).size(), std::size_t(kRuns));
        QCOMPARE(takePendingFrames().constLast().channel, 1u);
        QTRY_COMPARE(states(), QString("idle, idle"));
    }

    void aFileOccupiesBothPanels()
    {
        SendBench &b = *bench_;
        b.combo(1, "FrameDataCombo")->setCurrentIndex(1);
        QSignalSpy ends(&b.thread1, &sendThread::endSend);
        // What ends it; a file of two rows per channel, or one whose first row waits for an hour.
        for (const QString &stopper : QStringList{"panel 1", "panel 2", "dialog", "itself"}) {
            const std::size_t rows = stopper == "itself" ? 2 : 0;
            const std::size_t before[] = {b.driver->sentCan(0).size(), b.driver->sentCan(1).size()};
            ends.clear();
            b.dialog.hide();
            b.button(rows == 0 ? 0 : 1, "SendFileBtn")->click();
            QVERIFY(b.dialog.isVisible());
            b.dialog.findChild<QComboBox *>("comboBox_2")->setCurrentIndex(rows == 0 ? 0 : 1); // recorded: at once
            sendFile(4, 1, kHourMs);
            QCOMPARE(states(), QString("sending, sending"));
            QVERIFY(!dialogIsIdle());
            b.panel1.setSendEnabled(true); // another channel is opened meanwhile
            b.panel1.restore();
            QCOMPARE(states(), QString("sending, sending"));
            QVERIFY(!b.combo(0, "ProtocolCombo")->isEnabled() && !b.combo(1, "ProtocolCombo")->isEnabled());
            if (stopper == "dialog")
                dialogButton("pbStop")->click();
            else if (rows == 0)
                b.button(stopper == "panel 1" ? 0 : 1, "StopSendBtn")->click();
            QTRY_COMPARE(states(), QString("idle, idle"));
            QVERIFY(dialogIsIdle());
            QTRY_COMPARE(ends.count(), 2);
            QVERIFY(b.combo(0, "ProtocolCombo")->isEnabled() && !b.combo(1, "ProtocolCombo")->isEnabled());
            QCOMPARE(b.driver->sentCan(0).size(), before[0] + rows);
            b.button(1, "SendBtn")->click(); // a stop meant for the file does not reach the next run
            QTRY_COMPARE(b.driver->sentCan(1).size(), before[1] + rows + 1);
            QTRY_COMPARE(states(), QString("idle, idle"));
        }
    }

    void aFileIsRefusedWhileSomethingIsSent()
    {
        SendBench &b = *bench_;
        QSignalSpy log(&b.coordinator, &SendCoordinator::logLine);
        for (const int channel : {0, 1}) {
            b.edit(channel, "SendCountEdit")->setText("-1");
            b.button(channel, "SendBtn")->click();
            sendFile(2, 1, 0);
            QVERIFY(dialogIsIdle());
            b.coordinator.stopFileSend(); // nothing to stop
            QTest::qWait(50);
            QCOMPARE(states(), QString(channel == 0 ? "sending, idle" : "idle, sending"));
            b.button(channel, "StopSendBtn")->click();
            QTRY_COMPARE(states(), QString("idle, idle"));
        }

        // A second file while the first one has not ended yet, though the dialog has been stopped.
        sendFile(2, -1, kHourMs);
        dialogButton("pbStop")->click();
        dialogButton("pbSend")->click();
        QVERIFY(dialogIsIdle());
        QCOMPARE(log.count(), 3);
        QCOMPARE(log.last().at(0).toString(), QString("文件未发送：正在发送其他数据！"));
        QTRY_COMPARE(states(), QString("idle, idle"));
    }

    // The end of the first file for channel 1 arrives while the second one is already being sent.
    void aFileMayStartInsideTheEndOfTheLast()
    {
        SendBench &b = *bench_;
        bool again = true;
        connect(&b.thread1, &sendThread::endSend, &b.dialog, [&](uint channel) {
            if (channel == 0 && std::exchange(again, false))
                sendFile(2, -1, kHourMs);
        });
        connect(&b.thread1, &sendThread::endSend, [] { QThread::msleep(20); });
        sendFile(2, 1, 0);
        QTRY_VERIFY(!again);
        QCoreApplication::processEvents();
        QCOMPARE(states(), QString("sending, sending"));
        b.button(1, "StopSendBtn")->click();
        QTRY_COMPARE(states(), QString("idle, idle"));
        QCOMPARE(b.driver->sentCan(0).size(), std::size_t(1));
    }
};

QTEST_MAIN(TestSendCoordinator)
#include "test_sendcoordinator.moc"
