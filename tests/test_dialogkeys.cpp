// Every dialog by keyboard: Tab reaches every button, and Enter presses what has the focus.
#include "device/devicelayer.h"
#include "device/driver/driverfactory.h"
#include "everydialog.h"
#include "testfolder.h"

#include <QPushButton>
#include <QTimer>
#include <QtTest>

class DialogKeysTest : public QObject
{
    Q_OBJECT

private:
    TestFolder folder_;

private slots:
    void initTestCase() { setDriver(makeDriver("simulated")); }
    void cleanupTestCase() { setDriver(nullptr); }

    void enter_data()
    {
        QTest::addColumn<int>("dialog");
        // What Enter presses elsewhere than on a button: what can be undone, or nothing.
        const QMap<QByteArray, QString> defaults{
            {"device-operations", "pushButton"}, {"parameters", "btnConfirm"},
            {"parameters-view", "btnConfirm"},   {"device-information", "pushButton"},
            {"value-entry", "btnValueOK"},       {"data-editor", "pushButton"},
            {"capture-file", "okBtn"},           {"display-filter", "confirmBtn"},
            {"list-send-messages", "okButton"}};
        QTest::addColumn<QString>("inFields");
        for (int dialog = 1; dialog < everyWindow().size(); ++dialog) { // the first is the main window
            const QByteArray name = everyWindow().at(dialog).name;
            QTest::newRow(name.constData())
                << dialog << defaults.value(name.left(11) == "value-entry" ? "value-entry" : name);
        }
    }
    void enter()
    {
        QFETCH(int, dialog);
        QFETCH(QString, inFields);
        const std::unique_ptr<QWidget> window = everyWindow().at(dialog).make();
        for (QTimer *timer : window->findChildren<QTimer *>())
            timer->stop(); // the device's state takes no part
        QSet<QString> waiting;
        QStringList pressed;
        for (QPushButton *button : window->findChildren<QPushButton *>()) {
            if (button->isHidden())
                continue;
            button->setEnabled(true);
            button->setMenu(nullptr);                                    // it would wait for an answer
            disconnect(button, &QPushButton::clicked, nullptr, nullptr); // only who was pressed counts here
            connect(button, &QPushButton::clicked, this, [&pressed, button] { pressed << button->objectName(); });
            waiting << button->objectName();
        }
        window->show();
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
        for (int step = 0; step < 50 && !waiting.isEmpty(); ++step) {
            QWidget *focus = window->focusWidget();
            QVERIFY(focus);
            const bool isButton = qobject_cast<QPushButton *>(focus);
            QTest::keyClick(focus, step % 2 == 0 ? Qt::Key_Return : Qt::Key_Enter);
            QCOMPARE(pressed.join(' '), isButton ? focus->objectName() : inFields);
            pressed.clear();
            waiting.remove(focus->objectName());
            focus->setFocus(); // a field may lead on to the next step
            QTest::keyClick(focus, Qt::Key_Tab);
        }
        QCOMPARE(QStringList(waiting.values()).join(' '), QString());
    }

    void theUpgradeIsNotWhatEnterBegins()
    {
        for (const WindowMaker &maker : everyWindow()) {
            if (maker.name != "firmware-upgrade")
                continue;
            const std::unique_ptr<QWidget> question = maker.make();
            question->show();
            QTest::keyClick(question->focusWidget(), Qt::Key_Return);
            QVERIFY(question->isHidden());
        }
    }
};

QTEST_MAIN(DialogKeysTest)
#include "test_dialogkeys.moc"
