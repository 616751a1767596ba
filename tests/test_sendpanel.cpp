// Every case is run for both channels.
#include "device/language.h"
#include "dialogs/datadlg.h"
#include "sendbench.h"

#include <QTableWidget>

const char *const kClassicLengths = "0 1 2 3 4 5 6 7 8";
const char *const kFdLengths = "0 1 2 3 4 5 6 7 8 12 16 20 24 32 48 64";

class TestSendPanel : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SendBench> bench_;
    int channel_ = 0;

    SendPanel &panel() { return bench_->panel(channel_); }
    QComboBox *combo(const char *name) { return bench_->combo(channel_, name); }
    QLineEdit *edit(const char *name) { return bench_->edit(channel_, name); }
    QCheckBox *box(const char *name) { return bench_->box(channel_, name); }
    void clickSend() { bench_->button(channel_, "SendBtn")->click(); }
    void sendToTheEnd()
    {
        clickSend();
        QTRY_COMPARE(bench_->state(channel_), QString("idle"));
    }
    // Settings with "ch1" for this channel; the panel shows them.
    void restore(const QString &line)
    {
        bench_->folder.useSettings(QString(line).replace("ch1", QString("ch%1").arg(channel_ + 1)).toUtf8());
        panel().restore();
    }
    // The lengths on offer.
    QString enabledLengths()
    {
        QStringList lengths;
        const QComboBox *all = combo("sendLenCombo");
        for (int item = 0; item < all->count(); ++item)
            if (all->model()->flags(all->model()->index(item, 0)).testFlag(Qt::ItemIsEnabled))
                lengths << all->itemText(item);
        return lengths.join(' ');
    }
    template <typename Record> static QByteArray dataOf(const Record &record)
    {
        return {reinterpret_cast<const char *>(record.data), record.length};
    }

private slots:
    void initTestCase_data()
    {
        QTest::addColumn<int>("channel");
        QTest::newRow("channel 1") << 0;
        QTest::newRow("channel 2") << 1;
    }
    void init()
    {
        QFETCH_GLOBAL(int, channel);
        channel_ = channel;
        bench_ = std::make_unique<SendBench>();
    }
    void cleanup() { bench_.reset(); }

    void everyFieldIsRestoredAndStored()
    {
        for (bool data : {true, false}) {
            const QString fields = QString("ch%1DataAddChk,%2;ch%1FrameDataCombo,0;ch%1FrameTypeCombo,1;"
                                           "ch%1IDAddChk,%3;ch%1ProtocolCombo,2;ch%1SendCountEdit,-1;"
                                           "ch%1SendDataEdit,1 22;ch%1SendIDEdit,1FFFFFFF;ch%1SendInvEdit,7;"
                                           "ch%1SendTypeCombo,3;ch%1sendLenCombo,15")
                                       .arg(channel_ + 1)
                                       .arg(data ? 1 : 0)
                                       .arg(data ? 0 : 1);
            restore(fields);
            QCOMPARE(box("IDAddChk")->isChecked(), data); // both boxes follow the data box
            box("IDAddChk")->setChecked(!data);
            bench_->folder.write("config/setdb.txt", "");
            clickSend(); // refused
            QCOMPARE(QString::fromUtf8(bench_->folder.read("config/setdb.txt")), fields);
        }
    }

    void restoringWhatNoPanelStored()
    {
        restore("ch1FrameDataCombo,1;ch1ProtocolCombo,2;ch1sendLenCombo,15");
        QCOMPARE(combo("FrameDataCombo")->currentIndex(), 1);
        QCOMPARE(combo("ProtocolCombo")->currentIndex(), 0);
        QVERIFY(!combo("ProtocolCombo")->isEnabled());
        QCOMPARE(combo("sendLenCombo")->currentText(), QString("8"));
        restore("ch1ProtocolCombo,0;ch1sendLenCombo,15");
        QCOMPARE(combo("sendLenCombo")->currentText(), QString("8"));
        restore("ch1ProtocolCombo,1;ch1SendTypeCombo,4;ch1FrameTypeCombo,-1;ch1sendLenCombo,16");
        QCOMPARE(combo("SendTypeCombo")->currentIndex(), 0);
        QCOMPARE(combo("FrameTypeCombo")->currentIndex(), 0);
        QCOMPARE(combo("sendLenCombo")->currentText(), QString("8"));
        QCOMPARE(enabledLengths(), QString(kFdLengths));
    }

    void refusals()
    {
        const QString failed = channel_ == 0 ? "發送失敗" : "发送失败";
        const QStringList standard{"警告|发送失败，标准帧ID范围为0~0x7FF！",
                                   "警告|" + failed + "，標準幀ID範圍為0~0x7FF！",
                                   "warning|Sending failed, standard frame ID range is 0~0x7FF!"};
        const QStringList extended{"警告|发送失败，扩展帧ID范围为0~0x1FFFFFFF！",
                                   "警告|" + failed + "，擴展幀ID範圍為0~0x1FFFFFFF！",
                                   "warning|Sending failed, expanding frame ID range from 0 to 0x1FFFFFFFF!"};
        const QString number = QString::number(channel_ + 1);
        const QStringList closed{"提示|通道" + number + "未打开！", "提示|通道" + number + "未打開！",
                                 "warning|Channel " + number + " is not open!"};
        const std::pair<const char *, QStringList> refused[] = {
            {"800", standard}, {"80000000", standard}, {"20000000", extended}, {"FFFFFFFF", extended}, {"800", closed}};
        bench_->open();
        const QSignalSpy logged(&panel(), &SendPanel::logLine);
        for (const auto &[id, messages] : refused) {
            if (messages == closed)
                closeDevice(); // is looked at first
            combo("FrameTypeCombo")->setCurrentIndex(messages == extended ? 1 : 0);
            edit("SendIDEdit")->setText(id);
            for (unsigned language = 0; language < LanguageCount; ++language) {
                setLanguageCode(language);
                clickSend();
                QCOMPARE(bench_->answer.takeMessages(), QStringList(messages.at(int(language))));
            }
        }
        QCOMPARE(logged.size(), int(LanguageCount)); // the closed channel
        QCOMPARE(logged.first().first().toString(), closed.first().section('|', 1));
        QVERIFY(!panel().isSending());
        QCOMPARE(bench_->driver->calls(), QStringList{"CloseDevice(7)"});
    }

    void theWholeTemplateReachesTheBus()
    {
        bench_->open();
        panel().restore();
        for (const char *id : {"1", "7FF", "", "0x12"}) {
            edit("SendIDEdit")->setText(id);
            sendToTheEnd(); // the rest as if nothing was ever stored
        }
        restore("ch1DataAddChk,1;ch1FrameDataCombo,1;ch1SendDataEdit,12 345;ch1SendCountEdit,2;ch1SendInvEdit,0");
        box("IDAddChk")->setChecked(false);
        sendToTheEnd();
        const auto classic = bench_->driver->sentCan(unsigned(channel_));
        QString ids;
        for (const CanTransmitRecord &record : classic)
            ids += QString::number(record.id, 16) + " ";
        QCOMPARE(ids, QString("1 7ff 0 12 40000001 40000001 "));
        QCOMPARE(dataOf(classic[0]), QByteArray::fromHex("0011223344556677"));
        QCOMPARE(dataOf(classic[5]), QByteArray::fromHex("1303450000000000"));

        restore("ch1FrameTypeCombo,1;ch1ProtocolCombo,2;ch1SendTypeCombo,3;ch1sendLenCombo,15;"
                "ch1SendIDEdit,1FFFFFFF;ch1SendCountEdit,3;ch1SendInvEdit,0");
        edit("SendDataEdit")->setText(QString("f").repeated(2 * 70) + " 1");
        box("IDAddChk")->setChecked(true);
        sendToTheEnd();
        const auto fd = bench_->driver->sentFd(unsigned(channel_));
        QCOMPARE(fd.size(), std::size_t(3));
        QCOMPARE(fd[0].id, 0x9FFFFFFFu);
        QCOMPARE(fd[1].id, 0x80000000u);
        QCOMPARE(int(fd[2].flags), 1);
        QCOMPARE(fd[2].transmitType, 3u);
        QCOMPARE(dataOf(fd[2]), QByteArray(64, '\xff'));
        QVERIFY(edit("SendDataEdit")->text().endsWith("ff 01"));

        combo("ProtocolCombo")->setCurrentIndex(1); // FD at one rate
        sendToTheEnd();
        QCOMPARE(int(bench_->driver->sentFd(unsigned(channel_)).at(3).flags), 0);
    }

    void aRunThatEndsOnAClosedChannel()
    {
        bench_->open();
        restore("ch1SendCountEdit,-1;ch1SendInvEdit,3600000");
        clickSend();
        QTRY_COMPARE(bench_->driver->sentCan(unsigned(channel_)).size(), std::size_t(1));
        closeDevice();
        panel().stopSending();
        QTRY_VERIFY(!panel().isSending());
        QVERIFY(!bench_->button(channel_, "SendBtn")->isEnabled());
        QVERIFY(!bench_->button(channel_, "StopSendBtn")->isEnabled());
        QVERIFY(edit("SendIDEdit")->isEnabled());
    }

    void lengthAndProtocol()
    {
        panel().restore();
        QComboBox *protocol = combo("ProtocolCombo");
        QComboBox *length = combo("sendLenCombo");
        QLineEdit *data = edit("SendDataEdit");
        const QString ten = "00 01 02 03 04 05 06 07 08 09";
        protocol->setCurrentIndex(1);
        QCOMPARE(enabledLengths(), QString(kFdLengths));
        length->setCurrentIndex(15);
        data->setText(ten);
        combo("FrameDataCombo")->setCurrentIndex(1); // remote frames are classic
        QCOMPARE(protocol->currentIndex(), 0);
        QVERIFY(!protocol->isEnabled());
        QCOMPARE(enabledLengths(), QString(kClassicLengths));
        QCOMPARE(length->currentText(), QString("8"));
        // Channel 2's data follows the user's own choice alone.
        QCOMPARE(data->text(), channel_ == 0 ? "00 01 02 03 04 05 06 07 " : ten);

        data->setText("123 45");
        length->setCurrentIndex(2);
        emit length->activated(2);
        QCOMPARE(data->text(), QString("01 23 "));
        length->setCurrentIndex(0);
        QCOMPARE(data->text(), channel_ == 0 ? QString() : QString("01 23 "));
        emit length->activated(0);
        QCOMPARE(data->text(), QString());
        combo("FrameDataCombo")->setCurrentIndex(0);
        QVERIFY(protocol->isEnabled());
    }

    void fieldsTakeOnlyWhatCanBeMeant()
    {
        const QStringList fields[] = {{"SendIDEdit", "1;,gF -2", "1F2"},    {"SendIDEdit", "123456789", "12345678"},
                                      {"SendIDEdit", "0x7g", "0x7"},        {"SendCountEdit", "-2,1;0", "-1"},
                                      {"SendCountEdit", "1.0-x0", "100"},   {"SendInvEdit", "-1;0,a", "10"},
                                      {"SendDataEdit", "0,1 ;xAf", "01 Af"}};
        for (const QStringList &field : fields) {
            QLineEdit *typed = edit(qPrintable(field.at(0)));
            typed->clear();
            QTest::keyClicks(typed, field.at(1));
            QCOMPARE(typed->text(), field.at(2));
        }
    }

    void theByteEditorsBytesComeBack()
    {
        edit("SendDataEdit")->setText("123");
        combo("sendLenCombo")->setCurrentIndex(3);
        for (bool accepted : {true, false}) {
            bench_->answer.on<DataDlg>([accepted](DataDlg *dialog) {
                QCOMPARE(dialog->data(), QByteArray::fromHex(accepted ? "012300" : "0123AB"));
                dialog->findChild<QTableWidget *>()->item(2, 0)->setText(accepted ? "ab" : "99");
                dialog->done(accepted ? QDialog::Accepted : QDialog::Rejected);
            });
            bench_->bytesButton(channel_)->click();
            QCOMPARE(edit("SendDataEdit")->text(), QString("01 23 AB"));
        }
    }
};

QTEST_MAIN(TestSendPanel)
#include "test_sendpanel.moc"
