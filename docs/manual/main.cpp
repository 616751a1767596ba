// ostrel_manual MARKDOWN PDF TITLE: sets one manual. Run off-screen by the build.
#include "manualpages.h"

#include <QGuiApplication>
#include <QTextStream>

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() != 4) {
        QTextStream(stderr) << "usage: ostrel_manual MARKDOWN PDF TITLE\n";
        return 2;
    }
    const QString error = setManual(arguments.at(1), arguments.at(2), arguments.at(3));
    if (!error.isEmpty())
        QTextStream(stderr) << "ostrel_manual: " << error << '\n';
    return error.isEmpty() ? 0 : 1;
}
