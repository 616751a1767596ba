// What users of a desktop expect of any program: a window that comes back as it was, keys, the clipboard.
#include "app/frametableview.h"
#include "app/mainwindow.h"
#include "app/rowclipboard.h"
#include "app/windowstate.h"
#include "device/devicelayer.h"
#include "device/driver/driverfactory.h"
#include "frames/csvrow.h"
#include "frames/pendingframes.h"
#include "testfolder.h"
#include "windowdriver.h"

#include <QAction>
#include <QCheckBox>
#include <QClipboard>
#include <QDesktopServices>
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

    FrameTableView *table() const { return window_->findChild<FrameTableView *>(); }
    // Frames with these identifiers, through the window's own round.
    void receive(const QStringList &ids)
    {
        QList<ModelItem> batch;
        for (const QString &id : ids) {
            ModelItem item;
            item.direction = Received;
            item.idText = id;
            item.channelText = "1";
            item.dataText = "x| 01 ";
            batch.append(item);
        }
        const int before = table()->model()->rowCount();
        appendPendingFrames(batch);
        QTRY_COMPARE(table()->model()->rowCount(), before + ids.size());
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
        QList<int> splitter;
        {
            const WindowState state(*window_);
            window_->show();
            window_->resize(window_->minimumSizeHint() + QSize(40, 60));
            table()->setColumnWidth(IdColumn, 177);
            table()->setColumnWidth(TypeColumn, 31);
            auto *parts = window_->findChild<QSplitter *>("splitter");
            parts->setSizes({parts->sizes().at(0) - 20, parts->sizes().at(1) + 20});
            splitter = parts->sizes();
        }
        const QSize size = window_->size();
        window_ = std::make_unique<MainWindow>();
        const WindowState state(*window_);
        window_->show();
        QCoreApplication::processEvents();
        QCOMPARE(window_->size(), size);
        QCOMPARE(table()->columnWidth(IdColumn), 177);
        QCOMPARE(table()->columnWidth(TypeColumn), 31);
        QCOMPARE(window_->findChild<QSplitter *>("splitter")->sizes(), splitter);
        QVERIFY2(!folder_.read("config/setdb.txt").contains("window"), "kept in the program's own settings file");
    }

    void damagedStateIsIgnored()
    {
        const int usual = table()->columnWidth(IdColumn);
        QSettings().setValue("window/geometry", QByteArray("nonsense"));
        QSettings().setValue("window/columns", QVariantList{1, 2});
        const WindowState state(*window_);
        QCOMPARE(table()->columnWidth(IdColumn), usual);
    }

    void everyEntryHasAKeyOfItsOwn()
    {
        QSet<QKeySequence> keys;
        const auto add = [&keys](const QKeySequence &key) {
            const bool isNew = !keys.contains(key);
            keys.insert(key);
            return isNew;
        };
        for (const QAction *action : window_->findChildren<QAction *>()) {
            const QString name = action->objectName();
            if (!name.startsWith("action") || name.contains("Chinese") || name.contains("English") ||
                name == "actionAbout")
                continue; // in menus that have access keys; not for every day
            QVERIFY2(!action->shortcut().isEmpty(), qPrintable(name));
            QVERIFY2(add(action->shortcut()), qPrintable(action->shortcut().toString()));
        }
        for (const QShortcut *shortcut : window_->findChildren<QShortcut *>())
            QVERIFY2(add(shortcut->key()), qPrintable(shortcut->key().toString()));
    }

    void helpMenuOpensTheManual()
    {
        folder_.write("help/English/A Manual & more.pdf", "%PDF");
        WindowDriver(*window_).trigger("actionEnglish"); // fills the menu
        QAction *entry = nullptr;
        for (QAction *action : window_->findChildren<QAction *>())
            if (action->text() == "A Manual && more.pdf")
                entry = action;
        QVERIFY(entry);
        QCOMPARE(entry->shortcut(), QKeySequence(QKeySequence::HelpContents));
        const Viewer viewer;
        entry->trigger();
        WindowDriver(*window_).trigger("actionHelpFolder");
        QCOMPARE(viewer.opened, (QList<QUrl>{QUrl::fromLocalFile(folder_.path("help/English/A Manual & more.pdf")),
                                             QUrl::fromLocalFile(folder_.path("help/English"))}));
    }

    void keysPressButtons()
    {
        window_->show();
        window_->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window_.get()));
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
        window_->show();
        window_->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window_.get()));
        receive({"0x123", "0x124", "0x125"});
        auto *model = qobject_cast<MyTableModel *>(table()->model());
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
