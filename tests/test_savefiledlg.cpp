#include "dialogs/savefiledlg.h"

#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

class TestSavefileDlg : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir dir_;
    const std::function<QString(QWidget *, const QString &)> platformDialog_ = savefileDlg::askSaveFileName;

    static void press(savefileDlg &dialog, const char *button) { dialog.findChild<QPushButton *>(button)->click(); }
    static QLineEdit *pathEdit(const savefileDlg &dialog) { return dialog.findChild<QLineEdit *>("pathEdit"); }
    static QLabel *hint(const savefileDlg &dialog) { return dialog.findChild<QLabel *>("hintLabel"); }

private slots:
    void cleanup() { savefileDlg::askSaveFileName = platformDialog_; }

    void browsingEmptiesTheFileAtOnce()
    {
        QString path = dir_.filePath("chosen.csv");
        QFile old(path);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("old");
        old.close();
        QString caption;
        savefileDlg::askSaveFileName = [&](QWidget *, const QString &text) {
            caption = text;
            return path;
        };
        savefileDlg dialog;
        dialog.show();
        QVERIFY(hint(dialog)->isHidden());
        press(dialog, "browseBtn");
        QCOMPARE(caption, QString("保存CSV文件"));
        QCOMPARE(pathEdit(dialog)->text(), path);
        QVERIFY(hint(dialog)->isHidden());
        press(dialog, "cancelBtn");
        QVERIFY(!dialog.isVisible());
        QVERIFY(dialog.path().isEmpty());
        QVERIFY(QFile::exists(path));
        QCOMPARE(QFile(path).size(), 0);
    }

    void anUnwritableTargetShowsTheHintAndOkIsStillAllowed()
    {
        QString path = dir_.filePath("no such folder/a.csv");
        savefileDlg::askSaveFileName = [&](QWidget *, const QString &) { return path; };
        savefileDlg dialog;
        dialog.show();
        const QSize size = dialog.size();
        press(dialog, "browseBtn");
        QVERIFY(hint(dialog)->isVisible());
        QCOMPARE(hint(dialog)->text(), QString("提示：文件创建失败，请选择其他路径。"));
        QCOMPARE(dialog.size(), size);
        savefileDlg::askSaveFileName = [](QWidget *, const QString &) { return QString(); }; // cancelled
        press(dialog, "browseBtn");
        QCOMPARE(pathEdit(dialog)->text(), path);
        QVERIFY(hint(dialog)->isVisible());
        savefileDlg::askSaveFileName = [&](QWidget *, const QString &) { return dir_.filePath("b.csv"); };
        press(dialog, "browseBtn");
        QVERIFY(hint(dialog)->isHidden());
        savefileDlg::askSaveFileName = [&](QWidget *, const QString &) { return path; };
        press(dialog, "browseBtn");
        press(dialog, "okBtn");
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.path(), path);
    }

    void aTypedPathIsTakenAsItIs()
    {
        savefileDlg dialog;
        dialog.show();
        QComboBox *modes = dialog.findChild<QComboBox *>("modeBox");
        QCOMPARE(modes->count(), 2);
        QCOMPARE(modes->itemText(0), QString("全部数据"));
        QCOMPARE(modes->itemText(1), QString("筛选后数据"));
        pathEdit(dialog)->setText(" typed by hand ");
        modes->setCurrentIndex(1);
        press(dialog, "okBtn");
        QCOMPARE(dialog.path(), QString(" typed by hand "));
        QCOMPARE(dialog.mode(), CaptureMode::FilteredFrames);
        QVERIFY(!QFile::exists(" typed by hand "));
    }

    void escapeCancels()
    {
        savefileDlg dialog;
        dialog.show();
        pathEdit(dialog)->setText("x");
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QVERIFY(!dialog.isVisible());
        QVERIFY(dialog.path().isEmpty());
        QCOMPARE(dialog.mode(), CaptureMode::AllFrames);
    }
};

QTEST_MAIN(TestSavefileDlg)
#include "test_savefiledlg.moc"
