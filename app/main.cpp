#include "app/mainwindow.h"
#include "device/devicelayer.h"
#include "device/driver/driverfactory.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Ostrel"));
    setDriver(makeDriver(qgetenv("OSTREL_DRIVER").toStdString()));
    int result = 0;
    {
        MainWindow window;
        window.show();
        result = QApplication::exec();
    }
    setDriver(nullptr);
    return result;
}
