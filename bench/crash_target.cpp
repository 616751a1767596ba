// The program that .ci/crash kills: the real window on the saturated simulated adapter, captured to a file, with
// settings written all the time.
//   ostrel_crash_target FOLDER     captures to FOLDER/capture.csv, settings in FOLDER/setdb.txt
// Before each refresh round it writes to FOLDER/progress how many frames have been counted.
#include "device/settingsstore.h"
#include "trialscene.h"

#include <QApplication>
#include <QFile>

namespace
{
constexpr int kProgressEveryMs = 5;
constexpr int kSettingsEveryMs = 3;
} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    if (argc != 2)
        return 2;
    const QString folder = QString::fromLocal8Bit(argv[1]);
    SimulatorOptions options;
    options.traffic = SimulatorOptions::Traffic::Flood;
    Scene scene(options);
    settings::load(folder + QStringLiteral("/setdb.txt"));
    scene.user->startCapture(folder + QStringLiteral("/capture.csv"));
    if (!scene.user->openEverything())
        return 1;

    // The labels show a round when its rows have been written.
    QFile progress(folder + QStringLiteral("/progress"));
    if (!progress.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return 1;
    QTimer teller;
    QObject::connect(&teller, &QTimer::timeout, [&] {
        progress.seek(0);
        progress.write(QByteArray::number(scene.user->received() + scene.user->transmitted()).rightJustified(20, '0') +
                       '\n');
    });
    teller.start(kProgressEveryMs);
    unsigned turn = 0;
    QTimer keeper;
    QObject::connect(&keeper, &QTimer::timeout, [&] {
        settings::setValue(QStringLiteral("turn"), QString::number(++turn), false);
        settings::setValue(QStringLiteral("zLast"), QStringLiteral("whole"), true);
    });
    keeper.start(kSettingsEveryMs);
    return QApplication::exec();
}
