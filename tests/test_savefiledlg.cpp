#include "dialogs/savefiledlg.h"
#include "testfolder.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

class TestSavefileDlg : public QObject
{
    Q_OBJECT

private:
    const TestFolder folder_;
    QString answer_; // of the platform's dialog
    std::unique_ptr<savefileDlg> dialog_;

    void press(const char *button) { dialog_->findChild<QPushButton *>(button)->click(); }
    QLineEdit *pathEdit() { return dialog_->findChild<QLineEdit *>("pathEdit"); }
    QLabel *hint() { return dialog_->findChild<QLabel *>("hintLabel"); }
    void browse(const QString &answer)
    {
        answer_ = answer;
        press("browseBtn");
    }

private slots:
    void init()
    {
        savefileDlg::askSaveFileName = [this](QWidget *, const QString &) { return answer_; };
        dialog_ = std::make_unique<savefileDlg>();
        dialog_->show();
    }

    void browsingEmptiesTheFileAtOnce()
    {
        folder_.write("chosen.csv", "old");
        browse(folder_.path("chosen.csv"));
        QCOMPARE(pathEdit()->text(), folder_.path("chosen.csv"));
        QVERIFY(hint()->isHidden());
        press("cancelBtn");
        QVERIFY(!dialog_->isVisible());
        QVERIFY(dialog_->path().isEmpty());
        QVERIFY(QFile::exists(folder_.path("chosen.csv")));
        QCOMPARE(folder_.read("chosen.csv"), QByteArray());
    }

    void anUnwritableTargetShowsTheHintAndOkIsStillAllowed()
    {
        const QString path = folder_.path("no such folder/a.csv");
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
        browse(path);
        press("okBtn");
        QVERIFY(!dialog_->isVisible());
        QCOMPARE(dialog_->path(), path);
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
