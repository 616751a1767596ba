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
        QCOMPARE(rowText(dialog, 0), QString("A 10 0 0 0 0 1 0 1 0"));
        QCOMPARE(rowText(dialog, 1), QString("FF 255 1 1 1 1 1 1 1 1"));
        QCOMPARE(dialog.data(), QByteArray("\x0a\xff"));
        for (int column = 0; column < 10; ++column) { // bits are clicked, not typed; those that are set stand out
            const QTableWidgetItem *cell = tableOf(dialog)->item(0, column);
            QCOMPARE(cell->flags().testFlag(Qt::ItemIsEditable), column < 2);
            QCOMPARE(cell->background().color() == QColor(128, 128, 255), column >= 2);
            const bool set = column >= 2 && cell->text() == "1";
            QCOMPARE(cell->font().bold(), set);
            QCOMPARE(cell->foreground().color() == QColor(Qt::white), set);
        }

        QCOMPARE(DataDlg(QByteArray("\x01"), 3).data(), QByteArray("\x01\0\0", 3));
        QVERIFY(DataDlg(QByteArray("\x01"), 0).data().isEmpty());
        QCOMPARE(DataDlg(QByteArray(64, '\x5a'), 64).data(), QByteArray(64, '\x5a'));
    }

    void editing()
    {
        const char *const zero = "0 0 0 0 0 0 0 0 0 0";
        const char *const full = "FF 255 1 1 1 1 1 1 1 1";
        const struct {
            int column;
            const char *typed;
            const char *row;
        } edits[] = {{0, "7e", "7E 126 0 1 1 1 1 1 1 0"}, {0, "1FF", full}, {0, "no", zero}, {1, "-1", full},
                     {1, "300", "2C 44 0 0 1 0 1 1 0 0"}, {1, "FF", zero},  {1, "", zero}};
        for (const auto &edit : edits) {
            const DataDlg dialog(QByteArray("\x11\x22"), 2);
            const QSignalSpy changes(tableOf(dialog), &QTableWidget::itemChanged);
            tableOf(dialog)->item(1, edit.column)->setText(edit.typed);
            QCOMPARE(changes.count(), 1); // the refill is silent
            QCOMPARE(rowText(dialog, 1), QString(edit.row));
            QCOMPARE(rowText(dialog, 0), QString("11 17 0 0 0 1 0 0 0 1"));
        }
    }

    void aClickFlipsABit()
    {
        DataDlg dialog(QByteArray("\x00\x80", 2), 2);
        dialog.show();
        QTableWidget *table = tableOf(dialog);
        const auto click = [&](int row, int column) {
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

        const QPoint bit0 = table->visualItemRect(table->item(0, 9)).center();
        click(0, 9);
        QTest::mouseDClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, bit0); // whose first half was the click
        QTest::mouseRelease(table->viewport(), Qt::LeftButton, Qt::NoModifier, bit0);
        QCOMPARE(rowText(dialog, 0), QString("1 1 0 0 0 0 0 0 0 1"));
        click(0, 9);
        QTest::keyClick(table, Qt::Key_Left); // to bit 1
        QTest::keyClick(table, Qt::Key_Space);
        QCOMPARE(dialog.data(), QByteArray("\x02\x41", 2));

        dialog.findChild<QPushButton *>("pushButton")->click();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        dialog.findChild<QPushButton *>("pushButton_2")->click();
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
    }
};

QTEST_MAIN(TestDataDlg)
#include "test_datadlg.moc"
