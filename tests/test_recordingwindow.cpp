// The window of a recording, driven as a user drives it; what it shows is compared with what grep and awk find.
#include "analysis/recordingmodel.h"
#include "analysis/recordingview.h"
#include "analysis/recordingwindow.h"
#include "app/recordingopener.h"
#include "device/language.h"
#include "testfolder.h"
#include "transmit/csventries.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QCompleter>
#include <QFileDialog>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QProcess>
#include <QPushButton>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

namespace
{
constexpr int kRows = 40000;

QByteArray logText(int rows)
{
    QByteArray text;
    for (int i = 0; i < rows; ++i)
        text += QString::asprintf("(1700000000.%06d) can%d %03X#%02X%04X%s\n", i * 20, i % 2, 0x100 + i * 7 % 48,
                                  i % 256, i * 11 % 65536, i % 5 == 0 ? " T" : "")
                    .toLatin1();
    return text;
}

QByteArray shell(const QString &command)
{
    QProcess process;
    process.start(QStringLiteral("sh"), {QStringLiteral("-c"), command});
    process.waitForFinished();
    return process.readAllStandardOutput();
}
} // namespace

class TestRecordingWindow : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void filterJumpSearch();
    void wrongFilterAndCompletion();
    void times();
    void exportsWhatIsShown();
    void copiesForTheTransmitList();
    void bookmarks();
    void follows();
    void damaged();
    void dropped();

private:
    QLineEdit *line(const char *name) { return window_->findChild<QLineEdit *>(QLatin1String(name)); }
    void enter(const char *name, const char *text)
    {
        line(name)->clear();
        QTest::keyClicks(line(name), QLatin1String(text));
        QTest::keyClick(line(name), Qt::Key_Escape); // offers
        QTest::keyClick(line(name), Qt::Key_Return);
    }
    QString cell(int column) const
    {
        const auto row = int(view_->current() - model_->top());
        return model_->index(row, column).data().toString();
    }

    TestFolder folder_;
    QTemporaryDir dir_;
    QString log_;
    RecordingWindow *window_ = nullptr;
    RecordingView *view_ = nullptr;
    RecordingModel *model_ = nullptr;
};

void TestRecordingWindow::init()
{
    setLanguageCode(English);
    log_ = dir_.filePath(QStringLiteral("drive.log"));
    QFile file(log_);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(logText(kRows));
    file.close();
    QString error;
    window_ = RecordingWindow::openFile(log_, nullptr, &error);
    QVERIFY2(window_, qPrintable(error));
    view_ = window_->findChild<RecordingView *>();
    model_ = window_->findChild<RecordingModel *>();
    QTRY_COMPARE(model_->total(), std::uint64_t(kRows));
    QTRY_VERIFY(model_->rowCount() > 5);
    window_->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window_)); // for its keys
}

void TestRecordingWindow::cleanup()
{
    delete window_;
}

void TestRecordingWindow::filterJumpSearch()
{
    enter("recordingGoTo", "12345");
    QCOMPARE(cell(IndexColumn), QStringLiteral("12345"));
    const QByteArray there = shell(QStringLiteral("sed -n 12345p ") + log_);
    const QString id = QString::fromLatin1(there.split(' ').at(2).split('#').at(0));
    QCOMPARE(cell(IdColumn), QLatin1String("0x") + id);

    enter("recordingFilter", "id 107 and channel 2");
    const QByteArray lines = shell(QStringLiteral("grep -n 'can1 107#' ") + log_);
    QTRY_COMPARE(model_->total(), std::uint64_t(lines.count('\n')));
    QTRY_VERIFY(view_->current() > 0); // near where it was
    view_->setFocus();
    QTest::keyClick(view_, Qt::Key_End);
    QCOMPARE(cell(IndexColumn).toLatin1(), lines.trimmed().split('\n').last().split(':').first());
    QTest::keyClick(view_, Qt::Key_Home);
    QCOMPARE(cell(IndexColumn).toLatin1(), lines.split(':').first());

    // The next one of the filtered rows with this first byte, and back.
    enter("recordingSearch", "data 31");
    const QByteArray hit =
        shell(QStringLiteral("grep -n 'can1 107#31' %1 | head -1 | cut -d: -f1").arg(log_)).trimmed();
    QTRY_COMPARE(cell(IndexColumn).toLatin1(), hit);
    QTest::keyClick(view_, Qt::Key_End);
    QTest::keyClick(window_, Qt::Key_F3, Qt::ShiftModifier);
    const QByteArray last =
        shell(QStringLiteral("grep -n 'can1 107#31' %1 | tail -1 | cut -d: -f1").arg(log_)).trimmed();
    QTRY_COMPARE(cell(IndexColumn).toLatin1(), last);
    line("recordingFilter")->clear();
    QTRY_COMPARE(model_->total(), std::uint64_t(kRows));
    QCOMPARE(cell(IndexColumn).toLatin1(), last);
}

void TestRecordingWindow::wrongFilterAndCompletion()
{
    enter("recordingFilter", "id 107 and dta 3");
    QVERIFY(!window_->findChild<QLabel *>(QStringLiteral("recordingMessage"))->text().isEmpty());
    QCOMPARE(model_->total(), std::uint64_t(kRows));
    QLineEdit *filter = line("recordingFilter");
    filter->clear();
    QTest::keyClicks(filter, QStringLiteral("chan"));
    auto *completer = filter->findChild<QCompleter *>();
    QVERIFY(completer && completer->completionCount() > 0);
    emit completer->activated(completer->currentCompletion());
    QCOMPARE(filter->text(), QStringLiteral("channel"));
}

void TestRecordingWindow::times()
{
    auto *box = window_->findChild<QComboBox *>(QStringLiteral("recordingTimes"));
    enter("recordingGoTo", "0.2s"); // 20 microseconds a row
    QCOMPARE(cell(IndexColumn), QStringLiteral("10001"));
    QCOMPARE(cell(TimeStampColumn), QStringLiteral("0.200000"));
    box->setCurrentIndex(int(RecordingTimes::SincePrevious));
    QCOMPARE(cell(TimeStampColumn), QStringLiteral("0.000020"));
    box->setCurrentIndex(int(RecordingTimes::SincePreviousOfId)); // 48 rows further up
    QCOMPARE(cell(TimeStampColumn), QStringLiteral("0.000960"));
    QTest::mouseClick(window_->findChild<QPushButton *>(QStringLiteral("recordingMark")), Qt::LeftButton);
    QTest::keyClick(view_, Qt::Key_Up);
    QCOMPARE(cell(TimeStampColumn), QStringLiteral("-0.000020"));
    box->setCurrentIndex(int(RecordingTimes::Absolute));
    QVERIFY(cell(TimeStampColumn).startsWith(QStringLiteral("2023-11-1")));
    QVERIFY(cell(TimeStampColumn).endsWith(QStringLiteral(":20.199980")));
}

void TestRecordingWindow::exportsWhatIsShown()
{
    enter("recordingFilter", "tx and id 110..11F");
    const QString awk = QStringLiteral("awk '$3 ~ /^11/ && $4 == \"T\" {print $2, $3}' %1");
    const QByteArray expected = shell(awk.arg(log_));
    QTRY_COMPARE(model_->total(), std::uint64_t(expected.count('\n')));
    const QString target = dir_.filePath(QStringLiteral("out.log"));
    auto *shown = window_->findChild<QAction *>(QStringLiteral("actionExportShown"));
    QTRY_VERIFY(shown->isEnabled());
    QTimer answer;
    connect(&answer, &QTimer::timeout, this, [&] {
        if (auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget())) {
            answer.stop();
            dialog->selectFile(target);
            static_cast<QDialog *>(dialog)->accept();
        }
    });
    answer.start(10);
    shown->trigger();
    QTRY_VERIFY(QFile::exists(target));
    QCOMPARE(shell(awk.arg(target)), expected);
    QCOMPARE(shell(QStringLiteral("wc -l < ") + target).trimmed().toInt(), expected.count('\n'));
}

void TestRecordingWindow::copiesForTheTransmitList()
{
    enter("recordingFilter", "id 100 or id 107 and channel 2");
    QTRY_COMPARE(model_->total(), std::uint64_t(2 * (kRows + 47) / 48));
    view_->setCurrent(2);
    view_->setCurrent(2 + 799, true);
    QTest::keyClick(view_, Qt::Key_C, Qt::ControlModifier);
    const CsvEntries taken = entriesFromCsv(QApplication::clipboard()->text());
    QCOMPARE(taken.skipped, 1); // the titles
    QCOMPARE(taken.entries.size(), 2);
    for (int entry = 0; entry < 2; ++entry) {
        QCOMPARE(taken.entries[entry]->frame.id, entry == 0 ? 0x100U : 0x107U);
        QCOMPARE(taken.entries[entry]->channel, unsigned(entry));
        QCOMPARE(taken.entries[entry]->interval, 1U); // 48 frames, 20 us apart
    }
}

void TestRecordingWindow::bookmarks()
{
    enter("recordingGoTo", "77");
    QTimer answer;
    connect(&answer, &QTimer::timeout, this, [&] {
        if (auto *dialog = qobject_cast<QInputDialog *>(QApplication::activeModalWidget())) {
            answer.stop();
            dialog->setTextValue(QStringLiteral("engine stalls"));
            dialog->accept();
        }
    });
    answer.start(10);
    QTest::keyClick(view_, Qt::Key_B, Qt::ControlModifier);
    QTRY_VERIFY(!answer.isActive());
    QFile kept(log_ + QStringLiteral(".bookmarks.txt"));
    QTRY_VERIFY(kept.exists());
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.readAll(), QByteArray("77\tengine stalls\n"));
    QCOMPARE(cell(IndexColumn), QStringLiteral("77 *"));
    QCOMPARE(RecordingBookmarks(log_).all().value(76), QStringLiteral("engine stalls"));
    window_->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window_));
    QTest::keyClick(view_, Qt::Key_B, Qt::ControlModifier);
    QTRY_VERIFY(!kept.exists());
}

void TestRecordingWindow::follows()
{
    window_->findChild<QCheckBox *>(QStringLiteral("recordingFollow"))->click();
    const std::uint64_t top = model_->top();
    QFile file(log_);
    QVERIFY(file.open(QIODevice::Append));
    file.write(logText(500));
    file.close();
    QTRY_COMPARE(model_->total(), std::uint64_t(kRows + 500));
    QTRY_COMPARE(model_->top(), top + 500);
    QVERIFY(QFile::resize(log_, 100));
    QTRY_VERIFY(
        window_->findChild<QLabel *>(QStringLiteral("recordingStatus"))->text().contains(QLatin1String("shorter")));
    enter("recordingGoTo", "30000"); // a row that is no longer there
    QCOMPARE(cell(IndexColumn), QStringLiteral("30000"));
}

void TestRecordingWindow::damaged()
{
    QFile file(log_);
    QVERIFY(file.open(QIODevice::Append));
    file.write("(1700000001.000000) can0 12\n");
    file.close();
    QString error;
    const std::unique_ptr<RecordingWindow> damaged(RecordingWindow::openFile(log_, nullptr, &error));
    auto *status = damaged->findChild<QLabel *>(QStringLiteral("recordingStatus"));
    const std::pair<unsigned, const char *> texts[] = {{English, "reading ended at line 40001: no whole frame"},
                                                       {SimplifiedChinese, "读取止于第 40001 行：不是完整的帧"},
                                                       {TraditionalChinese, "讀取止於第 40001 行：不是完整的幀"}};
    for (const auto &[code, text] : texts) {
        setLanguageCode(code);
        QEvent change(QEvent::LanguageChange);
        QApplication::sendEvent(damaged.get(), &change);
        QTRY_VERIFY2(status->text().contains(QString::fromUtf8(text)), qPrintable(status->text()));
    }
}

void TestRecordingWindow::dropped()
{
    QWidget main;
    RecordingOpener opener(&main);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(log_)});
    main.show();
    QDragEnterEvent enters(QPoint(1, 1), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&main, &enters);
    QVERIFY(enters.isAccepted());
    QDropEvent drop(QPointF(1, 1), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&main, &drop);
    QTRY_COMPARE(main.findChildren<RecordingWindow *>().size(), 1);
}

QTEST_MAIN(TestRecordingWindow)
#include "test_recordingwindow.moc"
