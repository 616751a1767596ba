#include "app/siftdialog.h"
#include "device/language.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QScreen>
#include <QtTest>

class TestSiftDialog : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SiftDialog> dialog_;
    std::unique_ptr<QSignalSpy> sifted_;

    QListView *list() const { return dialog_->findChild<QListView *>("listView"); }
    QLineEdit *searchEdit() const { return dialog_->findChild<QLineEdit *>("searchEdit"); }
    void search(const QString &text) const { searchEdit()->setText(text); }
    void confirm() const { dialog_->findChild<QPushButton *>("confirmBtn")->click(); }

    // What a user sees, ticked rows with a "+" before the text.
    QString rows() const
    {
        QStringList shown;
        const QAbstractItemModel *model = list()->model();
        for (int row = 0; row < model->rowCount(); ++row) {
            const QModelIndex index = model->index(row, 0);
            const bool ticked = index.data(Qt::CheckStateRole).toInt() == Qt::Checked;
            if (!list()->isRowHidden(row))
                shown << (ticked ? "+" : "") + index.data().toString();
        }
        return shown.join(' ');
    }
    void click(const QString &text) const
    {
        const QModelIndexList found =
            list()->model()->match(list()->model()->index(0, 0), Qt::DisplayRole, text, 1, Qt::MatchExactly);
        QVERIFY2(!found.isEmpty(), qPrintable(text));
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, list()->visualRect(found.first()).center());
    }
    // What the last confirmation told: the column, then the values.
    QString told() const
    {
        const QVariantList arguments = sifted_->isEmpty() ? QVariantList{QStringList(), "-"} : sifted_->takeFirst();
        return (arguments.at(1).toString() + ' ' + arguments.at(0).toStringList().join(' ')).trimmed();
    }

private slots:
    void init()
    {
        setLanguageCode(SimplifiedChinese);
        dialog_ = std::make_unique<SiftDialog>();
        sifted_ = std::make_unique<QSignalSpy>(dialog_.get(), &SiftDialog::siftedData);
        dialog_->fill({"xAbx", "ab", "AB", "c"}, 5);
        dialog_->popupAt(QPoint(10, 10));
    }
    void cleanup() { dialog_.reset(); }

    void ticksAndTheAllBox()
    {
        QCOMPARE(rows(), QString("全部 xAbx ab AB c"));
        click("全部");
        QCOMPARE(rows(), QString("+全部 +xAbx +ab +AB +c"));
        click("ab");
        QCOMPARE(rows(), QString("全部 +xAbx ab +AB +c"));
        click("ab");
        QCOMPARE(rows(), QString("全部 +xAbx +ab +AB +c"));
        confirm();
        QVERIFY(!dialog_->isVisible());
        QCOMPARE(told(), QString("5 xAbx AB c ab")); // in the order of ticking

        setLanguageCode(English);
        dialog_->fill({"p", "q"}, 2);
        QCOMPARE(rows(), QString("all p q"));
        click("q");
        click("all");
        QCOMPARE(rows(), QString("+all +p +q"));
        click("all");
        QCOMPARE(rows(), QString("all p q"));
        confirm();
        QCOMPARE(told(), QString("2")); // nothing ticked: the condition goes
    }

    void search()
    {
        const auto found = [this](const QString &text, bool caseSensitive, bool whole) {
            search(text);
            dialog_->findChild<QCheckBox *>("caseBox")->setChecked(caseSensitive);
            dialog_->findChild<QCheckBox *>("wholeBox")->setChecked(whole);
            return rows();
        };
        QCOMPARE(found("ab", false, false), QString("xAbx ab AB"));
        QCOMPARE(found("Ab", true, false), QString("xAbx"));
        QCOMPARE(found("ab", false, true), QString("ab AB"));
        QCOMPARE(found("ab", true, true), QString("ab"));
        for (const char *none : {"zz", "全", "."}) // no value, no pattern
            QCOMPARE(found(none, false, false), QString());
        QCOMPARE(found("", false, false), QString("全部 xAbx ab AB c"));
    }

    void ticksSurviveASearch()
    {
        click("c");
        search("ab");
        click("AB");
        QCOMPARE(rows(), QString("xAbx ab +AB"));
        search("");
        QCOMPARE(rows(), QString("全部 xAbx ab +AB +c"));
        click("全部");
        search("c");
        click("c");
        search("");
        QCOMPARE(rows(), QString("全部 +xAbx +ab +AB c"));
        search("x");
        confirm();
        QCOMPARE(told(), QString("5 AB xAbx ab"));
        QVERIFY(searchEdit()->text().isEmpty());
    }

    void cancelKeepsTheSearchText()
    {
        click("c");
        search("ab");
        dialog_->findChild<QPushButton *>("cancelBtn")->click();
        QVERIFY(!dialog_->isVisible());
        QCOMPARE(told(), QString("-"));
        QCOMPARE(searchEdit()->text(), QString("ab"));
        dialog_->fill({"ab", "c"}, 1);
        QCOMPARE(rows(), QString("全部 ab c")); // the text left over counts once it is edited
        search("b");
        QCOMPARE(rows(), QString("ab"));
    }

    void keyboard()
    {
        QTRY_VERIFY(searchEdit()->hasFocus());
        QTest::keyClicks(searchEdit(), "AB");
        list()->setFocus();
        QTest::keyClick(list(), Qt::Key_Space);
        QTest::keyClick(list(), Qt::Key_Down);
        QTest::keyClick(list(), Qt::Key_Space);
        QTest::keyClick(list(), Qt::Key_Return);
        QVERIFY(!dialog_->isVisible());
        QCOMPARE(told(), QString("5 xAbx ab"));
    }

    void staysOnTheScreen()
    {
        const QRect room = dialog_->screen()->availableGeometry();
        for (const QPoint &point : {room.bottomRight(), QPoint(-500, -500)}) {
            dialog_->popupAt(point);
            QVERIFY(room.contains(dialog_->geometry()));
        }
    }
};

QTEST_MAIN(TestSiftDialog)
#include "test_siftdialog.moc"
