// A short tour of the real window on whatever display there is, driven as a user would: open the adapter, receive,
// send, capture, and a picture in every language. Ends with 1, and says why, when a step fails.
#include "app/mainwindow.h"
#include "device/devicelayer.h"
#include "device/driver/driverfactory.h"
#include "testfolder.h"
#include "windowdriver.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLineEdit>
#include <QTest>
#include <QTextStream>

namespace
{
constexpr QSize kWindowSize(1366, 768);
constexpr int kTrafficMs = 5000;
constexpr int kPatienceMs = 10000;
constexpr int kBurst = 50;
constexpr int kSettleMs = 300;

void say(const QString &line)
{
    QTextStream(stdout) << line << '\n';
}

// The off-screen display has no frames and no user's session: what the toolkit says about that concerns nobody here.
void sayMessage(QtMsgType, const QMessageLogContext &, const QString &message)
{
    if (!message.contains("propagateSizeHints") && !message.contains("XDG_RUNTIME_DIR"))
        QTextStream(stderr) << message << '\n';
}

class Tour
{
public:
    Tour(MainWindow &window, const QDir &folder) : window_(window), user_(window), folder_(folder) {}

    bool run()
    {
        const QString capture = folder_.absoluteFilePath("capture.csv");
        QFile::remove(capture);
        QTest::qWait(kSettleMs);
        user_.startCapture(capture);
        if (!check(user_.openEverything(), "open the adapter and both channels"))
            return false;
        QTest::qWait(kTrafficMs);
        if (!check(user_.number("ch1RecvCount") > 0 && user_.number("ch2RecvCount") > 0, "receive on both channels") ||
            !check(user_.rows() > 0, "show the frames"))
            return false;
        say(QString("received: %1 and %2 frames").arg(user_.number("ch1RecvCount")).arg(user_.number("ch2RecvCount")));
        if (!sendBurst() || !takePictures())
            return false;
        user_.closeDevice();
        user_.stopCapture();
        return check(!isDeviceOpen(), "close the adapter") &&
               check(user_.modal().messages().isEmpty(),
                     "work without a warning " + user_.modal().messages().join(' ')) &&
               checkCapture(capture);
    }

private:
    bool check(bool done, const QString &step)
    {
        say((done ? "done: " : "FAILED: ") + step);
        return done;
    }

    bool sendBurst()
    {
        user_.find<QLineEdit>("ch1SendCountEdit")->setText(QString::number(kBurst));
        user_.find<QLineEdit>("ch1SendIDEdit")->setText("123");
        user_.click("ch1SendBtn");
        QElapsedTimer timer;
        timer.start();
        while (user_.number("ch1SendCount") < kBurst && timer.elapsed() < kPatienceMs)
            QTest::qWait(kSettleMs);
        return check(user_.number("ch1SendCount") == kBurst, QString("send a burst of %1 frames").arg(kBurst));
    }

    bool takePictures()
    {
        const struct {
            const char *action;
            const char *file;
        } languages[] = {{"actionTraditionalChinese", "window-traditional.png"},
                         {"actionEnglish", "window-english.png"},
                         {"actionSimplifiedChinese", "window-simplified.png"}};
        for (const auto &language : languages) {
            user_.trigger(language.action);
            QTest::qWait(kSettleMs);
            const QString path = folder_.absoluteFilePath(language.file);
            if (!check(window_.grab().save(path), "take a picture: " + path))
                return false;
        }
        return true;
    }

    // Every frame counted stands in the file: the capture began before the channels were opened.
    bool checkCapture(const QString &path)
    {
        QFile file(path);
        qint64 rows = -1; // the header is none
        if (file.open(QIODevice::ReadOnly))
            rows += file.readAll().count('\n');
        qint64 counted = 0;
        for (unsigned channel = 0; channel < kChannelCount; ++channel)
            counted +=
                static_cast<qint64>(user_.number(kReceivedLabels[channel]) + user_.number(kTransmittedLabels[channel]));
        return check(rows > 0 && rows == counted,
                     QString("capture: %1 rows of %2 frames counted, in %3").arg(rows).arg(counted).arg(path));
    }

    MainWindow &window_;
    WindowDriver user_;
    const QDir folder_;
};
} // namespace

int main(int argc, char *argv[])
{
    qInstallMessageHandler(sayMessage);
    QApplication application(argc, argv);
    QApplication::setApplicationName("Ostrel");
    const QDir folder(argc > 1 ? QFile::decodeName(argv[1]) : QStringLiteral("."));
    if (!folder.mkpath(".")) {
        say("FAILED: make the folder " + folder.absolutePath());
        return 1;
    }
    setDriver(makeDriver(qgetenv("OSTREL_DRIVER").toStdString()));
    bool done = false;
    {
        const TestFolder settings; // the user's own stay as they are
        settings.copyCatalogues();
        MainWindow window;
        window.resize(kWindowSize); // whatever the off-screen display's is
        window.show();
        done = Tour(window, folder).run();
    }
    setDriver(nullptr);
    say(done ? "The tour is complete." : "The tour FAILED.");
    return done ? 0 : 1;
}
