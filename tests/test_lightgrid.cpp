// The grid of filled rectangles against the one that Qt draws: the same view, the same picture.
#include "app/frametableview.h"
#include "sampleframes.h"

#include <QHeaderView>
#include <QScrollBar>
#include <QTableWidget>
#include <QtTest>

class TestLightGrid : public QObject
{
    Q_OBJECT

private:
    // What a paint event for these parts draws.
    static QImage picture(QTableView &view, const QRegion &parts, bool qtsGrid)
    {
        view.setShowGrid(qtsGrid);
        QImage image(view.viewport()->size(), QImage::Format_RGB32);
        image.fill(Qt::red);
        view.viewport()->render(&image, parts.boundingRect().topLeft(), parts);
        return image;
    }
    static void compare(QTableView &view)
    {
        QVERIFY(!view.showGrid());
        const QRect all = view.viewport()->rect();
        const QRegion parts[] = {all, QRect(31, 17, 230, 90), QRegion(5, 3, 200, 40) + QRegion(90, 30, 250, 77)};
        for (const QRegion &region : parts) {
            const QImage ours = picture(view, region, false);
            QCOMPARE(ours, picture(view, region, true));
            view.setShowGrid(false);
        }
    }

private slots:
    void frameTable_data()
    {
        QTest::addColumn<int>("rows");
        QTest::addColumn<bool>("hide");
        QTest::addColumn<QPoint>("scrolled");
        QTest::newRow("empty") << 0 << false << QPoint();
        QTest::newRow("few rows") << 3 << false << QPoint();
        QTest::newRow("many rows") << 60 << false << QPoint(0, 0);
        QTest::newRow("scrolled") << 60 << false << QPoint(137, 203);
        QTest::newRow("to the end") << 60 << false << QPoint(9999, 9999);
        QTest::newRow("hidden") << 60 << true << QPoint(0, 0);
        QTest::newRow("hidden, scrolled") << 60 << true << QPoint(71, 107);
    }
    void frameTable()
    {
        QFETCH(int, rows);
        QFETCH(bool, hide);
        QFETCH(QPoint, scrolled);
        MyTableModel model;
        model.setHeader(QStringList({"A", "B", "C", "D", "E", "F", "G", "H", "I", "J", "K"}));
        FrameTableView table;
        table.setFrameModel(&model);
        table.resize(600, 260);
        table.show();
        QVERIFY(QTest::qWaitForWindowExposed(&table));
        QList<FrameRow> frames;
        for (int row = 0; row < rows; ++row)
            frames << toFrameRow(receivedFrame(unsigned(row) % 7));
        model.appendRows(frames);
        table.setColumnHidden(ChannelColumn, hide);
        if (hide) {
            model.setFilter(IdColumn, {"0x001", "0x002", "0x005"});
            table.filterChanged();
        }
        table.selectRow(rows / 2 - 1);
        QCoreApplication::processEvents(); // lays the rows out
        table.horizontalScrollBar()->setValue(scrolled.x());
        table.verticalScrollBar()->setValue(scrolled.y());
        compare(table);
    }

    void widgetWithItems()
    {
        LightGridTable<QTableWidget> table;
        table.setColumnCount(9);
        table.setRowCount(9);
        table.resize(420, 240);
        for (int cell = 0; cell < 81; ++cell)
            table.setItem(cell / 9, cell % 9, new QTableWidgetItem(QString::number(cell * 111)));
        table.item(3, 2)->setBackground(Qt::yellow);
        table.item(4, 3)->setCheckState(Qt::Checked);
        table.item(5, 4)->setTextAlignment(Qt::AlignRight | Qt::AlignBottom);
        table.setCurrentCell(2, 1);
        table.show();
        QVERIFY(QTest::qWaitForWindowExposed(&table));
        table.setSelectionMode(QAbstractItemView::ExtendedSelection);
        compare(table);
        table.selectAll();
        table.horizontalHeader()->moveSection(2, 0);
        table.setRowHeight(1, 61);
        compare(table);
    }
};

QTEST_MAIN(TestLightGrid)
#include "test_lightgrid.moc"
