// Both send panels with their threads and the file dialog, wired as the window wires them, on a scripted driver.
#pragma once

#include "app/sendcoordinator.h"
#include "app/sendpanel.h"
#include "device/devicelayer.h"
#include "dialogs/filedlg.h"
#include "fakedriver.h"
#include "frames/pendingframes.h"
#include "frames/sendthread.h"
#include "modalhelper.h"
#include "testfolder.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QtTest>

struct SendBench {
    TestFolder folder;
    FakeDriver *driver = FakeDriver::install();
    ModalAnswer answer;
    sendThread thread1{0};
    sendThread thread2{1};
    SendPanel panel1{0, &thread1};
    SendPanel panel2{1, &thread2};
    fileDlg dialog;
    SendCoordinator coordinator{&panel1, &panel2, &thread1, &dialog};

    SendBench()
    {
        QObject::connect(&dialog, &fileDlg::send, &coordinator, &SendCoordinator::startFileSend);
        QObject::connect(&dialog, &fileDlg::stop, &coordinator, &SendCoordinator::stopFileSend);
        QObject::connect(&thread1, &sendThread::endSend, &coordinator, &SendCoordinator::endSend);
        QObject::connect(&thread2, &sendThread::endSend, &coordinator, &SendCoordinator::endSend);
    }
    ~SendBench()
    {
        for (sendThread *thread : {&thread1, &thread2}) {
            thread->stop();
            thread->wait();
        }
        closeDevice();
        takePendingFrames();
    }

    void open()
    {
        QVERIFY(openDevice(kDeviceType, 0, 0));
        QVERIFY(initChannel(0, 0));
        QVERIFY(initChannel(1, 0));
        driver->takeCalls();
    }
    void restore()
    {
        panel1.restore();
        panel2.restore();
    }

    SendPanel &panel(int channel) { return channel == 0 ? panel1 : panel2; }
    // A widget of a panel by its name without "ch1" or "ch2".
    template <typename Widget> Widget *widget(int channel, const char *name)
    {
        auto *found = panel(channel).findChild<Widget *>(QStringLiteral("ch%1%2").arg(channel + 1).arg(name));
        if (!found)
            qFatal("no %s", name);
        return found;
    }
    QComboBox *combo(int channel, const char *name) { return widget<QComboBox>(channel, name); }
    QLineEdit *edit(int channel, const char *name) { return widget<QLineEdit>(channel, name); }
    QCheckBox *box(int channel, const char *name) { return widget<QCheckBox>(channel, name); }
    QPushButton *button(int channel, const char *name) { return widget<QPushButton>(channel, name); }
    QPushButton *bytesButton(int channel)
    {
        return panel(channel).findChild<QPushButton *>(channel == 0 ? "pushButton_3" : "pushButton_4");
    }

    // "idle", "sending", or what does not fit.
    QString state(int channel)
    {
        const bool stop = button(channel, "StopSendBtn")->isEnabled();
        // Every input but the protocol list.
        for (const char *name :
             {"SendBtn", "FrameTypeCombo", "FrameDataCombo", "SendTypeCombo", "sendLenCombo", "SendDataEdit",
              "SendIDEdit", "SendCountEdit", "SendInvEdit", "DataAddChk", "IDAddChk"})
            if (widget<QWidget>(channel, name)->isEnabled() == stop)
                return QString("mixed: %1").arg(name);
        if (bytesButton(channel)->isEnabled() == stop)
            return "mixed: bytes button";
        return stop ? "sending" : "idle";
    }
};
