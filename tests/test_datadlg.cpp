#include "bracketingtranslator.h"
#include "dialogs/datadlg.h"

#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableWidget>
#include <QtTest>

class TestDataDlg : public QObject
{
    Q_OBJECT

private:
    static QTableWidget *tableOf(const DataDlg &dialog) { return dialog.findChild<QTableWidget *>("tableWidget"); }

    static QString rowText(const DataDlg &dialog, int row)
    {
        QStringList cells;
        for (int column = 0; column < tableOf(dialog)->columnCount(); ++column)
            cells << tableOf(dialog)->item(row, column)->text();
        return cells.join(' ');
    }

private slots:
    void showsExactlyTheLengthAsked()
    {
        const DataDlg dialog(QByteArray("\x0a\xff\x31", 3), 2);
        QCOMPARE(dialog.findChild<QLabel *>("lengthLabel")->text(), QString("2"));
        QCOMPARE(tableOf(dialog)->rowCount(), 2);
        QCOMPARE(rowText(dialog, 0), QString("A 10 0 0 0 0 1 0 1 0"));
        QCOMPARE(rowText(dialog, 1), QString("FF 255 1 1 1 1 1 1 1 1"));
        QCOMPARE(dialog.data(), QByteArray("\x0a\xff"));

        QCOMPARE(DataDlg(QByteArray("\x01"), 3).data(), QByteArray("\x01\0\0", 3));
        const DataDlg empty(QByteArray("\x01"), 0);
        QCOMPARE(tableOf(empty)->rowCount(), 0);
        QVERIFY(empty.data().isEmpty());
        QCOMPARE(DataDlg(QByteArray(64, '\x5a'), 64).data(), QByteArray(64, '\x5a'));
    }

    void bitCellsAreClickedNotTyped()
    {
        const DataDlg dialog(QByteArray("\x01"), 1);
        for (int column = 0; column < 10; ++column) {
            const QTableWidgetItem *cell = tableOf(dialog)->item(0, column);
            QCOMPARE(cell->flags().testFlag(Qt::ItemIsEditable), column < 2);
            if (column >= 2) {
                QCOMPARE(cell->flags(), Qt::ItemIsSelectable | Qt::ItemIsEnabled);
                QCOMPARE(cell->background().color(), QColor(128, 128, 255));
            }
        }
    }

    void editing_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("row");
        QTest::newRow("hexadecimal") << 0 << "7e"
                                     << "7E 126 0 1 1 1 1 1 1 0";
        QTest::newRow("hexadecimal, too large") << 0 << "1FF"
                                                << "FF 255 1 1 1 1 1 1 1 1";
        QTest::newRow("hexadecimal, no number") << 0 << "no"
                                                << "0 0 0 0 0 0 0 0 0 0";
        QTest::newRow("decimal, too large") << 1 << "300"
                                            << "2C 44 0 0 1 0 1 1 0 0";
        QTest::newRow("decimal, negative") << 1 << "-1"
                                           << "FF 255 1 1 1 1 1 1 1 1";
        QTest::newRow("decimal, no number") << 1 << "FF"
                                            << "0 0 0 0 0 0 0 0 0 0";
        QTest::newRow("decimal, empty") << 1 << ""
                                        << "0 0 0 0 0 0 0 0 0 0";
    }
    void editing()
    {
        QFETCH(int, column);
        QFETCH(QString, text);
        QFETCH(QString, row);
        const DataDlg dialog(QByteArray("\x11\x22"), 2);
        const QSignalSpy changes(tableOf(dialog), &QTableWidget::itemChanged);
        tableOf(dialog)->item(1, column)->setText(text);
        QCOMPARE(changes.count(), 1); // the refill is silent
        QCOMPARE(rowText(dialog, 1), row);
        QCOMPARE(rowText(dialog, 0), QString("11 17 0 0 0 1 0 0 0 1"));
    }

    void aClickFlipsABit()
    {
        DataDlg dialog(QByteArray("\x00\x80", 2), 2);
        dialog.show();
        const auto click = [&](int row, int column) {
            QTableWidget *table = tableOf(dialog);
            QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier,
                              table->visualItemRect(table->item(row, column)).center());
        };
        click(1, 2); // bit 7
        QCOMPARE(dialog.data(), QByteArray("\0\0", 2));
        click(1, 9); // bit 0
        click(1, 3); // bit 6
        QCOMPARE(rowText(dialog, 1), QString("41 65 0 1 0 0 0 0 0 1"));
        click(1, 0);
        click(0, 1);
        QCOMPARE(dialog.data(), QByteArray("\0\x41", 2));
    }

    void buttonsAndLanguage()
    {
        DataDlg dialog(QByteArray("\x12"), 1);
        tableOf(dialog)->item(0, 0)->setText("34");
        const BracketingTranslator translator;
        QCoreApplication::processEvents();
        QCOMPARE(dialog.windowTitle(), QString("[数据编辑]"));
        QCOMPARE(tableOf(dialog)->horizontalHeaderItem(0)->text(), QString("[十六进制]"));
        QCOMPARE(dialog.findChild<QLabel *>("lengthLabel")->text(), QString("1"));
        QCOMPARE(dialog.data(), QByteArray("\x34"));

        dialog.findChild<QPushButton *>("pushButton")->click();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        dialog.findChild<QPushButton *>("pushButton_2")->click();
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
    }
};

QTEST_MAIN(TestDataDlg)
#include "test_datadlg.moc"
