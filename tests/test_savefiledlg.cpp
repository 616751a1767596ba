#include "device/settingsstore.h"
#include "dialogs/savefiledlg.h"
#include "modalhelper.h"
#include "testfolder.h"

#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

class TestSavefileDlg : public QObject
{
    Q_OBJECT

private:
    const TestFolder folder_;
    std::unique_ptr<ModalAnswer> answers_;
    std::unique_ptr<savefileDlg> dialog_;

    QLineEdit *pathEdit() { return dialog_->findChild<QLineEdit *>("pathEdit"); }
    QLabel *hint() { return dialog_->findChild<QLabel *>("hintLabel"); }
    // The next file dialog is told this name; an empty one cancels it.
    void answer(const QString &name)
    {
        answers_->on<QFileDialog>([name](QFileDialog *chooser) {
            chooser->setOption(QFileDialog::DontConfirmOverwrite);
            if (!name.isEmpty())
                chooser->findChild<QLineEdit *>("fileNameEdit")->setText(name);
            QTest::keyClick(chooser, name.isEmpty() ? Qt::Key_Escape : Qt::Key_Return);
            QCOMPARE(chooser->windowTitle(), QString("保存CSV文件"));
            QCOMPARE(chooser->nameFilters(), QStringList("CSV Files (*.csv)"));
            QCOMPARE(chooser->acceptMode(), QFileDialog::AcceptSave);
        });
    }
    void browse(const QString &name)
    {
        answer(name);
        pressButton(dialog_.get(), "browseBtn");
    }

private slots:
    void init()
    {
        answers_ = std::make_unique<ModalAnswer>();
        dialog_ = std::make_unique<savefileDlg>();
        dialog_->show();
    }
    void cleanup()
    {
        QCOMPARE(answers_->unexpected(), QStringList());
        QCOMPARE(answers_->stepsLeft(), 0);
    }

    void browsingEmptiesTheFileAtOnce()
    {
        folder_.write("chosen.csv", "old");
        browse(folder_.path("chosen.csv"));
        QCOMPARE(pathEdit()->text(), folder_.path("chosen.csv"));
        QVERIFY(hint()->isHidden());
        QCOMPARE(dialog_->focusWidget()->objectName(), QString("okBtn"));
        pressButton(dialog_.get(), "cancelBtn");
        QVERIFY(!dialog_->isVisible());
        QVERIFY(dialog_->path().isEmpty());
        QVERIFY(QFile::exists(folder_.path("chosen.csv")));
        QCOMPARE(folder_.read("chosen.csv"), QByteArray());
    }

    void aNameGetsItsExtensionAndTheFolderIsKept()
    {
        QVERIFY(QDir(folder_.path(".")).mkdir("run 1.2"));
        browse(folder_.path("b"));
        QCOMPARE(pathEdit()->text(), folder_.path("b.csv"));
        const QByteArray kept = "captureFolder," + QFile::encodeName(folder_.path("b").chopped(2));
        QCOMPARE(folder_.read("config/setdb.txt"), kept);
        folder_.useSettings(kept + "/help"); // as the next start does
        browse("c.txt");
        QCOMPARE(pathEdit()->text(), folder_.path("help/c.txt"));
        answer(folder_.path("run 1.2/d"));
        browse("d.csv"); // asked a second time
        QCOMPARE(pathEdit()->text(), folder_.path("run 1.2/d.csv"));
        const QByteArray last = folder_.read("config/setdb.txt");
        answer(folder_.path("run 1.2/e"));
        browse(QString()); // the second question is cancelled
        QCOMPARE(pathEdit()->text(), folder_.path("run 1.2/d.csv"));
        QVERIFY(QDir(folder_.path(".")).mkdir("1,2"));
        browse(folder_.path("1,2/f.csv")); // a folder that the settings cannot hold
        QCOMPARE(folder_.read("config/setdb.txt"), last);
    }

    void anUnwritableTargetShowsTheHintAndOkIsStillAllowed()
    {
        const QString path = folder_.path("full.csv");
        QVERIFY(QFile::link("/dev/full/none", path)); // leads nowhere
        const QRect place = dialog_->findChild<QPushButton *>("okBtn")->geometry();
        browse(path);
        QVERIFY(hint()->isVisible());
        QCoreApplication::processEvents();
        QCOMPARE(dialog_->findChild<QPushButton *>("okBtn")->geometry(), place); // the hint has its room
        browse(QString());                                                       // cancelled
        QCOMPARE(pathEdit()->text(), path);
        QVERIFY(hint()->isVisible());
        browse(folder_.path("b.csv"));
        QVERIFY(hint()->isHidden());
        pathEdit()->setText("typed"); // is taken as it is
        dialog_->findChild<QComboBox *>("modeBox")->setCurrentIndex(1);
        pressButton(dialog_.get(), "okBtn");
        QVERIFY(!dialog_->isVisible());
        QCOMPARE(dialog_->path(), QString("typed"));
        QCOMPARE(int(dialog_->mode()), int(CaptureMode::FilteredFrames));
        dialog_->show();
        pressButton(dialog_.get(), "cancelBtn"); // takes it back
        QVERIFY(dialog_->path().isEmpty() && dialog_->mode() == CaptureMode::AllFrames);
    }

    void escapeCancels()
    {
        pathEdit()->setText("x");
        QTest::keyClick(dialog_.get(), Qt::Key_Escape);
        QVERIFY(!dialog_->isVisible());
        QVERIFY(dialog_->path().isEmpty());
    }
};

QTEST_MAIN(TestSavefileDlg)
#include "test_savefiledlg.moc"
