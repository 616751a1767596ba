// ostrel_pictures FOLDER: pictures of the window with traffic and of every dialog, in English and Simplified Chinese,
// on the simulated adapter. Ends with 1, and says why, when something does not work.
#include "analysis/recordingwindow.h"
#include "analysis/statisticswindow.h"
#include "analysis/supervision.h"
#include "app/languageswitcher.h"
#include "app/mainwindow.h"
#include "device/devicelayer.h"
#include "device/driver/driverfactory.h"
#include "device/language.h"
#include "everydialog.h"
#include "testfolder.h"
#include "windowdriver.h"

#include <QApplication>
#include <QDir>
#include <QLineEdit>
#include <QSettings>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>

namespace
{
constexpr QSize kWindowSize(1280, 720);
constexpr QSize kStatisticsSize(1120, 760);
constexpr QSize kRecordingSize(1180, 640);
constexpr int kTrafficMs = 2500;
constexpr int kSelectedRow = 2;
constexpr int kBestCompression = 0; // QImage's "quality" of a PNG

struct PictureLanguage {
    Language code;
    const char *action;
    const char *suffix;
};
constexpr PictureLanguage kLanguages[] = {{English, "actionEnglish", "en"},
                                          {SimplifiedChinese, "actionSimplifiedChinese", "zh-CN"}};

bool fail(const QString &what)
{
    QTextStream(stderr) << "ostrel_pictures: " << what << '\n';
    return false;
}

bool take(QWidget &widget, const QDir &folder, const QByteArray &name, const char *suffix)
{
    const QString path = folder.filePath(QString("%1.%2.png").arg(QString::fromLatin1(name), suffix));
    const QImage picture = widget.grab().toImage().convertToFormat(QImage::Format_RGB888); // no alpha
    return picture.save(path, "PNG", kBestCompression) || fail("cannot write " + path);
}

bool takeWindow(const QDir &folder, const PictureLanguage &language)
{
    MainWindow window;
    WindowDriver user(window);
    window.resize(kWindowSize);
    window.show();
    user.trigger(language.action);
    QTest::qWait(100); // the fields of the send panels come a moment after the window
    if (!user.openEverything())
        return fail("cannot open the simulated adapter");
    user.trigger("actionStatistics");
    auto *statistics = window.findChild<StatisticsWindow *>();
    statistics->resize(kStatisticsSize);
    user.find<QLineEdit>("ch1SendCountEdit")->setText("20");
    user.click("ch1SendBtn");
    QTest::qWait(kTrafficMs / 2);
    statistics->supervision().learn();
    statistics->findChild<QTableView *>("identifierTable")->selectRow(kSelectedRow);
    QTest::qWait(kTrafficMs / 2);
    const bool done = take(window, folder, "main-window", language.suffix) &&
                      take(*statistics, folder, "statistics", language.suffix);
    user.closeDevice();
    return done;
}

// A recording as the window shows it, filtered.
bool takeRecording(const QDir &folder, const PictureLanguage &language)
{
    LanguageSwitcher switcher;
    const QTemporaryDir place;
    const QString path = place.filePath("drive.log");
    QFile file(path);
    if (!switcher.switchTo(language.code) || !file.open(QIODevice::WriteOnly))
        return fail("cannot make a recording");
    constexpr int rows = 200000;
    for (int i = 0; i < rows; ++i)
        file.write(QString::asprintf("(1700000000.%06d) can%d %03X#%02X%04X7F%02X\n", i * 5, i % 2, 0x100 + i * 7 % 48,
                                     i % 256, i * 11 % 65536, i % 251)
                       .toLatin1());
    file.close();
    QString error;
    const std::unique_ptr<RecordingWindow> window(RecordingWindow::openFile(path, nullptr, &error));
    if (!window)
        return fail(error);
    window->resize(kRecordingSize);
    auto *filter = window->findChild<QLineEdit *>("recordingFilter");
    filter->setText("id 107..10F and data ?? ?? ?? 7F");
    QTest::keyClick(filter, Qt::Key_Return);
    QTest::qWait(kTrafficMs);
    return take(*window, folder, "recording", language.suffix);
}

bool takeDialogs(const QDir &folder, const PictureLanguage &language)
{
    LanguageSwitcher switcher;
    if (!switcher.switchTo(language.code) || !openDevice(kDeviceType, 0, 0))
        return fail("cannot start");
    refreshDeviceInfo();
    bool done = true;
    for (const WindowMaker &maker : everyWindow()) {
        if (maker.name == "main-window" || maker.name == "statistics" || maker.name == "recording" ||
            maker.name == "comparison" || maker.name.startsWith("value-entry-"))
            continue; // taken with traffic, or in no manual; one entry stands for all
        const std::unique_ptr<QWidget> dialog = maker.make();
        dialog->show();
        for (int round = 0; round < 3; ++round)
            QCoreApplication::sendPostedEvents(); // no timers: a running upgrade must not go on
        done = take(*dialog, folder, maker.name, language.suffix) && done;
    }
    closeDevice();
    return done;
}
} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QApplication::setApplicationName("Ostrel");
    const QDir folder(argc > 1 ? QFile::decodeName(argv[1]) : QStringLiteral("."));
    if (!folder.mkpath("."))
        return fail("cannot make " + folder.absolutePath()) ? 0 : 1;
    const QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    const TestFolder runtime;
    runtime.copyCatalogues();
    setDriver(makeDriver("simulated"));
    bool done = true;
    // The dialogs first: the database that is opened there names the statistics' messages.
    for (const PictureLanguage &language : kLanguages)
        done = done && takeDialogs(folder, language) && takeRecording(folder, language) && takeWindow(folder, language);
    setDriver(nullptr);
    return done ? 0 : 1;
}
