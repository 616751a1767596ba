#include "device/dialogs/filterdialog.h"
#include "device/language.h"
#include "modalhelper.h"
#include "testfolder.h"

#include <QComboBox>
#include <QSpinBox>
#include <QTableWidget>
#include <QtTest>

enum SelectorIndex { StandardRange, StandardSingle, ExtendedRange, ExtendedSingle };

class TestFilterDialog : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestFolder> folder_;

    static QSpinBox *spin(const FilterDialog &dialog, const char *name)
    {
        return dialog.findChild<QSpinBox *>(QLatin1String(name));
    }
    static void add(FilterDialog &dialog, SelectorIndex kind, int start, int end)
    {
        dialog.findChild<QComboBox *>("comboBox")->setCurrentIndex(kind);
        spin(dialog, "spinBoxStart")->setValue(start);
        spin(dialog, "spinBoxEnd")->setValue(end);
        pressButton(&dialog, "btnAdd");
    }
    static QString confirmed(FilterDialog &dialog)
    {
        pressButton(&dialog, "btnConfirm");
        return dialog.result() == QDialog::Accepted ? dialog.rowText() : QString("not accepted");
    }

private slots:
    void init() { folder_ = std::make_unique<TestFolder>(); }
    void cleanup() { folder_.reset(); }

    void rowTextInAndOut()
    {
        const char *const texts[][2] = {
            {"0-100-1FF|1-18FF0000-18FF00FF", "0-100-1FF|1-18FF0000-18FF00FF"},
            {"0-1-1|0-1-10", "0-1-1|0-1-10"},
            {"0-zz-900", "0-zz-900"},
            {"0-1-10|0-1-1", "0-1-10"}, // contained in an earlier row
            {"0-1-10|1-1-1", "0-1-10|1-1-1"},
            {"1-2-3|1-2-3|0-2-3", "1-2-3|0-2-3"},
            {"|0|0-1|0-1-2-3|5-1-2|x-1-2|-1-2|0-7-8|", "0-7-8"},
            {"|-|--|", ""},
        };
        for (unsigned code = 0; code < LanguageCount; ++code) {
            setLanguageCode(code);
            for (const auto &[in, out] : texts) {
                FilterDialog dialog(1, in);
                QCOMPARE(confirmed(dialog), QString(out));
            }
        }
    }

    void textsOfTheThreeLanguages()
    {
        const QStringList titles{"通道2滤波设置", "通道2濾波設置", "Channel2 filter set"};
        const QStringList kinds{"标准帧扩展帧", "標準幀擴展幀", "Standard FrameExtended Frame"};
        const QStringList errors{"错误|结束ID不可小于起始ID", "錯誤|結束ID不可小於起始ID",
                                 "error|The end ID cannot be less than the start ID"};
        FilterDialog dialog(2, "0-1-2|1-3-4");
        const auto *table = dialog.findChild<QTableWidget *>("tableWidget");
        ModalAnswer answers;
        for (int code = 0; code < int(LanguageCount); ++code) {
            setLanguageCode(unsigned(code));
            QEvent change(QEvent::LanguageChange);
            QCoreApplication::sendEvent(&dialog, &change);
            QCOMPARE(dialog.windowTitle(), titles.at(code));
            QCOMPARE(table->item(0, 0)->text() + table->item(1, 0)->text(), kinds.at(code));
            add(dialog, ExtendedRange, 0xA, 9);
            QCOMPARE(answers.takeMessages(), QStringList{errors.at(code)});
        }
        QCOMPARE(confirmed(dialog), QString("0-1-2|1-3-4"));
    }

    void addingAndDeleting()
    {
        const ModalAnswer noWarningWaits;
        FilterDialog dialog(1, "0-1-2");
        add(dialog, StandardRange, 0x9, 0x10); // as texts the other way round
        add(dialog, StandardRange, 0x9, 0xA);  // as decimal numbers the other way round
        add(dialog, StandardSingle, 0xAB, 0x1);
        add(dialog, ExtendedRange, 0x18FF0000, 0x1FFFFFFF);
        add(dialog, ExtendedSingle, 0x1ABCDEF, 0);
        auto *table = dialog.findChild<QTableWidget *>("tableWidget");
        for (int row : {3, 0}) {
            table->setCurrentCell(row, 1);
            pressButton(&dialog, "btnDelete");
        }
        QCOMPARE(confirmed(dialog), QString("0-9-10|0-9-A|1-18FF0000-1FFFFFFF|1-1ABCDEF-1ABCDEF"));

        FilterDialog none(1, "");
        pressButton(&none, "btnDelete"); // no row there
        QCOMPARE(confirmed(none), QString());

        FilterDialog left(1, "0-1-2");
        add(left, StandardSingle, 5, 5);
        pressButton(&left, "btnCancel");
        QCOMPARE(left.result(), int(QDialog::Rejected));
        QCOMPARE(left.rowText(), QString("0-1-2"));
        QVERIFY(noWarningWaits.messages().isEmpty());
    }

    void theKindSetsTheLimits()
    {
        const ModalAnswer noWarningWaits;
        FilterDialog dialog(1, "");
        auto *kind = dialog.findChild<QComboBox *>("comboBox");
        QSpinBox *start = spin(dialog, "spinBoxStart");
        QSpinBox *end = spin(dialog, "spinBoxEnd");
        for (int index : {ExtendedSingle, ExtendedRange, StandardSingle, StandardRange}) {
            kind->setCurrentIndex(index);
            start->setValue(0x7FFFFFFF);
            QCOMPARE(start->text(), QString(index >= ExtendedRange ? "1FFFFFFF" : "7FF"));
            QCOMPARE(end->maximum(), start->maximum());
            QCOMPARE(end->isEnabled(), index == StandardRange || index == ExtendedRange);
        }
        dialog.show();
        start->selectAll();
        QTest::keyClicks(start, "3ag");
        QCOMPARE(start->text().toUpper(), QString("3A"));
        end->setValue(0x7FF);
        QTest::keyClicks(start, "ff"); // the second is past the limit: not taken
        QTest::keyClick(start, Qt::Key_Return);
        QCOMPARE(dialog.focusWidget()->objectName(), QString("btnAdd"));
        QCOMPARE(dialog.findChild<QTableWidget *>("tableWidget")->rowCount(), 0); // not yet
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Return);
        QCOMPARE(confirmed(dialog), QString("0-3AF-7FF"));
    }
};

QTEST_MAIN(TestFilterDialog)
#include "test_filterdialog.moc"
