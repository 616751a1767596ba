#include "app/frametableview.h"
#include "app/receiveview.h"
#include "device/devicelayer.h"
#include "device/driver/driverfactory.h"
#include "device/language.h"
#include "sampleframes.h"
#include "traces/columntitles.h"

#include <QCheckBox>
#include <QHelpEvent>
#include <QScrollBar>
#include <QToolTip>
#include <QtTest>

class TestFrameTable : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<MyTableModel> model_;
    std::unique_ptr<FrameTableView> table_;

    QRect cell(int row, int column) const { return table_->visualRect(model_->index(row, column)); }
    QRgb background(int row) const
    {
        return table_->viewport()->grab().toImage().pixel(cell(row, IndexColumn).topLeft() + QPoint(1, 1));
    }
    void fill(int row, int column, const QString &text) const
    {
        model_->setData(model_->index(row, column), text, Qt::EditRole);
    }
    // Where the last character of a cell ends.
    int inkEnd(int row, int column) const
    {
        const QRect place = cell(row, column).adjusted(0, 0, -1, -1); // without the grid
        const QImage image = table_->viewport()->grab(place).toImage();
        for (int x = image.width() - 1; x >= 0; --x)
            for (int y = 0; y < image.height(); ++y)
                if (image.pixel(x, y) != image.pixel(0, 0))
                    return x;
        return -1;
    }
    QString tip(int row, int column) const
    {
        const QPoint point = cell(row, column).center();
        QHelpEvent help(QEvent::ToolTip, point, table_->viewport()->mapToGlobal(point));
        QCoreApplication::sendEvent(table_->viewport(), &help);
        return QToolTip::text();
    }

private slots:
    void init()
    {
        setLanguageCode(English);
        model_ = std::make_unique<MyTableModel>();
        model_->setHeader(columnTitles());
        table_ = std::make_unique<FrameTableView>();
        table_->setFrameModel(model_.get());
        table_->resize(900, 400);
        table_->show();
        QVERIFY(QTest::qWaitForWindowExposed(table_.get()));
    }
    void cleanup()
    {
        table_.reset();
        model_.reset();
    }

    void rowsAreChosenWholeAndOneAtATime()
    {
        model_->appendRows(rows({1, 2, 3, 4, 5}));
        QTest::mouseClick(table_->viewport(), Qt::LeftButton, {}, cell(1, 3).center());
        QTest::mouseClick(table_->viewport(), Qt::LeftButton, Qt::ControlModifier, cell(3, 4).center());
        QTest::mouseClick(table_->viewport(), Qt::LeftButton, Qt::ShiftModifier, cell(4, 4).center());
        const QModelIndexList chosen = table_->selectionModel()->selectedRows();
        QCOMPARE(chosen, QModelIndexList{model_->index(4, 0)});
    }

    void rowsAlternateAndScrollByPixels()
    {
        model_->appendRows(rows(QList<std::uint8_t>::fromVector(QVector<std::uint8_t>(50, 7))));
        table_->verticalScrollBar()->setValue(0);
        QVERIFY(background(0) != background(1));
        QCOMPARE(background(0), background(2));
        table_->verticalScrollBar()->setValue(5);
        QCOMPARE(cell(0, 0).top(), -5);
        table_->setColumnWidth(SystemTimeColumn, 700);
        table_->horizontalScrollBar()->setValue(3);
        QCOMPARE(cell(0, 0).left(), -3);
    }

    void charactersStandUnderEachOther()
    {
        table_->resize(1600, 400);
        model_->appendRows(rows({1, 2, 3}));
        for (const int column : {TimeStampColumn, IdColumn, DataColumn}) {
            fill(0, column, "11.11..8");
            fill(2, column, "DDWDDWW8");
            QVERIFY(inkEnd(0, column) > 0);
            QCOMPARE(inkEnd(0, column), inkEnd(2, column));
        }
    }

    void whatIsCutStandsInTheTip()
    {
        setLanguageCode(English);
        model_->appendRows(rows({1, 2}));
        fill(0, ProtocolColumn, "CANFD-acceleration");
        fill(1, ProtocolColumn, "CANFD");
        QVERIFY(table_->columnWidth(ProtocolColumn) <
                table_->sizeHintForIndex(model_->index(0, ProtocolColumn)).width());
        QVERIFY(table_->columnWidth(ProtocolColumn) >
                table_->sizeHintForIndex(model_->index(1, ProtocolColumn)).width());
        QCOMPARE(tip(0, ProtocolColumn), QString("CANFD-acceleration"));
        QToolTip::hideText();
        QTRY_VERIFY(QToolTip::text().isEmpty());
        QCOMPARE(tip(1, ProtocolColumn), QString());
    }

    // Every state and language a hint of its own; none beside rows.
    void theEmptyTableSaysWhatToDo()
    {
        setDriver(makeDriver("simulated"));
        ReceiveView view;
        view.resize(900, 400);
        view.show();
        FrameTableView *table = view.findChild<FrameTableView *>();
        const auto picture = [&] {
            view.refresh();
            return table->viewport()->grab().toImage();
        };
        table->setHint(TableHint::None);
        const QImage bare = table->viewport()->grab().toImage();
        QList<QImage> seen{bare};
        const auto isNew = [&] {
            const QImage image = picture();
            const bool known = seen.contains(image);
            seen << image;
            return !known;
        };
        for (unsigned code = 0; code < LanguageCount; ++code) {
            setLanguageCode(code);
            QVERIFY(isNew());
            QVERIFY(openDevice(kDeviceType, 0, 0));
            QVERIFY(isNew());
            QVERIFY(initChannel(0, 0) && startChannel(0));
            QVERIFY(isNew());
            view.model()->setFilter(IdColumn, {"0x001"});
            QVERIFY(isNew());
            view.findChild<QCheckBox *>("pauseBox")->setChecked(true);
            QVERIFY(isNew());
            view.findChild<QCheckBox *>("pauseBox")->setChecked(false);
            view.model()->setFilter(IdColumn, {});
            closeDevice();
        }
        view.model()->appendRows(rows({1}));
        const QImage below = picture().copy(0, 100, 900, 400);
        QCOMPARE(below, bare.copy(0, 100, 900, 400));
        setDriver(nullptr);
    }

    void theCurrentRowFollowsItsFrame()
    {
        model_->appendRows(rows({0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
        table_->setCurrentIndex(model_->index(7, 2));
        {
            const FrameTableView::Round round(*table_);
            model_->removeFirstRows(3);
            QCOMPARE(table_->currentRow(), 4);
            model_->mergeRow(toFrameRow(receivedFrame(7, 0x77)));
        }
        QCOMPARE(table_->currentIndex(), model_->index(4, 2));
        QVERIFY(table_->selectionModel()->isRowSelected(4, QModelIndex()));
        model_->removeFirstRows(5);
        QVERIFY(!table_->currentIndex().isValid());
        QVERIFY(!table_->selectionModel()->hasSelection());
    }

    void aLongDataTextCanBeReadWhole()
    {
        QList<FrameRow> longest = rows({1});
        longest.first()[DataColumn] = "x| " + QString("DD ").repeated(64);
        const int before = table_->columnWidth(DataColumn);
        model_->appendRows(longest);
        const int needed = table_->sizeHintForIndex(model_->index(0, DataColumn)).width();
        QVERIFY(before < needed);
        QVERIFY(table_->columnWidth(DataColumn) >= needed);
        QVERIFY(table_->horizontalScrollBar()->maximum() > 0);
        model_->clear();
        QCOMPARE(table_->columnWidth(DataColumn), before);
        table_->resize(2000, 400);
        QTRY_COMPARE(table_->columnViewportPosition(DataColumn) + table_->columnWidth(DataColumn),
                     table_->viewport()->width());
    }
};

QTEST_MAIN(TestFrameTable)
#include "test_frametable.moc"
