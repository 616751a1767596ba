// Everything at once, for as long as asked: the real window on the saturated simulated adapter, used at random.
//   ostrel_soak SECONDS [SEED [calm]]
// calm: with the built-in vehicle's traffic, so that a slow build (the thread sanitizer's) gets through many actions.
// Prints the seed and, at the end, the accounts; ends with 1 when they do not balance or a dialog
// came that nobody asked for.
#include "processusage.h"
#include "soakactions.h"

#include <QApplication>
#include <QDateTime>
#include <QTextStream>

namespace
{
constexpr int kReports = 10;

int soak(int seconds, quint32 seed, bool calm)
{
    QTextStream out(stdout);
    out << "seed " << seed << ", " << seconds << " s" << Qt::endl;
    SimulatorOptions options;
    options.traffic = calm ? SimulatorOptions::Traffic::BuiltIn : SimulatorOptions::Traffic::Flood;
    auto driver = std::make_unique<CountingDriver>(options);
    CountingDriver &counting = *driver;
    Scene scene(std::move(driver));
    SoakAccounts accounts(counting, *scene.user);
    SoakActions actions(scene, accounts, seed);

    LoopWatch watch;
    watch.start();
    QElapsedTimer timer;
    timer.start();
    qint64 nextReport = seconds * 1000 / kReports;
    while (timer.elapsed() < seconds * qint64(1000)) {
        actions.next();
        if (timer.elapsed() < nextReport)
            continue;
        nextReport += seconds * qint64(1000) / kReports;
        out << "  after " << timer.elapsed() / 1000 << " s: " << accounts.counted() << " frames counted, resident "
            << ProcessUsage::now().residentMiB() << " MiB, longest gap of the event loop " << watch.longestMs() << " ms"
            << Qt::endl;
        watch.start();
    }
    actions.finish();
    out << "done: " << actions.summary() << Qt::endl;
    const bool balanced = accounts.balance();
    const QStringList unexpected = scene.user->modal().unexpected();
    if (!unexpected.isEmpty())
        out << "dialogs that nobody asked for: " << unexpected.join(QStringLiteral(", ")) << '\n';
    out << (balanced ? "the accounts balance" : "the accounts do NOT balance") << ", seed " << seed << Qt::endl;
    return balanced && unexpected.isEmpty() ? 0 : 1;
}
} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments().mid(1);
    const int seconds = arguments.value(0).toInt();
    if (seconds < 1) {
        QTextStream(stdout) << "ostrel_soak SECONDS [SEED [calm]]\n";
        return 2;
    }
    const bool seeded = arguments.size() > 1;
    const quint32 seed = seeded ? arguments.at(1).toUInt() : static_cast<quint32>(QDateTime::currentMSecsSinceEpoch());
    return soak(seconds, seed, arguments.value(2) == QLatin1String("calm"));
}
