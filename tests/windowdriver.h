// Drives the real window as a user would: through its menus, buttons and dialogs.
#pragma once

#include "modalhelper.h"

#include <QString>
#include <QWidget>

class MainWindow;

class WindowDriver
{
public:
    explicit WindowDriver(MainWindow &window) : window_(window) {}

    // A widget of the window by its name; it must exist.
    template <typename Widget> Widget *find(const QByteArray &name) const
    {
        auto *widget = tryFind(name);
        if (!qobject_cast<Widget *>(widget))
            qFatal("no %s of the right kind", name.constData());
        return qobject_cast<Widget *>(widget);
    }
    void trigger(const QByteArray &action) const;
    void click(const QByteArray &button) const;
    // The number that a label begins with.
    quint64 number(const QByteArray &label) const;
    // The totals of both channels together.
    quint64 received() const;
    quint64 transmitted() const;
    QString log() const;
    int rows() const; // of the frame list

    // Opens the device and both channels through the open dialog, with the parameters as they are stored. device: its
    // place in the dialog's list, -1 for the one that is selected.
    bool openEverything(int device = -1);
    // Closes the device through the open dialog.
    void closeDevice();
    // Ticks or unticks "实时保存"; ticking answers its dialog with the path and the mode's index.
    void startCapture(const QString &path, int mode = 0);
    void stopCapture();

    ModalAnswer &modal() { return modal_; }

private:
    QObject *tryFind(const QByteArray &name) const;

    MainWindow &window_;
    ModalAnswer modal_;
};

// The labels that hold the totals.
extern const char *const kReceivedLabels[2];
extern const char *const kTransmittedLabels[2];
