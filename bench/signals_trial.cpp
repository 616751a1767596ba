// ostrel_signals_trial [SECONDS]: what the signals window with 200 signals on the screen and a plot with 8 curves cost
// at 56,000 frames a second, off-screen. Prints the process's share of one core without windows, with each, and with
// both.
#include "analysis/plotwindow.h"
#include "analysis/signalhub.h"
#include "analysis/signalswindow.h"
#include "frames/tap.h"
#include "processusage.h"

#include <QApplication>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>
#include <QTreeView>

#include <array>

namespace
{
constexpr int kMessages = 40;
constexpr int kSignals = 5; // of each
constexpr int kCurves = 8;
constexpr int kFramesPerMs = 56;
constexpr std::int64_t kNsPerMs = 1'000'000;
constexpr QSize kTall(1000, 6400);

QByteArray database()
{
    QByteArray text;
    for (int message = 0; message < kMessages; ++message) {
        text += "BO_ " + QByteArray::number(message + 1) + " M" + QByteArray::number(message) + ": 8 N\n";
        for (int signal = 0; signal < kSignals; ++signal)
            text += " SG_ S" + QByteArray::number(signal) + " : " + QByteArray::number(signal * 12) +
                    "|12@1+ (0.5,0) [0|0] \"V\" N\n";
    }
    return text;
}

// The bus: every message in turn, its bytes always new.
class Bus
{
public:
    Bus() : thread_([this] { run(); }) {}
    ~Bus()
    {
        stop_ = true;
        thread_.join();
    }

private:
    void run()
    {
        const auto start = std::chrono::steady_clock::now();
        std::array<RawFrame, kFramesPerMs> frames{};
        std::uint64_t number = 0;
        for (std::int64_t ms = 1; !stop_; ++ms) {
            for (RawFrame &frame : frames) {
                frame.time = ms * kNsPerMs;
                frame.channel = 1;
                frame.id = std::uint32_t(number % kMessages) + 1;
                frame.length = 8;
                for (int byte = 0; byte < 8; ++byte)
                    frame.data[byte] = std::uint8_t(number / kMessages * 7 >> byte);
                ++number;
            }
            publishToTap(frames.data(), frames.size());
            std::this_thread::sleep_until(start + std::chrono::milliseconds(ms));
        }
    }

    std::atomic<bool> stop_{false};
    std::thread thread_;
};

double share(int seconds)
{
    QTest::qWait(1000); // up to speed
    const double before = ProcessUsage::now().cpuSeconds;
    QTest::qWait(seconds * 1000);
    return (ProcessUsage::now().cpuSeconds - before) / seconds;
}
} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QTextStream out(stdout);
    const int seconds = argc > 1 ? qMax(1, QString(argv[1]).toInt()) : 10;
    const QTemporaryDir folder;
    QCoreApplication::setOrganizationName(QStringLiteral("Ostrel"));
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.path());
    QFile file(folder.filePath(QStringLiteral("trial.dbc")));
    if (!file.open(QIODevice::WriteOnly) || file.write(database()) < 0)
        return 1;
    file.close();

    SignalHub hub;
    hub.databases()->add(file.fileName(), DatabaseChannels::First);
    SignalsWindow values(&hub, nullptr);
    PlotWindow plot(&hub, 1, nullptr);
    QVector<SignalId> ids;
    for (unsigned i = 0; i < kCurves; ++i)
        ids.append({1, i * 4 + 1, false, QStringLiteral("S1")});
    const Bus bus;
    const auto tell = [&](const char *what) {
        out << what << ": " << QString::number(share(seconds) * 100, 'f', 1) << " % of a core\n";
        out.flush();
    };
    tell("no window");
    values.open();
    values.resize(kTall);
    auto *tree = values.findChild<QTreeView *>(QStringLiteral("signalTree"));
    tree->expandAll();
    tell("signals");
    values.close();
    plot.open();
    plot.addSignals(ids);
    tell("plot");
    values.open();
    values.resize(kTall);
    tell("both");
    int rows = 0;
    for (QModelIndex at = tree->indexAt({1, 1}); at.isValid(); at = tree->indexBelow(at))
        rows += tree->viewport()->rect().intersects(tree->visualRect(at)) && at.parent().parent().isValid();
    out << rows << " signals on the screen, " << hub.store().lost() << " frames lost\n";
    return 0;
}
