#include "device/devicelayer.h"
#include "device/driver/driverfactory.h"
#include "device/language.h"
#include "dialogs/datadlg.h"
#include "dialogs/listsenddlg.h"
#include "dialogs/messagedlg.h"
#include "frames/pendingframes.h"
#include "modalhelper.h"
#include "testfolder.h"
#include "transmit/framechecks.h"
#include "transmit/transmitfile.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTableView>
#include <QTableWidget>
#include <QtTest>

namespace
{

// The window as a user has it before him.
struct User {
    std::unique_ptr<listSendDlg> window = std::make_unique<listSendDlg>();

    User()
    {
        window->show();
        window->activateWindow();
    }
    void trigger(const char *name) const { window->findChild<QAction *>(QLatin1String(name))->trigger(); }
    QTableView *table() const { return window->findChild<QTableView *>(); }
    QAbstractItemModel *model() const { return table()->model(); }
    QString text(int row, int column) const { return model()->index(row, column).data().toString(); }
    // Types into the editor of a cell; a choice by its index.
    void edit(int row, int column, const QString &text, int choice = -1) const
    {
        const QModelIndex index = model()->index(row, column);
        table()->setCurrentIndex(index);
        table()->edit(index);
        if (auto *combo = table()->viewport()->findChild<QComboBox *>()) {
            combo->setCurrentIndex(choice);
            emit combo->activated(choice);
        } else if (auto *line = table()->viewport()->findChild<QLineEdit *>()) {
            line->selectAll();
            QTest::keyClicks(line, text);
            QTest::keyClick(line, Qt::Key_Return);
        }
        QCoreApplication::processEvents(); // the editor hands over its text
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    void select(int first, int last) const
    {
        table()->setCurrentIndex(model()->index(first, NameColumn));
        table()->selectionModel()->select(
            QItemSelection(model()->index(first, 0), model()->index(last, TransmitColumnCount - 1)),
            QItemSelectionModel::ClearAndSelect);
    }
    QString ids() const
    {
        QStringList all;
        for (int row = 0; row < model()->rowCount(); ++row)
            all << text(row, EntryIdColumn);
        return all.join(' ');
    }
    QString hint() const { return window->findChild<QLabel *>("hintLabel")->text(); }
};

} // namespace

class TestTransmitList : public QObject
{
    Q_OBJECT

    std::unique_ptr<TestFolder> folder_;

private slots:
    void init()
    {
        folder_.reset(); // before the new one takes its place
        folder_ = std::make_unique<TestFolder>();
        QSettings::setDefaultFormat(QSettings::IniFormat);
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, folder_->path("desktop"));
        setLanguageCode(English);
        setDriver(makeDriver("simulated"));
    }
    void cleanup()
    {
        closeDevice();
        setDriver(nullptr);
        takePendingFrames();
    }

    void rowsAreEditedInPlaceAndUndone()
    {
        const User user;
        for (int i = 0; i < 3; ++i)
            user.trigger("actionAdd");
        for (int row = 0; row < 3; ++row)
            user.edit(row, EntryIdColumn, QString::number(row + 1));
        QCOMPARE(user.ids(), QString("001 002 003"));
        user.edit(1, EntryIdColumn, "800"); // not as a standard frame
        QVERIFY(user.hint().contains("0~0x7FF"));
        QCOMPARE(user.text(1, EntryIdColumn), QString("002"));
        user.edit(1, EntryProtocolColumn, {}, CanFd);
        user.edit(1, LengthColumn, {}, 9);
        user.edit(1, EntryDataColumn, "11 22");
        QCOMPARE(user.text(1, EntryDataColumn), QString("11 22 00 00 00 00 00 00 00 00 00 00"));

        user.select(0, 1);
        user.trigger("actionCopy");
        QCOMPARE(user.ids(), QString("001 002 001 002 003"));
        user.trigger("actionDown"); // the copies are selected
        QCOMPARE(user.ids(), QString("001 002 003 001 002"));
        user.trigger("actionDown");
        QCOMPARE(user.ids(), QString("001 002 003 001 002"));
        user.select(1, 3);
        user.trigger("actionUp");
        QCOMPARE(user.ids(), QString("002 003 001 001 002"));
        user.select(0, 1);
        user.trigger("actionRemove");
        QCOMPARE(user.ids(), QString("001 001 002"));
        user.select(0, 2);
        user.trigger("actionSwitch");
        for (const TransmitEntryPointer &entry : user.window->document()->list())
            QVERIFY(!entry->on);
        user.edit(0, IntervalColumn, "77");
        user.select(0, 2);
        user.table()->selectionModel()->setCurrentIndex(user.model()->index(0, IntervalColumn),
                                                        QItemSelectionModel::NoUpdate);
        user.trigger("actionFill");
        QCOMPARE(user.text(2, IntervalColumn), QString("77"));

        while (user.window->document()->undoStack()->canUndo())
            user.trigger("actionUndo");
        QCOMPARE(user.ids(), QString());
        while (user.window->document()->undoStack()->canRedo())
            user.trigger("actionRedo");
        QCOMPARE(user.ids(), QString("001 001 002"));
        QCOMPARE(user.text(2, IntervalColumn), QString("77"));
    }

    void messagesOfADatabaseAreTakenAndEdited()
    {
        DatabaseSet set;
        QVERIFY(set.add(QStringLiteral(OSTREL_VEHICLE_DATABASE), DatabaseChannels::Second).change ==
                DatabaseSet::Change::Loaded);
        const User user;
        user.trigger("actionMessages"); // without databases: nothing
        user.window->setDatabases({[&set] { return set.entries(); }, [&set] { return set.lookup(); }, {}});
        ModalAnswer answer;
        answer.on<MessageDlg>([](MessageDlg *dialog) {
            dialog->findChild<QLineEdit *>("searchEdit")->setText("chassis speed 0d1");
            dialog->findChild<QPushButton *>("okButton")->click();
        });
        user.trigger("actionMessages");
        QCOMPARE(user.ids(), QString("0D1"));
        QCOMPARE(user.text(0, NameColumn), QString("Speed"));
        QCOMPARE(user.text(0, EntryChannelColumn), QString("2"));
        QCOMPARE(user.text(0, IntervalColumn), QString("10"));

        auto *fields = user.window->findChild<QTableView *>("fieldView");
        QVERIFY(fields->isVisible());
        user.trigger("actionSignals");
        QCOMPARE(fields->currentIndex().column(), int(FieldValueColumn));
        const QModelIndex speed = fields->model()->index(1, FieldValueColumn);
        fields->setCurrentIndex(speed);
        QTest::keyClick(fields, Qt::Key_F2);
        auto *line = fields->viewport()->findChild<QLineEdit *>();
        QVERIFY(line);
        QTest::keyClicks(line, "123.45");
        QTest::keyClick(line, Qt::Key_Return);
        QTRY_COMPARE(speed.data().toString(), QString("123.45"));
        QCOMPARE(user.text(0, EntryDataColumn), QString("00 30 39 00 00 00"));
        user.trigger("actionUndo");
        QCOMPARE(speed.data().toString(), QString("0"));
        user.edit(0, EntryIdColumn, "7"); // nobody's message
        QVERIFY(!fields->isVisible());
        user.trigger("actionSignals");
        QVERIFY(!user.hint().isEmpty());
    }

    void theByteEditorChangesTheData()
    {
        const User user;
        user.trigger("actionAdd");
        ModalAnswer answer;
        answer.on<DataDlg>([](DataDlg *dialog) {
            dialog->findChild<QTableWidget *>()->item(7, 0)->setText("AB");
            dialog->accept();
        });
        user.select(0, 0);
        user.trigger("actionBytes");
        QCOMPARE(user.text(0, EntryDataColumn), QString("00 00 00 00 00 00 00 AB"));
        QVERIFY(answer.unexpected().isEmpty());
    }

    void startsStopsAndSendsOnAKey()
    {
        QVERIFY(openDevice(kDeviceType, 0, 0) && initChannel(0, 0) && startChannel(0));
        const User user;
        QSignalSpy log(user.window.get(), &listSendDlg::logLine);
        auto *start = user.window->findChild<QPushButton *>("pbnStart");
        auto *stop = user.window->findChild<QPushButton *>("pbnStop");
        start->click();
        QVERIFY(!user.hint().isEmpty() && start->isEnabled() && !stop->isEnabled());
        user.trigger("actionAdd");
        user.edit(0, IntervalColumn, "2");
        start->click();
        QVERIFY(stop->isEnabled() && !start->isEnabled());
        QTRY_VERIFY(user.text(0, SentColumn).toInt() > 10); // the window shows it live
        QVERIFY(!user.text(0, LastSentColumn).isEmpty());
        user.edit(0, ModeColumn, {}, int(TransmitMode::Counted)); // begins anew, and is through
        QTRY_VERIFY(start->isEnabled());
        QVERIFY(log.last().first().toString().contains("stopped"));

        user.edit(0, KeyColumn, {}, 1);
        const int before = user.text(0, SentColumn).toInt();
        QTest::keyClick(user.window.get(), Qt::Key_F5);
        user.select(0, 0);
        user.trigger("actionSendOnce");
        QTRY_COMPARE(user.text(0, SentColumn).toInt(), before + 2);

        user.edit(0, ModeColumn, {}, int(TransmitMode::Periodic));
        start->click();
        QTest::keyClick(user.window.get(), Qt::Key_Escape);
        QVERIFY(user.window->isVisible());
        pressButton(user.window.get(), "pbnClose"); // what cannot be seen does not send
        QVERIFY(!user.window->isVisible() && !stop->isEnabled());
    }

    void theLastListComesBack()
    {
        const QString path = folder_->path("my list.json");
        {
            const User user;
            user.trigger("actionAdd");
            QCOMPARE(user.window->document()->save(path), QString());
            QVERIFY(user.window->windowTitle().endsWith("my list.json"));
        }
        {
            const User user;
            QCOMPARE(user.ids(), QString("001"));
            user.trigger("actionAdd"); // not saved
        }
        QCOMPARE(readTransmitFile(path).entries.size(), 1);
        {
            const User user;
            QCOMPARE(user.ids(), QString("001 001"));
            QVERIFY(user.window->windowTitle().endsWith("*"));
            ModalAnswer answer; // answers "no": the list stays
            user.trigger("actionNew");
            QCOMPARE(answer.messages().size(), 1);
            QCOMPARE(user.ids(), QString("001 001"));
            QCOMPARE(user.window->document()->save(path), QString());
        }
        folder_->write("config/transmit-unsaved.json", "{");
        {
            const User user;
            QCOMPARE(user.ids(), QString("001 001"));
            QVERIFY(user.hint().contains("line 1"));
            QCOMPARE(folder_->read("config/transmit-unsaved.damaged.json"), QByteArray("{"));
        }
        folder_->write("my list.json", "{\"format\": ");
        {
            const User user;
            QCOMPARE(user.ids(), QString());
            QVERIFY(user.hint().contains("line 1"));
            QCOMPARE(folder_->read("my list.json"), QByteArray("{\"format\": "));
            user.trigger("actionAdd"); // not of the damaged file
        }
        const User user;
        QCOMPARE(user.ids(), QString("001"));
        QVERIFY(user.window->document()->path().isEmpty());
    }
};

QTEST_MAIN(TestTransmitList)
#include "test_transmitlist.moc"
