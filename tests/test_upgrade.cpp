#include "device/devicelayer.h"
#include "device/devicetexts.h"
#include "device/dialogs/opendlg.h"
#include "device/language.h"
#include "fakedriver.h"
#include "modalhelper.h"
#include "testfolder.h"
#include "upgrade/firmwareimage.h"
#include "upgrade/updatedlg.h"
#include "upgrade/upgradeaction.h"

#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QTimer>
#include <QtTest>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#endif

namespace
{

const QStringList kFailure{
    "错误|固件升级失败，请重新插拔设备并重启软件！", "錯誤|固件升級失敗，請重新插拔設備並重啓軟件！",
    "error|Firmware upgrade failed, please reinsert or unplug the device and restart the software!"};
const QStringList kSuccess{
    "提示|固件升级成功，请重新插拔设备并重启软件！", "提示|固件升級成功，請重新插拔設備並重啓軟件！",
    "tip|Firmware upgrade successfully, please reinsert or unplug the device and restart the software!"};
const QString kBootDrive = "CRP DISABLD";
const QByteArray kOldImage = "a much longer old image";

constexpr int kRunsOn = 1; // of run(): the scenario has not ended the program

// Runs the scenario inside the program's event loop, as a click would; the program's exit code.
int run(const std::function<void()> &scenario)
{
    QTimer runsOn;
    QObject::connect(&runsOn, &QTimer::timeout, qApp, [] { QCoreApplication::exit(kRunsOn); });
    QTimer::singleShot(0, qApp, [&] {
        scenario();
        runsOn.start(0);
    });
    return QCoreApplication::exec();
}

} // namespace

class TestUpgrade : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestFolder> folder_;
    QByteArray image_;
    FakeDriver *fake_ = nullptr;
    std::unique_ptr<ModalAnswer> answers_;

    QString image() const { return folder_->path("firmware/x-V2.20-y.bin"); }
    // A folder that stands for a drive with firmware on it.
    QString makeDrive(const QString &name) const
    {
        QDir(folder_->path(".")).mkpath(name);
        folder_->write(name + "/firmware.bin", kOldImage);
        return folder_->path(name);
    }
    QByteArray firmwareOn(const QString &drive) const { return folder_->read(drive + "/firmware.bin"); }
    void press(const char *button)
    {
        answers_->on<UpdateDlg>([button](UpdateDlg *dialog) { pressButton(dialog, button); });
    }
    // Runs a dialog; what answers it is given before.
    int upgrade(const VolumeLister &volumes)
    {
        return run([&] {
            UpdateDlg dialog("V2.10", image());
            dialog.setVolumeLister(volumes);
            dialog.setPollInterval(1);
            dialog.setDeviceIndex(2);
            dialog.exec();
        });
    }

private slots:
    void init()
    {
        folder_ = std::make_unique<TestFolder>();
        image_ = "new image\r\n";
        for (int byte = 0; byte < 256; ++byte)
            image_.append(char(byte));
        image_ = image_.repeated(300);
        folder_->write("firmware/x-V2.20-y.bin", image_);
        fake_ = FakeDriver::install();
        answers_ = std::make_unique<ModalAnswer>();
    }
    void cleanup()
    {
        QCOMPARE(answers_->unexpected(), QStringList());
        QCOMPARE(answers_->stepsLeft(), 0);
        closeDevice();
        folder_.reset();
    }

    void theBestImage()
    {
        const auto best = [](const QStringList &names) {
            const FirmwareImage found = bestFirmwareImage(names);
            return found.fileName + QString(" %1").arg(found.version, 0, 16);
        };
        const QString none = "firmware.bin 211";
        QCOMPARE(best({}), none);
        QCOMPARE(best({"x-V2.11-y.bin", "x-V1.FF-y.bin"}), none); // not above the floor
        QCOMPARE(best({"x-V2.20-y.bin", "x-v2.3a-y.bin", "x-V2.2F-y.bin"}), QString("x-v2.3a-y.bin 23a"));
        // The first of equals.
        QCOMPARE(best({"a-V3.0-y.bin", "b-V30-y.bin", "c-V300-y.bin", "d-V3.00-y.bin"}), QString("c-V300-y.bin 300"));
        QCOMPARE(best({"-Vv9..9V9.-.bin"}), QString("-Vv9..9V9.-.bin 999"));
        QCOMPARE(best({"x-2.20-y.bin", "x-V2.20.bin", "x-V2.20-y-z.bin", "x-V-y.bin", "x-V2,20-y.bin", "x-V0x999-y.bin",
                       "x-V 999-y.bin", "x-V+999-y.bin", "x-V12345-y.bin", "x-VG99-y.bin", "--.bin", ".bin"}),
                 none);

        folder_->write("firmware/x-V9.00-y.txt", "");
        QVERIFY(QDir(firmwareFolder()).mkdir("x-V8.00-y.bin"));
        QCOMPARE(bestFirmwareImage().fileName, QString("x-V2.20-y.bin"));
    }

    void theImageReachesTheNewDriveOnly()
    {
        const QStringList questions{"固件版本(V2.10)过低，是否升级固件？", "固件版本(V2.10)過低，是否升級固件？",
                                    "The firmware version(V2.10)is too low，Do you want to upgrade the firmware?"};
        const QStringList warnings{
            "警告：升级固件中，请勿关闭此界面及拔出设备。", "警告：升級固件中，請勿關閉此界面及拔除設備。",
            "Warning: Do not close this interface or unplug the device during firmware upgrade."};
        for (int code = 0; code < int(LanguageCount); ++code) {
            setLanguageCode(unsigned(code));
            const QString before = makeDrive("before");
            const QString other = makeDrive("other");
            const QString appeared = makeDrive("appeared");
            int asked = 0;
            bool filled = false;
            const auto volumes = [&] {
                QList<MountedVolume> list{{other, "DISABLD"}, {before, kBootDrive}};
                if (++asked > 3)
                    list.append({code == 0 ? appeared + "/" : appeared, "my " + kBootDrive + " 2"});
                return list;
            };
            answers_->on<UpdateDlg>([&](UpdateDlg *dialog) {
                const auto *label = dialog->findChild<QLabel *>("label");
                QCOMPARE(label->text(), questions.at(code));
                const auto *bar = dialog->findChild<QProgressBar *>();
                connect(bar, &QProgressBar::valueChanged, dialog, [&filled, bar, this](int value) {
                    filled = value == bar->maximum() && firmwareOn("appeared") == image_;
                });
                pressButton(dialog, "pushButton");
                QVERIFY(bar->minimum() < bar->maximum() && bar->value() == bar->minimum()); // empty
                QCOMPARE(label->text(), warnings.at(code));
                for (const char *button : {"pushButton", "pushButton_2"})
                    QVERIFY(!dialog->findChild<QWidget *>(button)->isEnabled());
                dialog->reject();
                dialog->close();
                QTest::keyClick(dialog, Qt::Key_Escape);
                QVERIFY(dialog->isVisible());
            });
            QCOMPARE(upgrade(volumes), 0);
            QCOMPARE(answers_->takeMessages(), QStringList{kSuccess.at(code)});
            QCOMPARE(answers_->icons().last(), int(QMessageBox::Information));
            QCOMPARE(asked, 4);
            QVERIFY(filled);
            QCOMPARE(firmwareOn("before") + firmwareOn("other"), kOldImage + kOldImage);
            QCOMPARE(firmwareOn("appeared"), image_);
        }
        QCOMPARE(fake_->calls().mid(0, 3),
                 QStringList({"OpenDevice(41,2,0)", "GetPropertyInterface(7)", "UpdateDevice(7)"}));
    }

    void failures()
    {
        struct Case {
            const char *failing;
            QByteArray image; // null: no image at all
            int restarts;
            int asked; // how often the volumes are listed
        };
        const Case cases[] = {{"UpdateDevice", "i", 1, 1}, {"", QByteArray(), 0, 1}, {"", "", 0, 1}, {"", "i", 1, 16}};
        int code = 0;
        for (const Case &given : cases) {
            folder_->write("firmware/x-V2.20-y.bin", given.image);
            QVERIFY(!given.image.isNull() || QFile::remove(image()));
            fake_->failing = QStringList{given.failing};
            fake_->takeCalls();
            code = (code + 1) % int(LanguageCount);
            setLanguageCode(unsigned(code));
            const QTemporaryDir before;
            int asked = 0;
            press("pushButton");
            QCOMPARE(upgrade([&] {
                         ++asked;
                         return QList<MountedVolume>{{before.path(), kBootDrive}, {"/", "system"}};
                     }),
                     0);
            QCOMPARE(answers_->takeMessages(), QStringList{kFailure.at(code)});
            QCOMPARE(answers_->icons().last(), int(QMessageBox::Critical));
            QCOMPARE(fake_->calls().count("UpdateDevice(7)"), given.restarts);
            QCOMPARE(asked, given.asked);
            QVERIFY(QDir(before.path()).isEmpty());
        }
    }

    void aDriveThatCannotBeWrittenIsTriedAgain()
    {
        QVERIFY(QDir(folder_->path("blocked")).mkpath("firmware.bin/x")); // a folder that is not empty
        // What is there each time the volumes are listed.
        QList<QList<MountedVolume>> drives{{},
                                           {{folder_->path("vanished"), kBootDrive}},
                                           {{folder_->path("blocked"), kBootDrive}},
                                           {{makeDrive("good"), kBootDrive}}};
        press("pushButton");
        QCOMPARE(upgrade([&] { return drives.takeFirst(); }), 0);
        QCOMPARE(answers_->takeMessages(), QStringList{kSuccess.first()});
        QVERIFY(drives.isEmpty());
        QCOMPARE(firmwareOn("good"), image_);
        QVERIFY(QDir(folder_->path("blocked/firmware.bin/x")).exists());
    }

#ifdef Q_OS_UNIX
    void aFullDriveKeepsNoHalfImage()
    {
        const QString drive = makeDrive("full");
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit usual{};
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &usual), 0);
        rlimit small = usual;
        small.rlim_cur = 1000;
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
        const bool written = writeFirmware(QByteArray(100000, 'x'), drive);
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &usual), 0);
        QVERIFY(!written);
        QVERIFY(QDir(drive).isEmpty());
    }
#endif

    // The upgrade ends the program through the dialogs it was reached by.
    void theProgramEndsFromWithinTheOpenDialog()
    {
        fake_->info.firmwareVersion = 0x210;
        fake_->failing = QStringList{"UpdateDevice"};
        answers_->on<OpenDlg>([](OpenDlg *dialog) { pressButton(dialog, "pushButton"); });
        press("pushButton");
        QCOMPARE(run([] { OpenDlg(0).exec(); }), 0);
        QCOMPARE(answers_->messages(), QStringList{kFailure.first()});
    }

    void fromTheMenu()
    {
        const QStringList newest{"提示|固件版本(V2.20)已是最新，无需升级。", "提示|固件版本(V2.20)已是最新，無需升級。",
                                 "tip|The firmware version (V2.20) is up to date."};
        for (int code = 0; code < int(LanguageCount); ++code) {
            setLanguageCode(unsigned(code));
            upgradeFirmware(0, nullptr);
            QVERIFY(openDevice(kDeviceType, 0, 0));
            fake_->status = 0; // counts as older than any image
            press("pushButton_2");
            upgradeFirmware(0, nullptr);
            fake_->status = kStatusPresent;
            fake_->info.firmwareVersion = 0x220;
            upgradeFirmware(0, nullptr);
            QCOMPARE(answers_->takeMessages(),
                     QStringList({warningTitle() + "|" + deviceNotOpenText(), newest.at(code)}));
            closeDevice();
        }
        QVERIFY(openDevice(kDeviceType, 0, 0));
        fake_->info.firmwareVersion = 0x21F;
        press("pushButton_2"); // declines
        QCOMPARE(run([] { upgradeFirmware(0, nullptr); }), kRunsOn);
        QCOMPARE(answers_->messages(), QStringList());
        QVERIFY(!fake_->calls().contains("UpdateDevice(7)"));
    }
};

QTEST_MAIN(TestUpgrade)
#include "test_upgrade.moc"
