#include "app/displayfilter.h"
#include "app/frametableview.h"
#include "app/receiveview.h"
#include "device/language.h"
#include "frames/framecounter.h"
#include "frames/pendingframes.h"
#include "modalhelper.h"
#include "sampleframes.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>

Q_DECLARE_METATYPE(std::function<void(FrameTableView *, int)>)

class TestReceiveView : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir dir_;
    std::unique_ptr<ReceiveView> view_;

    MyTableModel &model() const { return *view_->model(); }
    FrameTableView *table() const { return view_->findChild<FrameTableView *>("tableView"); }
    DisplayFilter *filter() const { return view_->findChild<DisplayFilter *>(); }
    QCheckBox *box(const char *name) const { return view_->findChild<QCheckBox *>(name); }
    void press(const char *name) const { view_->findChild<QPushButton *>(name)->click(); }
    // Total and rate of both channels, received ones first.
    QString numbers() const
    {
        QStringList texts;
        for (const char *name : {"ch1RecvCount", "ch1RecvRate", "ch2RecvCount", "ch2RecvRate", "ch1SendCount",
                                 "ch1SendRate", "ch2SendCount", "ch2SendRate"})
            texts << view_->findChild<QLabel *>(name)->text();
        return texts.join(' ');
    }
    void frames(const QList<ModelItem> &batch) const
    {
        appendPendingFrames(batch);
        view_->refresh();
    }
    // Frames of the identifiers from 0 on.
    static QList<ModelItem> run(std::uint32_t count)
    {
        QList<ModelItem> batch;
        for (std::uint32_t id = 0; id < count; ++id)
            batch << receivedFrame(id);
        return batch;
    }
    QString indexes() const { return columnTexts(model(), IndexColumn).join(' '); }

    void startCapture(const QString &path, int mode) const
    {
        ModalAnswer answer;
        answer.on<savefileDlg>([&](savefileDlg *dialog) {
            dialog->findChild<QLineEdit *>("pathEdit")->setText(path);
            dialog->findChild<QComboBox *>("modeBox")->setCurrentIndex(mode);
            dialog->findChild<QPushButton *>(path.isEmpty() ? "cancelBtn" : "okBtn")->click();
        });
        box("checkBox")->click();
        QCOMPARE(answer.stepsLeft(), 0);
    }
    static QString textOf(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly | QIODevice::Text) ? QString::fromUtf8(file.readAll()) : "unreadable";
    }
    // The index column of a capture's rows; titles as "#".
    static QString captured(const QString &path)
    {
        QStringList lines = textOf(path).split('\n');
        if (!lines.takeLast().isEmpty())
            return "torn";
        for (QString &line : lines)
            line = line.contains("=\"") ? line.section(',', 0, 0) : "#";
        return lines.join(' ');
    }

private slots:
    void init()
    {
        setLanguageCode(SimplifiedChinese);
        takePendingFrames();
        resetFrameCounter();
        view_ = std::make_unique<ReceiveView>();
        view_->resize(1000, 500);
        view_->show();
        QVERIFY(QTest::qWaitForWindowExposed(view_.get()));
    }
    void cleanup() { view_.reset(); }

    void aRoundNumbersCountsAndShows()
    {
        frames({});
        QCOMPARE(model().rowCount(), 0);
        frames({receivedFrame(1), sentFrame(2), receivedFrame(3, 0, 1), sentFrame(4, 0, 1), receivedFrame(5)});
        QCOMPARE(indexes(), QString("1 2 3 4 5"));
        QCOMPARE(columnTexts(model(), IdColumn).join(' '), QString("0x001 0x002 0x003 0x004 0x005"));
        QVERIFY(QRegularExpression("^\\d\\d:\\d\\d:\\d\\d\\.\\d{3}$")
                    .match(model().cellText(0, SystemTimeColumn))
                    .hasMatch());
        QCOMPARE(numbers(), QString("2 0/s; 1 0/s; 1 0/s; 1 0/s;"));
        view_->showRates();
        QCOMPARE(numbers(), QString("2 2/s; 1 1/s; 1 1/s; 1 1/s;"));
        frames(run(3));
        press("pushButton");
        QCOMPARE(numbers(), QString("0 2/s; 0 1/s; 0 1/s; 0 1/s;"));
        view_->showRates();
        QCOMPARE(numbers(), QString("0 3/s; 0 0/s; 0 0/s; 0 0/s;"));
        press("cleanListBtn");
        QCOMPARE(model().rowCount(), 0);
        frames(run(1));
        QCOMPARE(indexes(), QString("1"));
    }

    void theLimitKeepsTheLastRows()
    {
        view_->setListLimit(5);
        frames(run(3));
        table()->setCurrentIndex(model().index(2, 0));
        frames(run(2));
        QCOMPARE(table()->currentIndex().row(), 2);
        table()->setCurrentIndex(model().index(4, 0));
        frames(run(4));
        QCOMPARE(indexes(), QString("5 6 7 8 9"));
        QVERIFY(!table()->currentIndex().isValid());
        QVERIFY(!table()->selectionModel()->hasSelection());
        frames(run(12));
        QCOMPARE(indexes(), QString("17 18 19 20 21"));
        view_->setListLimit(2);
        frames(run(1));
        QCOMPARE(indexes(), QString("21 22"));
        view_->setListLimit(0); // is taken as 1
        frames(run(1));
        QCOMPARE(indexes(), QString("23"));

        view_->setListLimit(3);
        view_->setMerge(true);
        frames(run(5));
        QCOMPARE(indexes(), QString("3 4 5"));
        frames({receivedFrame(9)});
        QCOMPARE(indexes(), QString("4 5 6"));
    }

    // A current row is selected again by the next round, except right after the user's own choice.
    void theCurrentRowIsSelectedAgain()
    {
        frames(run(4));
        const auto isSelected = [this] { return table()->selectionModel()->isRowSelected(2, QModelIndex()); };
        table()->setCurrentIndex(model().index(2, 3));
        table()->clearSelection();
        emit table()->pressed(model().index(2, 3));
        frames(run(1));
        QVERIFY(!isSelected());
        frames(run(1));
        QVERIFY(isSelected());
    }

    void whoReadsBackIsLeftThere_data()
    {
        using Scroll = std::function<void(FrameTableView *, int)>; // up: 1, to the end: -1
        QTest::addColumn<Scroll>("scroll");
        QTest::newRow("wheel") << Scroll([](FrameTableView *table, int up) {
            for (int turn = up > 0 ? 10 : 0; turn < 20; ++turn) {
                QWheelEvent wheel(QPointF(50, 50), table->viewport()->mapToGlobal(QPoint(50, 50)), {}, {0, up * 120},
                                  Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
                QCoreApplication::sendEvent(table->viewport(), &wheel);
            }
        });
        QTest::newRow("keys") << Scroll([](FrameTableView *table, int up) {
            for (int times = up > 0 ? 17 : 0; times < 22; ++times)
                QTest::keyClick(table, up > 0 ? Qt::Key_PageUp : Qt::Key_PageDown);
        });
        QTest::newRow("slider held") << Scroll([](FrameTableView *table, int up) {
            table->verticalScrollBar()->setSliderDown(up > 0);
            table->verticalScrollBar()->setSliderPosition(up > 0 ? 1500 : 1 << 20);
        });
    }
    void whoReadsBackIsLeftThere()
    {
        QFETCH(std::function<void(FrameTableView *, int)>, scroll);
        view_->setListLimit(310);
        frames(run(300));
        const QScrollBar *bar = table()->verticalScrollBar();
        const auto seen = [this](int y) { return model().cellText(table()->rowAt(y), IndexColumn); };
        const int bottom = table()->viewport()->height() - 5;
        QCOMPARE(seen(bottom), QString("300"));
        table()->selectRow(299);
        scroll(table(), 1);
        const QString first = seen(0);
        const int place = bar->value();
        QVERIFY(place > 100 && place < bar->maximum());
        frames(run(10));
        QCOMPARE(bar->value(), place);
        frames(run(4)); // the table is full: rows go at the top
        QCOMPARE(seen(0), first);
        frames(run(305)); // the rows in sight are gone, too
        QCOMPARE(bar->value(), 0);
        frames(run(1));
        QCOMPARE(bar->value(), 0);
        table()->selectRow(308);
        scroll(table(), -1);
        frames(run(5));
        QCOMPARE(seen(bottom), QString("625"));
        scroll(table(), 1);
        press("cleanListBtn");
        frames(run(200));
        QCOMPARE(seen(bottom), QString("200"));
    }

    void theEndStaysInSight()
    {
        frames(run(200));
        const QScrollBar *bar = table()->verticalScrollBar();
        const auto atEnd = [bar] { return bar->maximum() > 0 && bar->value() == bar->maximum(); };
        QVERIFY(atEnd());
        view_->resize(900, 400);
        QVERIFY(atEnd());
        QFont larger = view_->font();
        larger.setPixelSize(QFontInfo(larger).pixelSize() + 4);
        filter()->setCondition({"0x001", "0x002", "0x0C7"}, IdColumn);
        QCOMPARE(table()->rowAt(5), 1);
        view_->setFont(larger);
        filter()->clearAll();
        QCOMPARE(table()->rowHeight(0), table()->rowHeight(1)); // one was hidden meanwhile
        QCOMPARE(table()->rowAt(table()->viewport()->height() - 5), 199);
        view_->setMerge(true);
        frames(run(300));
        QCOMPARE(bar->value(), 0);
        table()->scrollToBottom();
        const int place = bar->value();
        frames(run(310)); // comes in below
        QCOMPARE(bar->value(), place);
        table()->scrollToTop();
        view_->setMerge(false);
        frames(run(20));
        QCOMPARE(bar->value(), bar->maximum());
    }

    void mergingKeepsOneRowPerIdentifier()
    {
        frames(run(4));
        filter()->setCondition({"0x002"}, IdColumn);
        view_->setMerge(true);
        QCOMPARE(model().rowCount(), 0);
        QVERIFY(model().filter(IdColumn).isEmpty());
        frames({receivedFrame(1, 1), receivedFrame(2, 2), sentFrame(1, 3), receivedFrame(1, 4, 1)});
        QTest::mouseClick(table()->viewport(), Qt::LeftButton, {}, table()->visualRect(model().index(1, 3)).center());
        for (int round = 0; round < 3; ++round) {
            frames({receivedFrame(2, 9), receivedFrame(1, 8)});
            QVERIFY(table()->selectionModel()->isRowSelected(1, QModelIndex()));
        }
        QCOMPARE(indexes(), QString("10 9 3 4"));
        view_->setMerge(false);
        frames(run(1));
        QCOMPARE(model().rowCount(), 5);
    }

    void captureWithAFilter_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("rows");
        QTest::newRow("all") << 0 << "# 1 2 3 4 5 6 7 8";
        QTest::newRow("filtered") << 1 << "# 2 5 8";
    }
    void captureWithAFilter()
    {
        QFETCH(int, mode);
        QFETCH(QString, rows);
        const QString path = dir_.filePath(QString("mode%1.csv").arg(mode));
        filter()->setCondition({"0x001"}, IdColumn);
        startCapture(path, mode);
        QVERIFY(textOf(path).contains(",ID*,")); // the titles as they stand
        frames(run(3));
        box("pauseBox")->setChecked(true);
        frames(run(3));
        QCOMPARE(indexes(), QString("2"));
        appendPendingFrames(run(2)); // what is still pending when the box is unticked belongs to the capture
        box("checkBox")->click();
        QCOMPARE(captured(path), rows);
        QVERIFY(numbers().startsWith("8 "));
        box("pauseBox")->setChecked(false);
        press("pushButton_2");
        QVERIFY(model().filter(IdColumn).isEmpty());
        frames(run(1));
        QCOMPARE(indexes(), QString("2 9"));
        startCapture(path, mode);
        appendPendingFrames(run(1));
        view_.reset();
        QCOMPARE(captured(path), rows + " # 10");
    }

    void aCaptureThatCannotBeWritten()
    {
        startCapture(QString(), 1);
        QVERIFY(!box("checkBox")->isChecked());
        QSignalSpy log(view_.get(), &ReceiveView::logLine);
        startCapture(dir_.filePath("missing/x.csv"), 0);
        QCOMPARE(log.count(), 1);
        QVERIFY(box("checkBox")->isChecked()); // nothing but the log has changed
        frames(run(2));
        QCOMPARE(model().rowCount(), 2);
        QCOMPARE(log.count(), 1);
    }

    // The filter and the pause play no part in what is captured.
    void batchSlots()
    {
        const QString path = dir_.filePath("batch.csv");
        startCapture(path, 1);
        filter()->setCondition({"0x002"}, IdColumn);
        ModelItem bare;
        bare.idText = "1a";
        bare.dataText = "00 1f";
        view_->recvData({bare, bare}, 1);
        QCOMPARE(model().cellText(1, IndexColumn), QString("2"));
        QCOMPARE(model().cellText(1, IdColumn) + model().cellText(1, DataColumn), QString("0x1Ax| 00 1F"));
        box("pauseBox")->setChecked(true);
        view_->sendedData({bare}, 0);
        QCOMPARE(model().rowCount(), 2);
        QCOMPARE(numbers(), QString("0 0/s; 2 0/s; 1 0/s; 0 0/s;"));
        QCOMPARE(captured(path), QString("# 1 2 3"));
    }

    // The button that ends the conditions tells them; a language takes the marks away, nothing else.
    void aLanguageSwitchKeepsTheConditions()
    {
        const auto *clear = view_->findChild<QPushButton *>("pushButton_2");
        const auto said = [clear] { return clear->isEnabled() ? clear->toolTip() : "disabled " + clear->toolTip(); };
        QCOMPARE(said(), QString("disabled F6"));
        filter()->setCondition({"0x001", "0x002"}, IdColumn);
        filter()->setCondition({"2"}, IndexColumn); // numbered before it is tested
        frames(run(3));
        QCOMPARE(indexes(), QString("2"));
        QCOMPARE(model().header().at(IdColumn), QString("ID*"));
        QCOMPARE(said(), QString("已筛选的列：序号、ID（F6）"));
        setLanguageCode(English);
        view_->setHeaderTexts();
        QCOMPARE(model().header().join(','),
                 QString("index,system time,time stamp,channel,Rx/Tx,ID,Frame,type,DLC,CAN-FD,data"));
        QCOMPARE(said(), QString("Filtered columns: index, ID (F6)"));
        press("cleanListBtn");
        frames(run(3));
        QCOMPARE(indexes(), QString("2"));
        press("pushButton_2");
        QCOMPARE(said(), QString("disabled F6"));
        press("cleanListBtn");
        frames(run(3));
        QCOMPARE(indexes(), QString("1 2 3"));
    }
};

QTEST_MAIN(TestReceiveView)
#include "test_receiveview.moc"
