#include "frames/mytablemodel.h"
#include "sampleframes.h"

#include <QtTest>

namespace
{

FrameRow row(const QString &id, const QString &data = QString(), const QString &channel = "1",
             const QString &direction = "Rx")
{
    FrameRow made;
    made[ChannelColumn] = channel;
    made[DirectionColumn] = direction;
    made[IdColumn] = id;
    made[DataColumn] = data;
    return made;
}

const QStringList kTitles{"t0", "t1", "t2", "t3", "t4", "t5", "t6", "t7", "t8", "t9", "t10"};

class TitledModel : public MyTableModel
{
public:
    TitledModel() { setHeader(kTitles); }
    QString dataTexts() const { return columnTexts(*this, DataColumn).join(' '); }
};

} // namespace

class TestMyTableModel : public QObject
{
    Q_OBJECT

private slots:
    void cells()
    {
        TitledModel model;
        model.appendRows({row("0x100")});
        const QModelIndex cell = model.index(0, IdColumn);
        QCOMPARE(model.data(cell, Qt::DisplayRole), QVariant("0x100"));
        QVERIFY(!model.data(cell, Qt::CheckStateRole).isValid() && !model.data(QModelIndex()).isValid());
        for (const QPoint &outside : {QPoint(11, 0), QPoint(-1, 0), QPoint(0, -1), QPoint(0, 1)})
            QVERIFY(model.cellText(outside.y(), outside.x()).isEmpty());
        QCOMPARE(model.headerData(5, Qt::Horizontal), QVariant("t5"));

        QSignalSpy changed(&model, &MyTableModel::dataChanged);
        QVERIFY(model.setData(cell, 42, Qt::DisplayRole));
        QCOMPARE(model.data(cell, Qt::EditRole), QVariant("42"));
        QCOMPARE(changed.value(0).value(0).toModelIndex(), cell);
        QVERIFY(!model.setData(cell, 1, Qt::ToolTipRole));
        model.setHeader(QStringList(kTitles) << "twelfth");
        QVERIFY(model.setData(model.index(0, 11), "lost", Qt::EditRole));
        QVERIFY(!model.data(model.index(0, 11)).isValid());
        QCOMPARE(changed.count(), 2);
    }

    void mergingKeysAndPlaces()
    {
        TitledModel model;
        // Rows that came unmerged: the oldest of the key is overwritten, whatever happens in between.
        model.appendRows({row("0x123", "1"), row("0x200", "1"), row("0x123", "2")});
        model.mergeRow(row("0x123", "3"));
        model.mergeRow(row("0x123", "4", "2"));
        model.mergeRow(row("0x123", "5", "1", "Tx"));
        model.mergeRow(row("0x00000123", "6"));
        model.mergeRow(row("0X123", "7"));
        QCOMPARE(model.dataTexts(), QString("3 1 2 4 5 6 7"));
        model.removeFirstRows(1);
        model.mergeRow(row("0x123", "8"));
        QCOMPARE(model.dataTexts(), QString("1 8 4 5 6 7"));
        model.removeFirstRows(2); // now every key stands once
        model.mergeRow(row("0x00000123", "9"));
        model.removeFirstRows(1);
        model.mergeRow(row("0x00000123", "10"));
        model.mergeRow(row("0x123", "11", "2"));
        QCOMPARE(model.dataTexts(), QString("5 10 7 11"));
        model.setData(model.index(2, IdColumn), "0x00000123");
        model.setData(model.index(1, IdColumn), "0x321");
        model.mergeRow(row("0x00000123", "12"));
        QCOMPARE(model.dataTexts(), QString("5 10 12 11"));
        model.appendRows({row("0x400", "13")});
        model.mergeRow(row("0x400", "14"));
        QCOMPARE(model.dataTexts(), QString("5 10 12 11 14"));
        model.clear();
        model.removeFirstRows(1);
        model.mergeRow(row("0x400", "15"));
        QCOMPARE(model.dataTexts(), QString("15"));
    }

    // What a view is told, and that it is told before and after the rows change.
    void everyChangeIsTold()
    {
        TitledModel model;
        QString told;
        const auto telling = [&](const char *what) {
            return [&, what](const QModelIndex &, int first, int last) {
                told += QString("%1%2-%3/%4 ").arg(what).arg(first).arg(last).arg(model.rowCount());
            };
        };
        connect(&model, &QAbstractItemModel::rowsAboutToBeInserted, this, telling("+?"));
        connect(&model, &QAbstractItemModel::rowsInserted, this, telling("+"));
        connect(&model, &QAbstractItemModel::rowsAboutToBeRemoved, this, telling("-?"));
        connect(&model, &QAbstractItemModel::rowsRemoved, this, telling("-"));
        connect(&model, &QAbstractItemModel::modelAboutToBeReset, this,
                [&] { told += "*?" + model.dataTexts() + ' '; });
        connect(&model, &QAbstractItemModel::modelReset, this, [&] { told += '*' + model.dataTexts() + ' '; });
        model.appendRows({});
        model.mergeRow(row("0x100", "a"));
        model.appendRows({row("0x101", "b"), row("0x102", "c")});
        QCOMPARE(told, QString("+?0-0/0 +0-0/1 +?1-2/1 +1-2/3 "));
        told.clear();
        model.mergeRow(row("0x101", "B"));
        model.mergeRow(row("0x104", "d"));
        QCOMPARE(told, QString("*?a b c *a B c +?3-3/3 +3-3/4 "));
        told.clear();
        model.removeFirstRows(0);
        model.removeFirstRows(2);
        QCOMPARE(told, QString("-?0-0/4 -0-0/3 -?0-0/3 -0-0/2 "));
        told.clear();
        model.appendRows({row("0x103")});
        model.clear();
        model.clear();
        QCOMPARE(told, QString("+?2-2/2 +2-2/3 -?0-2/3 -0-2/0 "));
    }

    void filtersMarkTitlesAndJudgeRows()
    {
        TitledModel model;
        QVERIFY(model.acceptsRow(row("0x123")));
        model.setFilter(IdColumn, {"0x123"});
        model.setFilter(IdColumn, {"0x123", "0x124"}); // marked once
        QCOMPARE(model.header().at(IdColumn), QString("t5*"));
        QVERIFY(model.acceptsRow(row("0x123")) && model.acceptsRow(row("0x124")));
        QVERIFY(!model.acceptsRow(row("0x00000123")) && !model.acceptsRow(row("0X123")));
        model.setFilter(DirectionColumn, {"Rx"});
        QVERIFY(!model.acceptsRow(sentFrame(0x123)) && !model.acceptsRow(receivedFrame(0x125)));
        QVERIFY(model.acceptsRow(receivedFrame(0x123)));

        model.setFilter(11, {"x"});
        model.setFilter(-1, {"x"});
        model.setHeader(kTitles); // drops the marks, not the conditions
        model.setFilter(IdColumn, {});
        QCOMPARE(model.header(), kTitles);
        QVERIFY(model.acceptsRow(row("0x125")) && !model.acceptsRow(sentFrame(0x125)));
        model.setFilter(DirectionColumn, {});
        QVERIFY(model.acceptsRow(sentFrame(0x125)));
    }
};

QTEST_GUILESS_MAIN(TestMyTableModel)
#include "test_mytablemodel.moc"
