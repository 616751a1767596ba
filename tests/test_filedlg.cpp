#include "bracketingtranslator.h"
#include "device/settingsstore.h"
#include "dialogs/filedlg.h"
#include "dialogs/listsenddlg.h"
#include "modalhelper.h"
#include "testfolder.h"

#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QtTest>

class TestFileDlg : public QObject
{
    Q_OBJECT

private:
    // The dialog with its controls at hand.
    struct Controls {
        fileDlg dialog;
        QLineEdit *path = dialog.findChild<QLineEdit *>("lineEdit");
        QPushButton *browse = dialog.findChild<QPushButton *>("pbfile");
        QComboBox *channel = dialog.findChild<QComboBox *>("comboBox");
        QSpinBox *count = dialog.findChild<QSpinBox *>("spinBox");
        QComboBox *mode = dialog.findChild<QComboBox *>("comboBox_2");
        QSpinBox *interval = dialog.findChild<QSpinBox *>("spinBox_2");
        QPushButton *sendButton = dialog.findChild<QPushButton *>("pbSend");
        QPushButton *stopButton = dialog.findChild<QPushButton *>("pbStop");
        QSignalSpy sent{&dialog, &fileDlg::send};
        QSignalSpy stopped{&dialog, &fileDlg::stop};

        bool inputsAre(bool enabled) const
        {
            for (const QWidget *input :
                 {static_cast<QWidget *>(path), static_cast<QWidget *>(browse), static_cast<QWidget *>(channel),
                  static_cast<QWidget *>(count), static_cast<QWidget *>(mode), static_cast<QWidget *>(sendButton)})
                if (input->isEnabled() != enabled)
                    return false;
            return stopButton->isEnabled() != enabled;
        }
    };

    std::unique_ptr<TestFolder> folder_;

private slots:
    void init() { folder_ = std::make_unique<TestFolder>(); }

    void freshStore()
    {
        const Controls c;
        QCOMPARE(c.path->text(), QString());
        QCOMPARE(c.channel->currentText(), QString("ch1"));
        QCOMPARE(c.count->value(), 1);
        QCOMPARE(c.mode->currentIndex(), 0);
        QCOMPARE(c.interval->value(), 0);
        QVERIFY(c.inputsAre(true));
        QVERIFY(c.interval->isEnabled());
    }

    void choicesAreStoredSentAndRestored()
    {
        {
            Controls c;
            c.path->setText("/data/车 1.csv");
            c.channel->setCurrentIndex(2);
            c.count->setValue(-1);
            c.interval->setValue(250);
            c.sendButton->click();
            QCOMPARE(c.sent.takeFirst(), QVariantList({"/data/车 1.csv", -1, 250, 2}));
            QVERIFY(c.inputsAre(false));
            QVERIFY(!c.interval->isEnabled());

            c.dialog.setIdle();
            QVERIFY(c.inputsAre(true));
            QVERIFY(c.interval->isEnabled());
            QVERIFY(c.stopped.isEmpty());

            c.mode->setCurrentIndex(1);
            QVERIFY(!c.interval->isEnabled());
            c.sendButton->click();
            QCOMPARE(c.sent.takeFirst(), QVariantList({"/data/车 1.csv", -1, -1, 2}));
            c.stopButton->click();
            QCOMPARE(c.stopped.count(), 1);
            QVERIFY(c.inputsAre(true));
            QVERIFY(!c.interval->isEnabled());
        }
        QCOMPARE(QString::fromUtf8(folder_->read("config/setdb.txt")),
                 QString("sendFile,/data/车 1.csv;sendFileCH,2;sendFileCnt,-1;sendFileJG,1;sendFileJGT,250"));
        settings::load(folder_->settingsPath());
        const Controls again;
        QCOMPARE(again.path->text(), QString("/data/车 1.csv"));
        QCOMPARE(again.channel->currentIndex(), 2);
        QCOMPARE(again.count->value(), -1);
        QCOMPARE(again.mode->currentIndex(), 1);
        QCOMPARE(again.interval->value(), 250);
        QVERIFY(!again.interval->isEnabled());
    }

    void aPathThatTheFileCannotHoldIsOnlySent_data()
    {
        QTest::addColumn<QString>("path");
        for (const char *path : {"/a,b.csv", "/a;b.csv", "/a\nb.csv"})
            QTest::newRow(path) << QString(path);
    }
    void aPathThatTheFileCannotHoldIsOnlySent()
    {
        QFETCH(QString, path);
        settings::setValue("sendFile", "/kept.csv", false);
        Controls c;
        c.path->setText(path); // a line edit makes blanks of line ends
        const QString shown = c.path->text();
        c.sendButton->click();
        QCOMPARE(c.sent.takeFirst().first().toString(), shown);
        QCOMPARE(settings::value("sendFile", {}), path == shown ? QString("/kept.csv") : shown);
        settings::load(folder_->settingsPath());
        QCOMPARE(settings::value("sendFileJGT", "lost"), QString("0"));
    }

    void absurdSettings()
    {
        folder_->write("config/setdb.txt", "sendFileCH,7;sendFileCnt,x;sendFileJG,-2;sendFileJGT,99999999999");
        settings::load(folder_->settingsPath());
        const Controls c;
        QCOMPARE(c.channel->currentIndex(), 0);
        QCOMPARE(c.mode->currentIndex(), 0);
        QVERIFY(c.interval->isEnabled());
        QCOMPARE(c.count->value(), 0);
        QCOMPARE(c.interval->value(), 0);
    }

    void browsing()
    {
        folder_->write("frames.csv", "header\n");
        Controls c;
        ModalAnswer answer;
        QString caption;
        QStringList filters;
        answer.on<QFileDialog>([&](QFileDialog *dialog) {
            caption = dialog->windowTitle();
            filters = dialog->nameFilters();
            dialog->selectFile(folder_->path("frames.csv"));
            static_cast<QDialog *>(dialog)->accept();
        });
        c.browse->click();
        QCOMPARE(caption, QString("打开CSV文件"));
        QCOMPARE(filters, QStringList("CSV Files (*.csv)"));
        QCOMPARE(c.path->text(), folder_->path("frames.csv"));
        answer.on<QFileDialog>([](QFileDialog *dialog) { dialog->reject(); });
        c.browse->click();
        QCOMPARE(c.path->text(), QString());
        QVERIFY(answer.unexpected().isEmpty());
    }

    void aLanguageSwitchKeepsChoicesAndState()
    {
        Controls c;
        c.path->setText("/x.csv");
        c.channel->setCurrentIndex(2);
        c.mode->setCurrentIndex(0);
        c.count->setValue(5);
        c.sendButton->click();
        const BracketingTranslator translator;
        QCoreApplication::processEvents();
        QCOMPARE(c.dialog.windowTitle(), QString("[发送文件]"));
        QCOMPARE(c.channel->currentText(), QString("[随文件]"));
        QCOMPARE(c.channel->itemText(0), QString("ch1"));
        QCOMPARE(c.count->value(), 5);
        QCOMPARE(c.path->text(), QString("/x.csv"));
        QVERIFY(c.inputsAre(false));
        QVERIFY(!c.interval->isEnabled());
        QCOMPARE(c.sent.count(), 1);
    }

    void theListWindowOnlyCloses()
    {
        listSendDlg window;
        QCOMPARE(window.windowTitle(), QString("列表发送"));
        window.show();
        window.findChild<QPushButton *>("pbnClose")->click();
        QVERIFY(!window.isVisible());
    }
};

QTEST_MAIN(TestFileDlg)
#include "test_filedlg.moc"
