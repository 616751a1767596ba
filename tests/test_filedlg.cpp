#include "device/settingsstore.h"
#include "dialogs/filedlg.h"
#include "modalhelper.h"
#include "testfolder.h"

#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QtTest>

#ifdef Q_OS_LINUX
#include <sys/inotify.h>
#include <unistd.h>
#endif

class TestFileDlg : public QObject
{
    Q_OBJECT

private:
    // The dialog with its controls at hand.
    struct Controls {
        fileDlg dialog;
        QLineEdit *path = dialog.findChild<QLineEdit *>("lineEdit");
        QComboBox *channel = dialog.findChild<QComboBox *>("comboBox");
        QSpinBox *count = dialog.findChild<QSpinBox *>("spinBox");
        QComboBox *mode = dialog.findChild<QComboBox *>("comboBox_2");
        QSpinBox *interval = dialog.findChild<QSpinBox *>("spinBox_2");
        QSignalSpy sent{&dialog, &fileDlg::send};
        QSignalSpy stopped{&dialog, &fileDlg::stop};

        void press(const char *button) { pressButton(&dialog, button); }
        // Whether all inputs but the interval are usable and the stop button is not, or the other way round.
        bool inputsAre(bool usable) const
        {
            for (const char *input : {"lineEdit", "pbfile", "comboBox", "spinBox", "comboBox_2", "pbSend"})
                if (dialog.findChild<QWidget *>(input)->isEnabled() != usable)
                    return false;
            return dialog.findChild<QWidget *>("pbStop")->isEnabled() != usable;
        }
        // As a file stores them, and whether the interval can be entered.
        QString values() const
        {
            return QString("%1 %2 %3 %4")
                       .arg(channel->currentIndex())
                       .arg(count->value())
                       .arg(mode->currentIndex())
                       .arg(interval->value()) +
                   (interval->isEnabled() ? " ms" : " off");
        }
    };

    std::unique_ptr<TestFolder> folder_;

private slots:
    void init() { folder_ = std::make_unique<TestFolder>(); }

    void choicesAreStoredSentAndRestored()
    {
        Controls c;
        c.dialog.show();
        QCOMPARE(c.values(), QString("0 1 0 0 ms"));
        c.path->setText("/data/车 1.csv");
        c.channel->setCurrentIndex(2);
        c.count->setValue(-1);
        c.interval->setValue(250);
        c.press("pbSend");
        QCOMPARE(c.sent.takeFirst(), QVariantList({"/data/车 1.csv", -1, 250, 2}));
        QVERIFY(c.inputsAre(false) && !c.interval->isEnabled());
        c.dialog.setIdle();
        QVERIFY(c.inputsAre(true));
        QVERIFY(c.stopped.isEmpty());

        c.mode->setCurrentIndex(1);
        QCOMPARE(c.values(), QString("2 -1 1 250 off"));
        c.dialog.findChild<QWidget *>("pbSend")->setFocus();
        c.press("pbSend");
        QCOMPARE(c.sent.takeFirst(), QVariantList({"/data/车 1.csv", -1, -1, 2}));
        QCOMPARE(c.dialog.focusWidget()->objectName(), QString("pbStop"));
        bool idleFirst = false;
        connect(&c.dialog, &fileDlg::stop, this, [&] { idleFirst = c.inputsAre(true); });
        c.press("pbStop");
        QCOMPARE(c.stopped.count(), 1);
        QVERIFY(idleFirst);
        QCOMPARE(c.dialog.focusWidget()->objectName(), QString("pbSend"));
        QCOMPARE(QString::fromUtf8(folder_->read("config/setdb.txt")),
                 QString("sendFile,/data/车 1.csv;sendFileCH,2;sendFileCnt,-1;sendFileJG,1;sendFileJGT,250"));
        settings::load(folder_->settingsPath());
        const Controls again;
        QCOMPARE(again.path->text(), QString("/data/车 1.csv"));
        QCOMPARE(again.values(), QString("2 -1 1 250 off"));
    }

#ifdef Q_OS_LINUX
    void aSendWritesTheFileOnce()
    {
        folder_->useSettings("sendFile,"); // is there: each writing makes a file beside it
        const int watch = inotify_init1(IN_NONBLOCK);
        QVERIFY(inotify_add_watch(watch, QFile::encodeName(folder_->path("config")).constData(), IN_CREATE) >= 0);
        Controls().press("pbSend");
        alignas(inotify_event) char events[1000];
        const auto size = int(read(watch, events, sizeof events));
        close(watch);
        QCOMPARE(QByteArray(events, qMax(0, size)).count("setdb.txt"), 1);
    }
#endif

    void aPathThatTheFileCannotHoldIsOnlySent()
    {
        for (const char *path : {"/a,b.csv", "/a;b.csv"}) {
            settings::setValue("sendFile", "/kept.csv", false);
            Controls c;
            c.path->setText(path);
            c.press("pbSend");
            QCOMPARE(c.sent.takeFirst().first().toString(), QString(path));
            settings::load(folder_->settingsPath());
            QCOMPARE(settings::value("sendFile", "lost"), QString("/kept.csv"));
        }
    }

    void absurdSettings()
    {
        folder_->useSettings("sendFileCH,7;sendFileCnt,x;sendFileJG,-2;sendFileJGT,99999999999");
        QCOMPARE(Controls().values(), QString("0 1 0 0 ms"));
        for (const char *count : {"0", "-2", "", "1000000000", "99999999999"}) {
            folder_->useSettings(QByteArray("sendFileCnt,") + count);
            QCOMPARE(Controls().count->value(), 1);
        }
    }

    void noneIsNoCount()
    {
        Controls c;
        c.dialog.show();
        c.count->setFocus();
        for (const int expected : {-1, 1, -1}) {
            QTest::keyClick(c.count, expected < 0 ? Qt::Key_Down : Qt::Key_Up);
            QCOMPARE(c.count->value(), expected);
        }
        c.count->setValue(5);
        c.count->selectAll();
        QTest::keyClicks(c.count, "0\t");
        QCOMPARE(c.count->value(), 5);
    }

    void browsing()
    {
        folder_->write("frames.csv", "header\n");
        Controls c;
        ModalAnswer answer;
        for (bool accepted : {true, false}) {
            answer.on<QFileDialog>([&](QFileDialog *dialog) {
                QCOMPARE(dialog->windowTitle(), QString("打开CSV文件"));
                QCOMPARE(dialog->nameFilters(), QStringList("CSV Files (*.csv)"));
                dialog->selectFile(folder_->path("frames.csv"));
                static_cast<QDialog *>(dialog)->done(accepted ? QDialog::Accepted : QDialog::Rejected);
            });
            c.press("pbfile");
            QCOMPARE(c.path->text(), accepted ? folder_->path("frames.csv") : QString());
        }
        QVERIFY(answer.unexpected().isEmpty());
    }
};

QTEST_MAIN(TestFileDlg)
#include "test_filedlg.moc"
