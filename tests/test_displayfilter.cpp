#include "app/displayfilter.h"
#include "app/frametableview.h"
#include "app/siftdialog.h"
#include "device/language.h"
#include "sampleframes.h"

#include <QApplication>
#include <QHeaderView>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QtTest>

namespace
{
FrameRow row(std::uint32_t id, std::uint8_t data)
{
    return toFrameRow(receivedFrame(id, data));
}
} // namespace

class TestDisplayFilter : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<MyTableModel> model_;
    std::unique_ptr<FrameTableView> table_;
    DisplayFilter *filter_ = nullptr;

    SiftDialog *popup() const { return table_->findChild<SiftDialog *>(); }
    // Data bytes of the rows that can be seen, from the top.
    QString shown() const
    {
        QString bytes;
        int bottom = -1;
        for (int row = 0; row < model_->rowCount(); ++row) {
            const QRect place = table_->visualRect(model_->index(row, DataColumn));
            if (table_->isRowHidden(row) || place.isEmpty())
                continue;
            if (place.top() <= bottom)
                return "rows overlap";
            bottom = place.bottom();
            bytes += model_->cellText(row, DataColumn).mid(3, 2) + ' ';
        }
        return bytes.trimmed();
    }
    QMenu *openMenu(int column) const
    {
        emit table_->customContextMenuRequested(QPoint(table_->columnViewportPosition(column) + 2, 5));
        return qobject_cast<QMenu *>(QApplication::activePopupWidget());
    }
    QStringList listed() const
    {
        QStringList texts;
        const QAbstractItemModel *list = popup()->findChild<QListView *>("listView")->model();
        for (int row = 1; row < list->rowCount(); ++row)
            texts << list->index(row, 0).data().toString();
        return texts;
    }
    void tick(int value) const
    {
        QAbstractItemModel *list = popup()->findChild<QListView *>("listView")->model();
        list->setData(list->index(1 + value, 0), Qt::Checked, Qt::CheckStateRole);
    }

private slots:
    void init()
    {
        setLanguageCode(SimplifiedChinese);
        model_ = std::make_unique<MyTableModel>();
        QStringList titles;
        for (int column = 0; column < FrameColumnCount; ++column)
            titles << QString('A' + column);
        model_->setHeader(titles);
        table_ = std::make_unique<FrameTableView>();
        table_->setFrameModel(model_.get());
        filter_ = new DisplayFilter(model_.get(), table_.get());
        table_->resize(900, 400);
        table_->show();
        QVERIFY(QTest::qWaitForWindowExposed(table_.get()));
    }
    void cleanup()
    {
        table_.reset();
        model_.reset();
    }

    void menuTexts_data()
    {
        QTest::addColumn<unsigned>("language");
        QTest::addColumn<QStringList>("texts");
        QTest::newRow("simplified") << 0u << QStringList{"筛选", "显示全部"};
        QTest::newRow("traditional") << 1u << QStringList{"篩選", "顯示全部"};
        QTest::newRow("english") << 2u << QStringList{"sift", "show all"};
    }
    void menuTexts()
    {
        QFETCH(unsigned, language);
        QFETCH(QStringList, texts);
        setLanguageCode(language);
        QMenu *menu = openMenu(IdColumn);
        QVERIFY(menu);
        QStringList actions;
        for (const QAction *action : menu->actions())
            actions << action->text();
        QCOMPARE(actions, texts);
        menu->close();
    }

    void rightOfTheLastColumnIsNoMenu()
    {
        emit table_->customContextMenuRequested(QPoint(100000, 5));
        QVERIFY(!QApplication::activePopupWidget());
    }

    void fromMenuToHiddenRowsAndBack()
    {
        model_->appendRows({row(0x10, 1), row(0x20, 2), row(0x10, 3), row(0x30, 4)});
        QMenu *menu = openMenu(IdColumn);
        menu->actions().at(0)->trigger();
        menu->close();
        QVERIFY(popup()->isVisible());
        QCOMPARE(listed(), QStringList({"0x010", "0x020", "0x030"})); // each once, in the order of the rows
        tick(0);
        tick(2);
        popup()->findChild<QPushButton *>("confirmBtn")->click();
        QVERIFY(!popup()->isVisible());
        QCOMPARE(shown(), QString("01 03 04"));
        QCOMPARE(model_->header().at(IdColumn), QString("F*"));

        filter_->setCondition({"x| 03 "}, DataColumn); // both columns count
        QCOMPARE(shown(), QString("03"));
        menu = openMenu(DataColumn);
        QCOMPARE(popup()->isVisible(), false);
        menu->actions().at(0)->trigger();
        QCOMPARE(listed().size(), 4); // hidden rows have their values too
        menu->close();
        menu = openMenu(IdColumn);
        QVERIFY(!popup()->isVisible());   // a right click hides it
        menu->actions().at(1)->trigger(); // show all
        menu->close();
        QCOMPARE(shown(), QString("03"));
        QCOMPARE(model_->header().at(IdColumn), QString("F"));
        filter_->clearAll();
        QCOMPARE(shown(), QString("01 02 03 04"));
        QCOMPARE(model_->header().join(""), QString("ABCDEFGHIJK"));
    }

    void theHeaderHasTheMenuToo()
    {
        QHeaderView *header = table_->horizontalHeader();
        emit header->customContextMenuRequested(QPoint(header->sectionViewportPosition(IdColumn) + 2, 2));
        QVERIFY(QApplication::activePopupWidget());
        QApplication::activePopupWidget()->close();
    }

    // Removals, appends and merges in one round or one by one: the same rows stay hidden.
    void hiddenRowsStayRight_data()
    {
        QTest::addColumn<bool>("inRound");
        QTest::newRow("one by one") << false;
        QTest::newRow("in a round") << true;
    }
    void hiddenRowsStayRight()
    {
        QFETCH(bool, inRound);
        model_->appendRows({row(0x10, 1), row(0x20, 2), row(0x30, 3), row(0x40, 4), row(0x50, 5), row(0x60, 6)});
        filter_->setCondition({"x| 02 ", "x| 04 ", "x| 05 ", "x| 07 ", "x| 08 "}, DataColumn);
        QCOMPARE(shown(), QString("02 04 05"));
        const auto inOneGo = [&](const std::function<void()> &change) {
            std::unique_ptr<FrameTableView::Round> round;
            if (inRound)
                round = std::make_unique<FrameTableView::Round>(*table_);
            change();
        };
        inOneGo([&] {
            model_->removeFirstRows(3);
            model_->appendRows({row(0x70, 7)});
        });
        QCOMPARE(shown(), QString("04 05 07"));
        inOneGo([&] {
            model_->mergeRow(row(0x40, 0x40)); // was shown, now fails
            model_->mergeRow(row(0x60, 8));    // was hidden, now passes
            model_->mergeRow(row(0x80, 9));    // new, fails
        });
        QCOMPARE(shown(), QString("05 08 07"));
        filter_->clearAll();
        QCOMPARE(shown(), QString("40 05 08 07 09"));
        filter_->setCondition({"none"}, DataColumn);
        QCOMPARE(shown(), QString());
        inOneGo([&] {
            model_->clear();
            model_->appendRows({row(0x20, 2)});
        });
        QCOMPARE(shown(), QString());
        filter_->clearAll();
        QCOMPARE(shown(), QString("02"));
    }

    void theCurrentRowFollowsItsFrame()
    {
        for (int id = 0; id < 10; ++id)
            model_->appendRows({row(id, id)});
        table_->setCurrentIndex(model_->index(7, 2));
        {
            const FrameTableView::Round round(*table_);
            model_->removeFirstRows(3);
            QCOMPARE(table_->currentRow(), 4);
            model_->mergeRow(row(7, 0x77));
        }
        QCOMPARE(table_->currentIndex(), model_->index(4, 2));
        QVERIFY(table_->selectionModel()->isRowSelected(4, QModelIndex()));
        model_->removeFirstRows(5);
        QVERIFY(!table_->currentIndex().isValid());
        QVERIFY(!table_->selectionModel()->hasSelection());
        QCOMPARE(table_->verticalHeader()->count(), 2);
    }

    void aLongDataTextCanBeReadWhole()
    {
        FrameRow longest = row(1, 1);
        longest[DataColumn] = "x| " + QString("DD ").repeated(64);
        const int before = table_->columnWidth(DataColumn);
        model_->appendRows({longest});
        const int needed = table_->fontMetrics().horizontalAdvance(longest[DataColumn]);
        QVERIFY(before < needed);
        QVERIFY(table_->columnWidth(DataColumn) > needed);
        QVERIFY(table_->horizontalScrollBar()->maximum() > 0);
        model_->clear();
        QCOMPARE(table_->columnWidth(DataColumn), before);
        table_->resize(2000, 400);
        QTRY_COMPARE(table_->columnViewportPosition(DataColumn) + table_->columnWidth(DataColumn),
                     table_->viewport()->width());
    }
};

QTEST_MAIN(TestDisplayFilter)
#include "test_displayfilter.moc"
