#include "app/analysismenu.h"
#include "app/mainwindow.h"
#include "app/windowstate.h"
#include "device/devicelayer.h"
#include "device/driver/driverfactory.h"

#include <QApplication>
#include <QIcon>
#include <QLocale>

int main(int argc, char *argv[])
{
    QLocale::setDefault(QLocale::c()); // numbers in fields are plain digits, whatever the system's habits are
    QApplication::setAttribute(Qt::AA_DisableWindowContextHelpButton);
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Ostrel"));
    QApplication::setOrganizationName(QStringLiteral("Ostrel"));
    QApplication::setDesktopFileName(QStringLiteral("ostrel"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/ostrel.png")));
    setDriver(makeDriver(qgetenv("OSTREL_DRIVER").toStdString()));
    int result = 0;
    {
        MainWindow window;
        const WindowState state(window);
        window.show();
        for (const QString &path : QApplication::arguments().mid(1))
            window.analysisMenu()->openRecording(path);
        result = QApplication::exec();
    }
    setDriver(nullptr);
    return result;
}
