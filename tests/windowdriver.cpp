#include "windowdriver.h"

#include "app/mainwindow.h"
#include "device/devicelayer.h"
#include "device/dialogs/opendlg.h"
#include "device/dialogs/paradialog.h"
#include "dialogs/savefiledlg.h"

#include <QAbstractButton>
#include <QAbstractItemModel>
#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTableView>
#include <QTest>

const char *const kReceivedLabels[2] = {"ch1RecvCount", "ch2RecvCount"};
const char *const kTransmittedLabels[2] = {"ch1SendCount", "ch2SendCount"};

namespace
{
void clickIn(QDialog *dialog, const char *name)
{
    auto *button = dialog->findChild<QAbstractButton *>(QLatin1String(name));
    if (!button)
        qFatal("no button %s", name);
    QTest::mouseClick(button, Qt::LeftButton, Qt::NoModifier, button->rect().center());
}
} // namespace

QObject *WindowDriver::tryFind(const QByteArray &name) const
{
    return window_.findChild<QObject *>(QString::fromLatin1(name));
}

void WindowDriver::trigger(const QByteArray &action) const
{
    find<QAction>(action)->trigger();
}

void WindowDriver::click(const QByteArray &button) const
{
    // As the keyboard does it: a check box answers a click on its indicator only.
    auto *target = find<QAbstractButton>(button);
    if (!target->isEnabled())
        qFatal("%s is disabled", button.constData());
    target->click();
}

quint64 WindowDriver::number(const QByteArray &label) const
{
    return find<QLabel>(label)->text().toULongLong();
}

quint64 WindowDriver::received() const
{
    return number(kReceivedLabels[0]) + number(kReceivedLabels[1]);
}

quint64 WindowDriver::transmitted() const
{
    return number(kTransmittedLabels[0]) + number(kTransmittedLabels[1]);
}

QString WindowDriver::log() const
{
    return find<QPlainTextEdit>("logEdit")->toPlainText();
}

int WindowDriver::rows() const
{
    return find<QTableView>("tableView")->model()->rowCount();
}

bool WindowDriver::openEverything(int device)
{
    modal_.on<OpenDlg>([this, device](OpenDlg *dialog) {
        if (device >= 0)
            dialog->findChild<QComboBox *>(QStringLiteral("comboBox"))->setCurrentIndex(device);
        if (!isDeviceOpen())
            clickIn(dialog, "pushButton");
        modal_.on<ParaDialog>([](ParaDialog *parameters) { clickIn(parameters, "btnConfirm"); });
        clickIn(dialog, "pushButton_2");
        dialog->close();
    });
    trigger("actionDeviceOperations");
    return isDeviceOpen() && isChannelOpen(0) && isChannelOpen(1);
}

void WindowDriver::closeDevice()
{
    modal_.on<OpenDlg>([](OpenDlg *dialog) {
        clickIn(dialog, "pushButton_5");
        dialog->close();
    });
    trigger("actionDeviceOperations");
}

void WindowDriver::startCapture(const QString &path, int mode)
{
    modal_.on<savefileDlg>([path, mode](savefileDlg *dialog) {
        dialog->findChild<QLineEdit *>(QStringLiteral("pathEdit"))->setText(path);
        dialog->findChild<QComboBox *>(QStringLiteral("modeBox"))->setCurrentIndex(mode);
        clickIn(dialog, "okBtn");
    });
    click("checkBox");
}

void WindowDriver::stopCapture()
{
    if (find<QAbstractButton>("checkBox")->isChecked())
        click("checkBox");
}
