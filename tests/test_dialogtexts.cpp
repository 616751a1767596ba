// Every window in every language: no text of another language, none that is cut, no widget on another, no choice of the
// user that a switch undoes. CTest runs this program once for each logical DPI, which the toolkit reads when it starts.
#include "app/languageswitcher.h"
#include "device/devicelayer.h"
#include "device/driver/driverfactory.h"
#include "device/language.h"
#include "everydialog.h"
#include "testfolder.h"
#include "widgettexts.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QScreen>
#include <QTextCodec>
#include <QtTest>

namespace
{
// At the usual 96 DPI, without a window's frame: fits 1024x600, and 1920x1080 at twice the size.
constexpr QSize kSmallScreen(944, 500);
constexpr int kUsualDpi = 96;

const char *const kLanguageNames[LanguageCount] = {"simplified", "traditional", "english"};
const char *const kLanguageActions[LanguageCount] = {"actionSimplifiedChinese", "actionTraditionalChinese",
                                                     "actionEnglish"};

// Texts that are meant to be in another language or script.
bool isOwnChoice(const ShownText &shown)
{
    static const QStringList texts = {
        QStringLiteral("简体中文"),
        QStringLiteral("繁體中文"),
        QStringLiteral("English"),                                  // the languages' own names
        QStringLiteral("Frame"),                                    // a column's only title
        QStringLiteral("id 100..1FF and data 02 ?? 7F and not rx"), // the filter's own words
        QStringLiteral("啓用濾波"), // in a form of the character that the encoding lacks
        QStringLiteral("The firmware version(V2.10)is too low，Do you want to upgrade the firmware?"), // a wide comma
    };
    return texts.contains(shown.text);
}

// What is wrong with the text in this language; empty: nothing.
QString foreign(const ShownText &shown, unsigned language)
{
    static const QRegularExpression englishWord(QStringLiteral("[a-z]{3,}"));
    static const QRegularExpression names(
        QStringLiteral("Ostrel|Halden-D2.*|[kM]bps|[kM]bit|Ctrl|Shift|[*N]\\.[a-z]+"));
    static const QRegularExpression han(QStringLiteral("[\\x{4e00}-\\x{9fff}]"));
    static const QRegularExpression chinese(
        QStringLiteral("[\\x{3000}-\\x{303f}\\x{4e00}-\\x{9fff}\\x{ff01}-\\x{ff5e}]"));
    if (isOwnChoice(shown))
        return {};
    if (language == English)
        return shown.text.contains(chinese) ? "Chinese" : QString();
    // The encodings of the two scripts do not know the characters of each other.
    if (!QTextCodec::codecForName(language == SimplifiedChinese ? "HZ-GB-2312" : "Big5")->canEncode(shown.text))
        return "the other script";
    const QString words = QString(shown.text).remove(names);
    return !words.contains(han) && words.contains(englishWord) ? "English" : QString();
}

// Other choices than those of a new window.
void choose(const QWidget &window)
{
    for (QComboBox *combo : window.findChildren<QComboBox *>())
        combo->setCurrentIndex(combo->count() - 1);
    for (QLineEdit *edit : window.findChildren<QLineEdit *>())
        edit->setText(qobject_cast<QAbstractSpinBox *>(edit->parent()) ? "2" : "1 2 3");
}

QStringList choices(const QWidget &window)
{
    QStringList found;
    for (const QWidget *widget : window.findChildren<QWidget *>()) {
        QString choice = widget->isEnabled() ? "on" : "off";
        if (const auto *edit = qobject_cast<const QLineEdit *>(widget))
            choice += edit->text();
        else if (const auto *combo = qobject_cast<const QComboBox *>(widget))
            choice += QString::number(combo->currentIndex());
        else if (!qobject_cast<const QAbstractButton *>(widget) || widget->objectName().startsWith("qt_"))
            continue; // what the toolkit adds follows the room that texts need
        found << widget->objectName() + " " + choice;
    }
    return found;
}
} // namespace

class DialogTextsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(QTextCodec::codecForName("HZ-GB-2312") && QTextCodec::codecForName("Big5"));
        folder_.copyCatalogues();
        setDriver(makeDriver("simulated"));
        const QByteArray dpi = qgetenv("QT_FONT_DPI");
        if (!dpi.isEmpty())
            QCOMPARE(QGuiApplication::primaryScreen()->logicalDotsPerInch(), dpi.toDouble());
    }
    void cleanupTestCase() { setDriver(nullptr); }

    void windows_data()
    {
        QTest::addColumn<int>("window");
        QTest::addColumn<int>("language");
        QTest::addColumn<bool>("switched"); // while the window is there
        for (int window = 0; window < everyWindow().size(); ++window) {
            const QByteArray name = everyWindow().at(window).name;
            for (int language = 0; language < int(LanguageCount); ++language) {
                QTest::addRow("%s, %s", name.constData(), kLanguageNames[language]) << window << language << false;
                // A value entry's title is its owner's, and no language can be chosen while it is shown.
                if (!name.startsWith("value-entry"))
                    QTest::addRow("%s, switched to %s", name.constData(), kLanguageNames[language])
                        << window << language << true;
            }
        }
    }
    void windows()
    {
        QFETCH(int, window);
        QFETCH(int, language);
        QFETCH(bool, switched);
        LanguageSwitcher switcher;
        const auto code = static_cast<unsigned>(language);
        QVERIFY(switcher.switchTo(switched ? (code + 1) % LanguageCount : code));
        const std::unique_ptr<QWidget> shown = everyWindow().at(window).make();
        shown->show();
        settle();
        if (switched) {
            choose(*shown);
            const QStringList before = choices(*shown);
            if (QAction *action = shown->findChild<QAction *>(kLanguageActions[code]))
                action->trigger();
            else
                QVERIFY(switcher.switchTo(code));
            settle();
            QCOMPARE(choices(*shown), before);
        }

        QStringList problems = cutTexts(*shown) + overlaps(*shown) + sharedKeys(*shown);
        const QSize room = kSmallScreen * shown->logicalDpiX() / kUsualDpi;
        if (window > 0 && shown->minimumSizeHint().expandedTo(room) != room)
            problems << QString("is too large for a small screen: %1x%2")
                            .arg(shown->minimumSizeHint().width())
                            .arg(shown->minimumSizeHint().height());
        const QVector<ShownText> texts = shownTexts(*shown);
        QVERIFY(!texts.isEmpty());
        for (const ShownText &text : texts) {
            const QString problem = foreign(text, code);
            if (!problem.isEmpty())
                problems << QString("%1 is %2: %3").arg(text.where, problem, text.text);
        }
        QVERIFY2(problems.isEmpty(), qPrintable('\n' + problems.join('\n')));
    }

    void toolkitTextsFollow()
    {
        const char *const cancel[LanguageCount] = {"取消", "取消", "Cancel"};
        LanguageSwitcher switcher;
        for (unsigned code = 0; code < LanguageCount; ++code) {
            QVERIFY(switcher.switchTo(code));
            const QMessageBox box(QMessageBox::Warning, QString(), QString(), QMessageBox::Cancel);
            QCOMPARE(box.button(QMessageBox::Cancel)->text().remove('&'), QString(cancel[code]));
        }
    }

private:
    // Everything but timers: layouts, language changes, painting.
    static void settle()
    {
        for (int round = 0; round < 3; ++round)
            QCoreApplication::sendPostedEvents();
    }

    TestFolder folder_;
};

QTEST_MAIN(DialogTextsTest)
#include "test_dialogtexts.moc"
