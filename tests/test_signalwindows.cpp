// Signals and plots in the real windows, on the simulated adapter's vehicle.
#include "analysis/databasedialog.h"
#include "analysis/plotview.h"
#include "analysis/plotwindow.h"
#include "analysis/signalhub.h"
#include "analysis/signalstore.h"
#include "analysis/signalswindow.h"
#include "analysis/signaltreemodel.h"
#include "analysis/signalwindows.h"
#include "app/mainwindow.h"
#include "device/devicelayer.h"
#include "device/driver/driverfactory.h"
#include "device/language.h"
#include "testfolder.h"
#include "widgets/asciitext.h"
#include "widgets/columnmeasures.h"
#include "windowdriver.h"

#include <QAction>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QSettings>
#include <QTreeView>
#include <QTreeWidget>
#include <QtTest>

#include <cmath>

namespace
{
constexpr int kLong = 20000;           // milliseconds that a loaded machine may take
constexpr int kRecorded = 4000;        // rows
constexpr double kRecordedStep = 0.01; // seconds from one to the next

QByteArray recordedSignal(const QByteArray &factorAndOffset)
{
    return "BO_ 100 Recorded: 8 N\n SG_ Counter : 0|16@1+ (" + factorAndOffset + ") [0|0] \"\" N\n";
}

QModelIndex findRow(const QAbstractItemModel &model, const QString &name, const QModelIndex &parent = {})
{
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        if (index.data().toString() == name)
            return index;
        const QModelIndex below = findRow(model, name, index);
        if (below.isValid())
            return below;
    }
    return {};
}
// Those at which the names, axes and curves of a document stand: one, or some are too large for the others.
QSet<int> scalesOfPages(const QByteArray &pdf)
{
    static const QRegularExpression transform("^(\\S+) (\\S+) \\S+ \\S+ \\S+ \\S+ cm$",
                                              QRegularExpression::MultilineOption);
    static const QByteArray begin = "stream\n";
    QSet<int> scales;
    for (int at = pdf.indexOf(begin); at >= 0; at = pdf.indexOf(begin, at + 1)) {
        const int from = at + begin.size();
        const QByteArray length(4, 0); // unknown
        const QString page =
            QString::fromLatin1(qUncompress(length + pdf.mid(from, pdf.indexOf("endstream", from) - from)));
        if (!page.contains(" Tf "))
            continue;
        auto found = transform.globalMatch(page);
        found.next(); // the page's own
        while (found.hasNext()) {
            const auto one = found.next();
            scales += qRound(1000 * std::hypot(one.captured(1).toDouble(), one.captured(2).toDouble()));
        }
    }
    return scales;
}
} // namespace

class TestSignalWindows : public QObject
{
    Q_OBJECT

    TestFolder folder_;
    std::unique_ptr<MainWindow> window_;
    std::unique_ptr<WindowDriver> user_;

    template <typename Window> Window *shown() const { return window_->findChild<Window *>(); }
    template <typename Widget> Widget *in(QWidget *window, const char *name) const
    {
        return window->findChild<Widget *>(QLatin1String(name));
    }
    QTreeView *tree() const { return in<QTreeView>(shown<SignalsWindow>(), "signalTree"); }
    QString cell(const QString &signal, SignalTreeModel::Column column) const
    {
        const QModelIndex index = findRow(*tree()->model(), signal);
        return index.sibling(index.row(), column).data().toString();
    }
    // Shows it on the screen: only such rows follow the bus.
    QModelIndex reveal(const QString &signal) const { return reveal(signal, tree()); }
    static QModelIndex reveal(const QString &signal, QTreeView *tree)
    {
        const QModelIndex index = findRow(*tree->model(), signal);
        tree->expand(index.parent());
        tree->scrollTo(index);
        tree->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        return index;
    }
    void exportTo(PlotWindow *plot, const QString &path)
    {
        user_->modal().on<QFileDialog>([path](QFileDialog *dialog) {
            dialog->selectFile(path);
            dialog->findChild<QLineEdit *>("fileNameEdit")->setText(path);
            static_cast<QDialog *>(dialog)->accept();
        });
        in<QPushButton>(plot, "exportButton")->click();
    }
    void addDatabase(const QString &path, SignalsWindow *window)
    {
        user_->modal().on<DatabaseDialog>([this, path](DatabaseDialog *dialog) {
            user_->modal().on<QFileDialog>([path](QFileDialog *chooser) {
                chooser->findChild<QLineEdit *>("fileNameEdit")->setText(path);
                static_cast<QDialog *>(chooser)->accept();
            });
            pressButton(dialog, "addButton");
            dialog->accept();
        });
        in<QPushButton>(window, "databasesButton")->click();
    }
    // Counts from 0, all of it indexed.
    std::shared_ptr<RecordingIndex> recording()
    {
        QByteArray log;
        for (int i = 0; i < kRecorded; ++i)
            log += QString::asprintf("(%.6f) can0 064#%02X%02X\n", i * kRecordedStep, i & 0xFF, i >> 8).toUtf8();
        folder_.write("drive.log", log);
        auto index = std::make_shared<RecordingIndex>(folder_.path("drive.log"));
        QString error;
        if (!index->open(&error))
            qFatal("%s", qPrintable(error));
        while (!index->settled())
            QTest::qWait(1);
        return index;
    }

private slots:
    void initTestCase()
    {
        QApplication::setOrganizationName("Ostrel");
        QApplication::setApplicationName("Ostrel");
        QDir().mkpath(folder_.path("databases"));
        QVERIFY(QFile::copy(OSTREL_VEHICLE_DATABASE, folder_.path("databases/vehicle.dbc")));
    }
    void init()
    {
        setDriver(makeDriver("simulated"));
        window_ = std::make_unique<MainWindow>();
        user_ = std::make_unique<WindowDriver>(*window_);
        window_->show();
        user_->trigger("actionSignals");
        QVERIFY(QTest::qWaitForWindowExposed(shown<SignalsWindow>()));
    }
    void cleanup()
    {
        user_.reset();
        window_.reset();
        setDriver(nullptr);
        QSettings().clear();
    }

    void fromDatabaseToExport()
    {
        auto *signalsWindow = shown<SignalsWindow>();
        QVERIFY(in<QLabel>(signalsWindow, "stateLabel")->isVisible());
        in<QPushButton>(signalsWindow, "vehicleButton")->click();
        QVERIFY(!in<QLabel>(signalsWindow, "stateLabel")->isVisible());
        QVERIFY(cell("VehicleSpeed", SignalTreeModel::Value).isEmpty());
        QVERIFY(user_->openEverything());

        reveal("EngineSpeed");
        QTRY_VERIFY_WITH_TIMEOUT(cell("EngineSpeed", SignalTreeModel::Value).toDouble() > 100, kLong);
        QCOMPARE(cell("EngineSpeed", SignalTreeModel::Unit), QString("1/min"));
        QCOMPARE(cell("EngineSpeed", SignalTreeModel::Value).toDouble(),
                 cell("EngineSpeed", SignalTreeModel::Raw).toDouble() / 4);
        QTRY_VERIFY(QStringList({"running", "stopped"}).contains(cell("EngineRunning", SignalTreeModel::Text)));
        QTRY_VERIFY(cell("EngineSpeed", SignalTreeModel::Minimum).toDouble() <
                    cell("EngineSpeed", SignalTreeModel::Maximum).toDouble());

        // Frozen values stand still, and what is copied is what is shown.
        in<QCheckBox>(signalsWindow, "freezeBox")->setChecked(true);
        const QString frozen = cell("Engine", SignalTreeModel::Value);
        QTest::qWait(600);
        QCOMPARE(cell("Engine", SignalTreeModel::Value), frozen);
        signalsWindow->findChild<QAction *>("copyAction")->trigger();
        const QStringList copied = QGuiApplication::clipboard()->text().split('\t');
        QCOMPARE(copied.value(SignalTreeModel::Name), QString("EngineSpeed"));
        QCOMPARE(copied.value(SignalTreeModel::Value), cell("EngineSpeed", SignalTreeModel::Value));
        in<QPushButton>(signalsWindow, "resetButton")->click();
        QCOMPARE(cell("Engine", SignalTreeModel::Value), frozen);
        in<QCheckBox>(signalsWindow, "freezeBox")->setChecked(false);
        QTRY_VERIFY_WITH_TIMEOUT(cell("Engine", SignalTreeModel::Value) != frozen, kLong);
        // Rows that are not on the screen are copied with the values of now.
        tree()->expandAll();
        tree()->scrollToTop();
        const auto copiedFrames = [&] {
            tree()->selectAll();
            signalsWindow->findChild<QAction *>("copyAction")->trigger();
            const QStringList lines = QGuiApplication::clipboard()->text().split('\n');
            return lines.value(lines.indexOf(QRegularExpression("Doors\t.*"))).section('\t', 1, 1).toInt();
        };
        const int first = copiedFrames();
        QTRY_VERIFY_WITH_TIMEOUT(first > 0 && copiedFrames() > first, kLong);

        // A search leaves the found and their parents.
        in<QLineEdit>(signalsWindow, "searchEdit")->setText("vehiclespe");
        QVERIFY(!findRow(*tree()->model(), "EngineSpeed").isValid());
        QVERIFY(findRow(*tree()->model(), "VehicleSpeed").isValid());
        in<QLineEdit>(signalsWindow, "searchEdit")->clear();

        // Double clicks put signals in a plot, each once; a drop does too.
        for (const char *name : {"EngineSpeed", "EngineRunning", "EngineSpeed"}) {
            const QRect cellRect = tree()->visualRect(reveal(name));
            QTest::mouseClick(tree()->viewport(), Qt::LeftButton, {}, cellRect.center());
            QTest::mouseDClick(tree()->viewport(), Qt::LeftButton, {}, cellRect.center());
        }
        auto *plot = shown<PlotWindow>();
        QVERIFY(plot && plot->isVisible());
        auto *list = in<QTreeWidget>(plot, "curveList");
        QCOMPARE(list->topLevelItemCount(), 2);
        auto *view = shown<PlotView>();
        std::unique_ptr<QMimeData> dragged(tree()->model()->mimeData({findRow(*tree()->model(), "VehicleSpeed")}));
        QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, dragged.get(), Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(view, &enter);
        QDropEvent drop(QPointF(5, 5), Qt::CopyAction, dragged.get(), Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(view, &drop);
        QCOMPARE(list->topLevelItemCount(), 3);
        QCOMPARE(view->lanes().size(), 3);
        plot->addSignals({{2, 209, false, "VehicleSpeed"}}); // the same of the other channel
        QCOMPARE(list->topLevelItem(2)->text(0), QString("3  CH1 Speed.VehicleSpeed"));
        list->setCurrentItem(list->topLevelItem(3));
        in<QPushButton>(plot, "removeButton")->click();
        QCOMPARE(list->topLevelItem(2)->text(0), QString("3  Speed.VehicleSpeed"));
        QTRY_VERIFY_WITH_TIMEOUT(!list->topLevelItem(2)->text(1).isEmpty(), kLong);
        QTRY_VERIFY(list->topLevelItem(1)->text(1).contains('('));

        // Zooming by keys stops following; cursors give values and differences.
        QTRY_VERIFY_WITH_TIMEOUT(view->to() > 1, kLong);
        QTest::keyClick(view, Qt::Key_Home);
        QVERIFY(!in<QPushButton>(plot, "followButton")->isChecked());
        const double span = view->to() - view->from();
        QTest::keyClick(view, Qt::Key_Plus);
        QVERIFY(view->to() - view->from() < span);
        in<QPushButton>(plot, "cursorsButton")->click();
        QTest::keyClick(view, Qt::Key_Right, Qt::ControlModifier);
        const auto number = [list](int row, int column) {
            return list->topLevelItem(row)->text(column).section(' ', 0, 0).toDouble();
        };
        QVERIFY(qAbs(number(0, 3) - number(0, 2) - number(0, 4)) < 0.01);

        // What is exported is what the window shows.
        for (const char *name : {"plot.csv", "plot.png", "plot.pdf"}) {
            exportTo(plot, folder_.path(name));
            QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(folder_.path(name)), kLong);
            QTRY_VERIFY(in<QPushButton>(plot, "exportButton")->text().endsWith("…"));
        }
        const QStringList lines = QString::fromUtf8(folder_.read("plot.csv")).split("\r\n");
        QVERIFY(lines[0].endsWith(
            QString("Time [s],\"Engine.EngineSpeed [1/min]\",\"Engine.EngineRunning\",\"Speed.VehicleSpeed [km/h]\"")));
        QVERIFY(lines.size() > 5);
        const QStringList row = lines[2].split(',');
        QVERIFY(row[0].toDouble() >= view->from() && row[0].toDouble() <= view->to());
        QCOMPARE(row.size(), 4);
        QVERIFY(QImage(folder_.path("plot.png")).width() >= view->width());
        QVERIFY(folder_.read("plot.pdf").startsWith("%PDF") && folder_.read("plot.pdf").contains("%%EOF"));
        QCOMPARE(scalesOfPages(folder_.read("plot.pdf")).size(), 1);
        exportTo(plot, folder_.path("nowhere/plot.csv"));
        QStringList told;
        QTRY_VERIFY_WITH_TIMEOUT(!(told += user_->modal().takeMessages()).isEmpty(), kLong);
        QCOMPARE(told.size(), 1);

        list->topLevelItem(1)->setCheckState(0, Qt::Unchecked);

        // Windows close and open while frames come; databases go while curves are fed.
        in<QPushButton>(plot, "newPlotButton")->click();
        QCOMPARE(window_->findChildren<PlotWindow *>().size(), 2);
        for (QWidget *widget : {static_cast<QWidget *>(plot), static_cast<QWidget *>(signalsWindow)}) {
            widget->close();
            QTest::qWait(100);
        }
        user_->trigger("actionSignals");
        user_->modal().on<DatabaseDialog>([](DatabaseDialog *dialog) {
            dialog->findChild<QComboBox *>("channelsBox")->setCurrentIndex(1);
            emit dialog->findChild<QComboBox *>("channelsBox")->activated(1);
            dialog->accept();
        });
        in<QPushButton>(signalsWindow, "databasesButton")->click();
        QCOMPARE(tree()->model()->rowCount(tree()->model()->index(0, 0)), 0);
        QVERIFY(tree()->model()->rowCount(tree()->model()->index(1, 0)) > 10);
        user_->closeDevice();
        QCOMPARE(user_->modal().unexpected(), QStringList());

        // The next start has databases and plots as they were.
        user_.reset();
        window_ = std::make_unique<MainWindow>();
        user_ = std::make_unique<WindowDriver>(*window_);
        user_->trigger("actionPlot");
        list = in<QTreeWidget>(shown<PlotWindow>(), "curveList");
        QCOMPARE(list->topLevelItemCount(), 3);
        QVERIFY(list->topLevelItem(0)->checkState(0) && !list->topLevelItem(1)->checkState(0));
        user_->trigger("actionSignals");
        QVERIFY(findRow(*tree()->model(), "VehicleSpeed").isValid());
    }

    // The same on what was recorded: values of the end, curves of everything, both from the beginning of the part.
    void recordingPart_data()
    {
        QTest::addColumn<quint64>("first");
        QTest::addColumn<quint64>("end");
        QTest::addColumn<QString>("minimum");
        QTest::addColumn<QString>("value");
        QTest::newRow("whole") << quint64(0) << quint64(kRecorded) << "100"
                               << "2099.5";
        QTest::newRow("marked") << quint64(1000) << quint64(1200) << "600"
                                << "699.5";
    }
    void recordingPart()
    {
        QFETCH(const quint64, first);
        QFETCH(const quint64, end);
        QFETCH(const QString, minimum);
        QFETCH(const QString, value);
        folder_.write("drive.dbc", recordedSignal("0.5,100"));
        const std::shared_ptr<RecordingIndex> index = recording();
        QPointer<SignalsWindow> window = SignalsWindow::openRecording({index, first, end}, window_.get());
        QVERIFY(window->windowTitle().contains("drive.log"));
        const auto *tree = in<QTreeView>(window, "signalTree");
        const auto counter = [tree](SignalTreeModel::Column column) {
            const QModelIndex row = findRow(*tree->model(), "Counter");
            return row.sibling(row.row(), column).data().toString();
        };
        addDatabase(folder_.path("drive.dbc"), window);
        QVERIFY(findRow(*this->tree()->model(), "Counter").isValid()); // one set of databases, live or recorded
        const QModelIndex row = reveal("Counter", in<QTreeView>(window, "signalTree"));
        QTRY_COMPARE_WITH_TIMEOUT(counter(SignalTreeModel::Value), value, kLong);
        QCOMPARE(counter(SignalTreeModel::Minimum), minimum);
        QTRY_VERIFY(!in<QProgressBar>(window, "progressBar")->isVisible());

        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(row).center());
        QTest::mouseDClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(row).center());
        QPointer<PlotWindow> plot = shown<PlotWindow>();
        QVERIFY(plot && plot->windowTitle().contains("drive.log"));
        auto *list = in<QTreeWidget>(plot, "curveList");
        QCOMPARE(list->topLevelItemCount(), 1);
        QTRY_VERIFY_WITH_TIMEOUT(list->topLevelItem(0)->text(1).startsWith(value), kLong);
        const auto *view = in<PlotView>(plot, "plotView");
        QCOMPARE(view->from(), double(first) * kRecordedStep);
        QCOMPARE(view->to(), double(end - 1) * kRecordedStep);
        exportTo(plot, folder_.path("recorded.csv"));
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(folder_.path("recorded.csv")), kLong);
        const QStringList lines = QString::fromUtf8(folder_.read("recorded.csv")).trimmed().split("\r\n");
        QCOMPARE(quint64(lines.size()), end - first + 1);
        QVERIFY(lines[1].endsWith(',' + minimum) && lines.last().endsWith(',' + value));
        QVERIFY(QFile::remove(folder_.path("recorded.csv")));

        // A database that changes reads the recording again; what the user zoomed to stays.
        QTest::keyClick(in<PlotView>(plot, "plotView"), Qt::Key_Plus);
        const double from = view->from();
        folder_.write("drive.dbc", recordedSignal("1,0"));
        const QString last = QString::number(end - 1);
        QTRY_COMPARE_WITH_TIMEOUT(counter(SignalTreeModel::Value), last, kLong);
        QTRY_VERIFY_WITH_TIMEOUT(list->topLevelItem(0)->text(1).startsWith(last), kLong);
        QVERIFY(view->from() == from && from > double(first) * kRecordedStep);

        // From the plot to the signals again; each goes when it is closed, and a plot of its own starts as the last
        // one.
        window->close();
        QTRY_VERIFY(!window);
        in<QPushButton>(plot, "signalsButton")->click();
        QCOMPARE(window_->findChildren<SignalsWindow *>().size(), 2);
        plot->close();
        window = window_->findChildren<SignalsWindow *>().last();
        window->close();
        QTRY_VERIFY(!plot && !window);
        QTRY_COMPARE(window_->findChildren<SignalWindows *>().size(), 1); // the live ones
        plot = PlotWindow::openRecording({index, first, end}, window_.get());
        QTRY_VERIFY_WITH_TIMEOUT(in<QTreeWidget>(plot, "curveList")->topLevelItem(0)->text(1).startsWith(last), kLong);
        PlotWindow::openRecording({index, first, end}, window_.get()); // ends with the main window while it reads
        QCOMPARE(user_->modal().unexpected(), QStringList());
    }

    // The operation log leads who has no hardware to the vehicle's signals, until a database is in use.
    void hintAtTheVehicle()
    {
        const QPair<Language, QString> hints[] = {{SimplifiedChinese, "“使用内置车辆”"},
                                                  {TraditionalChinese, "「使用內建車輛」"},
                                                  {English, "“Use the built-in vehicle”"}};
        for (const auto &[language, hint] : hints) {
            setLanguageCode(language);
            QVERIFY(!user_->log().contains(hint));
            QVERIFY(user_->openEverything());
            QCOMPARE(user_->log().count(hint), 1);
            user_->closeDevice();
        }
        in<QPushButton>(shown<SignalsWindow>(), "vehicleButton")->click();
        QVERIFY(user_->openEverything());
        QCOMPARE(user_->log().count(hints[2].second), 1);
        user_->closeDevice();
        setLanguageCode(SimplifiedChinese);

        user_.reset(); // known from the last time, though no window of signals was open yet
        window_ = std::make_unique<MainWindow>();
        user_ = std::make_unique<WindowDriver>(*window_);
        QVERIFY(user_->openEverything());
        QVERIFY(!user_->log().contains(hints[0].second));
    }

    void databasesOnTheDisk()
    {
        const auto file = [](const char *signal) {
            return QByteArray("BO_ 100 Known: 8 N\n SG_ ") + signal + " : 0|8@1+ (1,0) [0|0] \"\" N\n";
        };
        folder_.write("broken.dbc", file("Before") + "BO_ 1000 Bad: x N\n");
        addDatabase(folder_.path("broken.dbc"), shown<SignalsWindow>());
        QVERIFY2(user_->log().contains(QRegularExpression("broken.dbc: .*3.*15")), qPrintable(user_->log()));
        QVERIFY(findRow(*tree()->model(), "Before").isValid()); // what can be read is kept
        folder_.write("broken.dbc", file("After"));
        QTRY_VERIFY_WITH_TIMEOUT(findRow(*tree()->model(), "After").isValid(), kLong);
        QVERIFY(!findRow(*tree()->model(), "Before").isValid());
    }

    // In the program's own fonts, or every cell is shaped anew; and a font that stretches them is left to others.
    void charactersKeepTheirGlyphs()
    {
        const auto picture = [](const std::function<void(QPainter &)> &draw) {
            QImage image(400, 40, QImage::Format_RGB32);
            image.fill(Qt::white);
            QPainter painter(&image);
            draw(painter);
            return image;
        };
        const QPointF place(3, 30);
        const QStringList numbers{"0", "-12.5", "4294967295", "1.5e+20", "2e-7"};
        for (bool fixed : {false, true}) {
            AsciiText ascii(fixed ? AsciiText::Of::Everything : AsciiText::Of::Numbers);
            QFont font = fixed ? columnmeasures::fixedWidthFont(QApplication::font()) : QApplication::font();
            ascii.setFont(font);
            for (const QString &text : fixed ? numbers + QStringList{"AVATAR fi ~", "x| 00 FF"} : numbers) {
                QVERIFY2(ascii.take(text), qPrintable(text));
                QVERIFY(std::abs(ascii.width() - QFontMetricsF(font).horizontalAdvance(text)) < 0.5);
                QCOMPARE(picture([&](QPainter &painter) { ascii.draw(&painter, place); }),
                         picture([&](QPainter &painter) { painter.setFont(font), painter.drawText(place, text); }));
            }
            QVERIFY(!ascii.take(fixed ? "帧" : "0xAB"));
            font.setLetterSpacing(QFont::AbsoluteSpacing, 3);
            ascii.setFont(font);
            QCOMPARE(ascii.take("12"), fixed);
        }
    }
};

QTEST_MAIN(TestSignalWindows)
#include "test_signalwindows.moc"
