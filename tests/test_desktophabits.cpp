// What users of a desktop expect of any program: a window that comes back as it was, keys, the clipboard.
#include "app/frametableview.h"
#include "app/mainwindow.h"
#include "app/rowclipboard.h"
#include "app/windowstate.h"
#include "device/devicelayer.h"
#include "device/driver/driverfactory.h"
#include "frames/csvrow.h"
#include "frames/pendingframes.h"
#include "sampleframes.h"
#include "testfolder.h"
#include "windowdriver.h"

#include <QAction>
#include <QCheckBox>
#include <QClipboard>
#include <QDesktopServices>
#include <QMenu>
#include <QScreen>
#include <QSettings>
#include <QShortcut>
#include <QSplitter>
#include <QtTest>

// Stands for the desktop's own viewer.
class Viewer : public QObject
{
    Q_OBJECT

public:
    QList<QUrl> opened;

    Viewer() { QDesktopServices::setUrlHandler("file", this, "open"); }
    ~Viewer() override { QDesktopServices::unsetUrlHandler("file"); }

public slots:
    void open(const QUrl &url) { opened.append(url); }
};

class DesktopHabitsTest : public QObject
{
    Q_OBJECT

private:
    TestFolder folder_;
    std::unique_ptr<MainWindow> window_;

    QSplitter *splitter() const { return window_->findChild<QSplitter *>("splitter"); }
    FrameTableView *table() const { return window_->findChild<FrameTableView *>(); }
    void showActive() const
    {
        window_->show();
        window_->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window_.get()));
    }

private slots:
    void initTestCase()
    {
        // Never the settings of the user who runs the tests.
        QCoreApplication::setOrganizationName("OstrelTest");
        QCoreApplication::setApplicationName("OstrelTest");
        QSettings::setDefaultFormat(QSettings::IniFormat);
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, folder_.path("desktop"));
        QVERIFY(QSettings().fileName().startsWith(folder_.path("desktop")));
        folder_.copyCatalogues();
        setDriver(makeDriver("simulated"));
    }
    void init()
    {
        QSettings().clear();
        window_ = std::make_unique<MainWindow>();
    }
    void cleanup() { window_.reset(); }
    void cleanupTestCase() { setDriver(nullptr); }

    void windowComesBackAsItWas()
    {
        {
            const WindowState state(*window_);
            window_->show();
            window_->resize(window_->minimumSizeHint() + QSize(40, 60));
            table()->setColumnWidth(IdColumn, 177);
            table()->setColumnWidth(TypeColumn, 31);
            const QList<int> usual = splitter()->sizes();
            splitter()->setSizes({usual.at(0) - 20, usual.at(1) + 20});
        }
        const QSize size = window_->size();
        const QList<int> parts = splitter()->sizes();
        window_ = std::make_unique<MainWindow>();
        const WindowState state(*window_);
        window_->show();
        QCoreApplication::processEvents();
        QCOMPARE(window_->size(), size);
        QCOMPARE(table()->columnWidth(IdColumn), 177);
        QCOMPARE(table()->columnWidth(TypeColumn), 31);
        QCOMPARE(splitter()->sizes(), parts);
        QVERIFY2(!folder_.read("config/setdb.txt").contains("window"), "kept in the program's own settings file");
    }

    // With a frame around it: 1024 x 600, and 1920 x 1080 at 200 %. What does not fit beside the log is scrolled.
    void windowFitsSmallScreens()
    {
        const QSize screen = QGuiApplication::primaryScreen()->availableSize();
        QVERIFY(window_->width() < screen.width() && window_->height() < screen.height());
        const WindowDriver user(*window_);
        window_->show();
        for (const char *language : {"actionTraditionalChinese", "actionEnglish", "actionSimplifiedChinese"}) {
            user.trigger(language);
            QCoreApplication::processEvents();
            const QSize least = window_->minimumSizeHint();
            QVERIFY2(least.width() <= 800 && least.height() <= 480, language);
        }
        const auto *log = user.find<QWidget>("operationLog");
        const auto *second = user.find<QWidget>("ch2SendPanel");
        const auto *view = second->parentWidget()->parentWidget();
        for (const int width : {940, 1320}) { // the log is what narrows
            window_->resize(width, 500);
            QTRY_VERIFY(view->width() >= second->geometry().right());
        }
        window_->resize(window_->minimumSizeHint());
        QTRY_VERIFY(view->width() < second->geometry().right());
        QVERIFY(log->width() >= 40);
    }

    void damagedStateIsIgnored()
    {
        const int usual = table()->columnWidth(IdColumn);
        QSettings().setValue("window/geometry", QByteArray("nonsense"));
        QSettings().setValue("window/columns", QVariantList{1, 2});
        QSettings().setValue("window/dpi", window_->logicalDpiX());
        const WindowState state(*window_);
        QCOMPARE(table()->columnWidth(IdColumn), usual);
    }

    void everyEntryHasAKeyOfItsOwn()
    {
        QList<QKeySequence> keys;
        for (const QAction *action : window_->findChildren<QAction *>(QRegularExpression("^action"))) {
            // In menus that have access keys; not for every day.
            if (action->objectName().contains(QRegularExpression("Chinese|English|About")))
                continue;
            QVERIFY2(!action->shortcut().isEmpty(), qPrintable(action->objectName()));
            keys << action->shortcut();
        }
        for (const QShortcut *shortcut : window_->findChildren<QShortcut *>())
            keys << shortcut->key();
        for (const QKeySequence &key : keys)
            QVERIFY2(keys.count(key) == 1, qPrintable(key.toString()));
    }

    void helpMenuOpensTheManual()
    {
        folder_.write("help/English/A Manual & more.pdf", "%PDF");
        WindowDriver user(*window_);
        user.trigger("actionEnglish"); // fills the menu
        QAction *entry = user.find<QMenu>("menuHelp")->actions().last();
        QCOMPARE(entry->text(), QString("A Manual && more.pdf"));
        QCOMPARE(entry->shortcut(), QKeySequence(QKeySequence::HelpContents));
        const Viewer viewer;
        entry->trigger();
        user.trigger("actionHelpFolder");
        QFile::remove(folder_.path("help/English/A Manual & more.pdf"));
        entry->trigger();
        QCOMPARE(user.modal().takeMessages(),
                 QStringList{"warning|No program can open it, or it is not there: " +
                             QDir::toNativeSeparators(folder_.path("help/English/A Manual & more.pdf"))});
        QCOMPARE(viewer.opened, (QList<QUrl>{QUrl::fromLocalFile(folder_.path("help/English/A Manual & more.pdf")),
                                             QUrl::fromLocalFile(folder_.path("help/English"))}));
    }

    void keysPressButtons()
    {
        showActive();
        const auto *pause = window_->findChild<QCheckBox *>("pauseBox");
        QTest::keyClick(window_.get(), Qt::Key_F5);
        QVERIFY(pause->isChecked());
        WindowDriver(*window_).trigger("actionEnglish"); // new texts take no key away
        QCoreApplication::sendPostedEvents();
        QTest::keyClick(window_.get(), Qt::Key_F5);
        QVERIFY(!pause->isChecked());
    }

    void copiesRowsAsCsv()
    {
        showActive();
        appendPendingFrames({receivedFrame(0x123), receivedFrame(0x124), receivedFrame(0x125)});
        auto *model = qobject_cast<MyTableModel *>(table()->model());
        QTRY_COMPARE(model->rowCount(), 3);
        QGuiApplication::clipboard()->setText("before");
        table()->setFocus();
        table()->setCurrentIndex(QModelIndex());
        table()->clearSelection();
        QTest::keyClick(table(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(), QString("before")); // nothing is selected

        table()->selectRow(1);
        QTest::keyClick(table(), Qt::Key_C, Qt::ControlModifier);
        QString row;
        appendCsvRow(row, model->row(1));
        QVERIFY(row.contains(",0x124,"));
        QCOMPARE(QGuiApplication::clipboard()->text(), row);

        model->setFilter(IdColumn, {"0x123", "0x125"});
        table()->filterChanged();
        QTest::keyClick(table(), Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
        const QStringList lines = QGuiApplication::clipboard()->text().split('\n');
        QCOMPARE(lines.size(), 4); // titles, two rows, the end
        QVERIFY(lines.at(1).contains(",0x123,") && lines.at(2).contains(",0x125,"));
    }
};

QTEST_MAIN(DesktopHabitsTest)
#include "test_desktophabits.moc"
