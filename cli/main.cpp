#include "cli/commands.h"
#include "cli/platform.h"
#include "device/apppaths.h"
#include "device/language.h"
#include "device/settingsstore.h"

#include <QCoreApplication>
#include <QLocale>

int main(int argc, char *argv[])
{
    prepareStandardStreams();
    QLocale::setDefault(QLocale::c()); // numbers are plain digits, whatever the system's habits are
    watchInterrupts();
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("ostrel-cli"));
    QCoreApplication::setApplicationVersion(QStringLiteral(OSTREL_CLI_VERSION));
    // The window's settings; they are read here and never written.
    settings::load(applicationDir() + QStringLiteral("/config/setdb.txt"));
    setLanguageCode(English);
    return runCommandLine(QCoreApplication::arguments().mid(1));
}
