#include "app/siftdialog.h"
#include "device/language.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
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
    QStringList rows() const
    {
        QStringList shown;
        const QAbstractItemModel *model = list()->model();
        for (int row = 0; row < model->rowCount(); ++row) {
            if (list()->isRowHidden(row))
                continue;
            const QModelIndex index = model->index(row, 0);
            shown << (index.data(Qt::CheckStateRole).toInt() == Qt::Checked ? "+" : "") + index.data().toString();
        }
        return shown;
    }
    void click(const QString &text) const
    {
        const QModelIndexList found =
            list()->model()->match(list()->model()->index(0, 0), Qt::DisplayRole, text, 1, Qt::MatchExactly);
        QVERIFY2(!found.isEmpty(), qPrintable(text));
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, list()->visualRect(found.first()).center());
    }
    // What the last confirmation told: the column, then the values.
    QStringList told() const
    {
        if (sifted_->isEmpty())
            return {};
        const QVariantList arguments = sifted_->takeFirst();
        return QStringList(QString::number(arguments.at(1).toInt())) + arguments.at(0).toStringList();
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
        QVERIFY(dialog_->windowFlags() & Qt::FramelessWindowHint);
        QCOMPARE(rows(), QStringList({"全部", "xAbx", "ab", "AB", "c"}));
        click("全部");
        QCOMPARE(rows(), QStringList({"+全部", "+xAbx", "+ab", "+AB", "+c"}));
        click("ab");
        QCOMPARE(rows(), QStringList({"全部", "+xAbx", "ab", "+AB", "+c"}));
        click("ab");
        QCOMPARE(rows(), QStringList({"全部", "+xAbx", "+ab", "+AB", "+c"}));
        confirm();
        QVERIFY(!dialog_->isVisible());
        QCOMPARE(told(), QStringList({"5", "xAbx", "AB", "c", "ab"})); // in the order of ticking

        dialog_->fill({"p", "q"}, 2);
        QCOMPARE(rows(), QStringList({"全部", "p", "q"}));
        click("q");
        click("全部");
        QCOMPARE(rows(), QStringList({"+全部", "+p", "+q"}));
        click("全部");
        QCOMPARE(rows(), QStringList({"全部", "p", "q"}));
        confirm();
        QCOMPARE(told(), QStringList{"2"}); // nothing ticked: the condition goes
    }

    void search_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("caseSensitive");
        QTest::addColumn<bool>("whole");
        QTest::addColumn<QStringList>("shown");
        QTest::newRow("part, any case") << "ab" << false << false << QStringList{"xAbx", "ab", "AB"};
        QTest::newRow("part, this case") << "Ab" << true << false << QStringList{"xAbx"};
        QTest::newRow("whole, any case") << "ab" << false << true << QStringList{"ab", "AB"};
        QTest::newRow("whole, this case") << "ab" << true << true << QStringList{"ab"};
        QTest::newRow("none") << "zz" << false << false << QStringList();
        QTest::newRow("all is no value") << "全" << false << false << QStringList();
        QTest::newRow("no pattern") << "." << false << false << QStringList();
    }
    void search()
    {
        QFETCH(QString, text);
        QFETCH(bool, caseSensitive);
        QFETCH(bool, whole);
        QFETCH(QStringList, shown);
        search(text);
        dialog_->findChild<QCheckBox *>("caseBox")->setChecked(caseSensitive);
        dialog_->findChild<QCheckBox *>("wholeBox")->setChecked(whole);
        QCOMPARE(rows(), shown);
        search("");
        QCOMPARE(rows(), QStringList({"全部", "xAbx", "ab", "AB", "c"}));
    }

    void ticksSurviveASearch()
    {
        click("c");
        search("ab");
        click("AB");
        QCOMPARE(rows(), QStringList({"xAbx", "ab", "+AB"}));
        search("");
        QCOMPARE(rows(), QStringList({"全部", "xAbx", "ab", "+AB", "+c"}));
        click("全部");
        search("c");
        search("");
        QCOMPARE(rows(), QStringList({"+全部", "+xAbx", "+ab", "+AB", "+c"}));
        search("c");
        click("c");
        search("");
        QCOMPARE(rows(), QStringList({"全部", "+xAbx", "+ab", "+AB", "c"}));
        search("x");
        confirm();
        QCOMPARE(told(), QStringList({"5", "AB", "xAbx", "ab"}));
        QVERIFY(searchEdit()->text().isEmpty());
    }

    void cancelKeepsTheSearchText()
    {
        click("c");
        search("ab");
        dialog_->findChild<QPushButton *>("cancelBtn")->click();
        QVERIFY(!dialog_->isVisible());
        QVERIFY(told().isEmpty());
        QCOMPARE(searchEdit()->text(), QString("ab"));
        dialog_->fill({"ab", "c"}, 1);
        QCOMPARE(rows(), QStringList({"全部", "ab", "c"})); // the text left over counts once it is edited
        search("b");
        QCOMPARE(rows(), QStringList{"ab"});
    }

    void keyboard()
    {
        QTRY_VERIFY(searchEdit()->hasFocus());
        QTest::keyClicks(searchEdit(), "AB");
        list()->setFocus();
        QTest::keyClick(list(), Qt::Key_Space);
        QTest::keyClick(list(), Qt::Key_Down);
        QTest::keyClick(list(), Qt::Key_Space);
        QCOMPARE(rows(), QStringList({"+xAbx", "+ab", "AB"}));
        QTest::keyClick(list(), Qt::Key_Return);
        QVERIFY(!dialog_->isVisible());
        QCOMPARE(told(), QStringList({"5", "xAbx", "ab"}));

        dialog_->popupAt(QPoint(10, 10));
        QTest::keyClick(searchEdit(), Qt::Key_Escape);
        QVERIFY(!dialog_->isVisible());
        QVERIFY(told().isEmpty());
    }

    void allBoxFollowsTheLanguage_data()
    {
        QTest::addColumn<unsigned>("language");
        QTest::addColumn<QString>("all");
        QTest::newRow("simplified") << 0u << "全部";
        QTest::newRow("traditional") << 1u << "全部";
        QTest::newRow("english") << 2u << "all";
    }
    void allBoxFollowsTheLanguage()
    {
        QFETCH(unsigned, language);
        QFETCH(QString, all);
        setLanguageCode(language);
        dialog_->fill({}, 0);
        QCOMPARE(rows(), QStringList{all});
    }

    void staysOnTheScreen()
    {
        const QRect room = dialog_->screen()->availableGeometry();
        dialog_->popupAt(room.bottomRight());
        QVERIFY(room.contains(dialog_->geometry()));
        dialog_->popupAt(QPoint(-500, -500));
        QVERIFY(room.contains(dialog_->geometry()));
    }
};

QTEST_MAIN(TestSiftDialog)
#include "test_siftdialog.moc"
