#include "sendbench.h"

class TestSendCoordinator : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SendBench> bench_;

    // A file of a header and rows of one frame each, on channel 1 and 2 in turn.
    QString writeFrames(int rows)
    {
        QByteArray content = "header\n";
        for (int row = 0; row < rows; ++row)
            content +=
                "0,=\"10:00:00.000\",0," + QByteArray::number(1 + row % 2) + ",Rx,0x123,标准帧,数据帧,2,CAN,x| 11 22\n";
        bench_->folder.write("frames.csv", content);
        return bench_->folder.path("frames.csv");
    }
    void chooseFile(const QString &path, int passes, int intervalMs)
    {
        bench_->dialog.findChild<QLineEdit *>("lineEdit")->setText(path);
        bench_->dialog.findChild<QComboBox *>("comboBox")->setCurrentIndex(2);
        bench_->dialog.findChild<QSpinBox *>("spinBox")->setValue(passes);
        bench_->dialog.findChild<QSpinBox *>("spinBox_2")->setValue(intervalMs);
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

    void endlessUntilStopped()
    {
        SendBench &b = *bench_;
        b.edit(0, "SendCountEdit")->setText("-1");
        b.edit(0, "SendInvEdit")->setText(QString::number(kHourMs));
        b.button(0, "SendBtn")->click();
        QCOMPARE(states(), QString("sending, idle"));
        QVERIFY(!b.combo(0, "ProtocolCombo")->isEnabled());
        QVERIFY(b.button(0, "SendFileBtn")->isEnabled());
        QTRY_COMPARE(b.driver->sentCan(0).size(), std::size_t(1));

        b.panel1.setSendEnabled(true); // another channel is opened meanwhile
        b.panel1.restore();
        QCOMPARE(b.edit(0, "SendCountEdit")->text(), QString("-1"));
        QCOMPARE(states(), QString("sending, idle"));
        b.button(0, "StopSendBtn")->click(); // in the middle of the hour
        QTRY_COMPARE(states(), QString("idle, idle"));
        QVERIFY(b.combo(0, "ProtocolCombo")->isEnabled());
        QCOMPARE(b.driver->sentCan(0).size(), std::size_t(1));
    }

    void aClosedChannelKeepsItsSendButtonOff()
    {
        SendBench &b = *bench_;
        b.edit(1, "SendCountEdit")->setText("-1");
        b.edit(1, "SendInvEdit")->setText("1");
        b.button(1, "SendBtn")->click();
        QTRY_VERIFY(!b.driver->sentCan(1).empty());
        b.panel2.deviceClosed();
        closeDevice();
        QTRY_VERIFY(!b.panel2.isSending());
        QVERIFY(!b.button(1, "SendBtn")->isEnabled());
        QVERIFY(!b.button(1, "StopSendBtn")->isEnabled());
        QVERIFY(b.edit(1, "SendIDEdit")->isEnabled());
        b.panel2.setSendEnabled(true);
        QCOMPARE(b.state(1), QString("idle"));
    }

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
        QTRY_COMPARE(states(), QString("idle, idle"));
    }

    void aFileOccupiesBothPanels_data()
    {
        QTest::addColumn<int>("stopper"); // panel 0, panel 1, the dialog, or nobody
        QTest::newRow("stopped by panel 1") << 0;
        QTest::newRow("stopped by panel 2") << 1;
        QTest::newRow("stopped by the dialog") << 2;
        QTest::newRow("ends by itself") << 3;
    }
    void aFileOccupiesBothPanels()
    {
        QFETCH(int, stopper);
        SendBench &b = *bench_;
        b.combo(1, "FrameDataCombo")->setCurrentIndex(1);
        int ends = 0;
        connect(&b.thread1, &sendThread::endSend, &b.dialog, [&] { ++ends; });
        chooseFile(writeFrames(4), 1, stopper == 3 ? 0 : kHourMs);
        dialogButton("pbSend")->click();
        QCOMPARE(states(), QString("sending, sending"));
        QVERIFY(!b.combo(0, "ProtocolCombo")->isEnabled() && !b.combo(1, "ProtocolCombo")->isEnabled());
        QVERIFY(!dialogIsIdle());
        b.panel1.setSendEnabled(true);
        QCOMPARE(states(), QString("sending, sending"));
        if (stopper < 2)
            b.button(stopper, "StopSendBtn")->click();
        else if (stopper == 2)
            dialogButton("pbStop")->click();
        QTRY_COMPARE(states(), QString("idle, idle"));
        QVERIFY(dialogIsIdle());
        QTRY_COMPARE(ends, 2);
        QVERIFY(b.combo(0, "ProtocolCombo")->isEnabled());
        QVERIFY(!b.combo(1, "ProtocolCombo")->isEnabled());
        const std::size_t rows = stopper == 3 ? 2 : 0;
        QCOMPARE(b.driver->sentCan(0).size(), rows);
        QCOMPARE(b.driver->sentCan(1).size(), rows);

        b.button(1, "SendBtn")->click(); // a stop meant for the file does not reach the next run
        QTRY_COMPARE(b.driver->sentCan(1).size(), rows + 1);
    }

    void recordedTiming()
    {
        SendBench &b = *bench_;
        chooseFile(writeFrames(2), 1, kHourMs);
        b.dialog.findChild<QComboBox *>("comboBox_2")->setCurrentIndex(1);
        dialogButton("pbSend")->click();
        QTRY_COMPARE(states(), QString("idle, idle")); // the hour on show plays no part
        QCOMPARE(b.driver->sentCan(1).size(), std::size_t(1));
    }

    void aFileIsRefusedWhileSomethingIsSent()
    {
        SendBench &b = *bench_;
        const QString path = writeFrames(2);
        b.edit(1, "SendCountEdit")->setText("-1");
        b.button(1, "SendBtn")->click();
        chooseFile(path, 1, 0);
        dialogButton("pbSend")->click();
        QVERIFY(dialogIsIdle());
        QCOMPARE(states(), QString("idle, sending"));
        b.coordinator.stopFileSend(); // nothing to stop
        b.button(1, "StopSendBtn")->click();
        QTRY_COMPARE(states(), QString("idle, idle"));
        QVERIFY(b.driver->sentCan(0).empty());

        // A second file while the first one has not ended yet, though the dialog has been stopped.
        chooseFile(path, -1, kHourMs);
        dialogButton("pbSend")->click();
        dialogButton("pbStop")->click();
        dialogButton("pbSend")->click();
        QVERIFY(dialogIsIdle());
        QTRY_COMPARE(states(), QString("idle, idle"));
    }

    void aMissingFileOnlyEnds()
    {
        QString logged;
        connect(&bench_->thread1, &sendThread::log, &bench_->dialog, [&](const QString &line) { logged = line; });
        chooseFile(bench_->folder.path("nowhere.csv"), 3, 0);
        dialogButton("pbSend")->click();
        QTRY_COMPARE(states(), QString("idle, idle"));
        QVERIFY(dialogIsIdle());
        QCOMPARE(logged, QString("文件发送错误！"));
    }

    // The end of the first file for channel 1 arrives while the second one is already being sent.
    void aFileMayStartInsideTheEndOfTheLast()
    {
        SendBench &b = *bench_;
        chooseFile(writeFrames(2), 1, 0);
        bool again = true;
        connect(&b.thread1, &sendThread::endSend, &b.dialog, [&](uint channel) {
            if (channel != 0 || !std::exchange(again, false))
                return;
            chooseFile(b.folder.path("frames.csv"), -1, kHourMs);
            dialogButton("pbSend")->click();
        });
        connect(&b.thread1, &sendThread::endSend, [] { QThread::msleep(20); });
        dialogButton("pbSend")->click();
        QTRY_VERIFY(!again);
        QCoreApplication::processEvents();
        QCOMPARE(states(), QString("sending, sending"));
        b.button(1, "StopSendBtn")->click();
        QTRY_COMPARE(states(), QString("idle, idle"));
        QCOMPARE(b.driver->sentCan(0).size(), std::size_t(1));
    }

    void eitherPanelOpensTheDialog()
    {
        for (int channel : {0, 1}) {
            bench_->dialog.hide();
            bench_->button(channel, "SendFileBtn")->click();
            QVERIFY(bench_->dialog.isVisible());
        }
    }
};

QTEST_MAIN(TestSendCoordinator)
#include "test_sendcoordinator.moc"
