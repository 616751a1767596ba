#include "bracketingtranslator.h"
#include "device/language.h"
#include "device/settingsstore.h"
#include "dialogs/datadlg.h"
#include "sendbench.h"

#include <QTableWidget>

class TestSendPanel : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SendBench> bench_;

    static void bothChannels()
    {
        QTest::addColumn<int>("channel");
        QTest::newRow("channel 1") << 0;
        QTest::newRow("channel 2") << 1;
    }
    // The lengths on offer.
    QString enabledLengths(int channel)
    {
        QStringList lengths;
        const QComboBox *combo = bench_->combo(channel, "sendLenCombo");
        for (int item = 0; item < combo->count(); ++item)
            if (combo->model()->flags(combo->model()->index(item, 0)).testFlag(Qt::ItemIsEnabled))
                lengths << combo->itemText(item);
        return lengths.join(' ');
    }
    QString stored(int channel, const char *name)
    {
        return settings::value(QStringLiteral("ch%1%2").arg(channel + 1).arg(name), "absent");
    }

private slots:
    void init() { bench_ = std::make_unique<SendBench>(); }
    void cleanup() { bench_.reset(); }

    void defaults_data() { bothChannels(); }
    void defaults()
    {
        QFETCH(int, channel);
        SendBench &b = *bench_;
        QVERIFY(b.button(channel, "SendBtn")->isEnabled());
        b.restore();
        QCOMPARE(b.panel(channel).title(), QString("通道%1发送").arg(channel + 1));
        QCOMPARE(b.state(channel), QString("idle"));
        for (const char *name : {"FrameTypeCombo", "FrameDataCombo", "ProtocolCombo", "SendTypeCombo"})
            QCOMPARE(b.combo(channel, name)->currentIndex(), 0);
        QCOMPARE(b.combo(channel, "sendLenCombo")->currentText(), QString("8"));
        QCOMPARE(b.edit(channel, "SendDataEdit")->text(), QString("00 11 22 33 44 55 66 77"));
        QCOMPARE(b.edit(channel, "SendIDEdit")->text(), QString("00000001"));
        QCOMPARE(b.edit(channel, "SendCountEdit")->text(), QString("1"));
        QCOMPARE(b.edit(channel, "SendInvEdit")->text(), QString("10"));
        QVERIFY(!b.box(channel, "DataAddChk")->isChecked());
        QVERIFY(!b.box(channel, "IDAddChk")->isChecked());
        QCOMPARE(enabledLengths(channel), QString("0 1 2 3 4 5 6 7 8"));
    }

    void sendingStoresEveryFieldAlsoWhenRefused_data() { bothChannels(); }
    void sendingStoresEveryFieldAlsoWhenRefused()
    {
        QFETCH(int, channel);
        SendBench &b = *bench_;
        b.restore();
        b.combo(channel, "FrameTypeCombo")->setCurrentIndex(1);
        b.combo(channel, "ProtocolCombo")->setCurrentIndex(2);
        b.combo(channel, "SendTypeCombo")->setCurrentIndex(3);
        b.combo(channel, "sendLenCombo")->setCurrentIndex(15);
        b.edit(channel, "SendDataEdit")->setText("1 22");
        b.edit(channel, "SendIDEdit")->setText("1FFFFFFF");
        b.edit(channel, "SendCountEdit")->setText("-1");
        b.edit(channel, "SendInvEdit")->setText("7");
        b.box(channel, "IDAddChk")->setChecked(true);
        const QSignalSpy logged(&b.panel(channel), &SendPanel::logLine);

        const char *texts[] = {"提示|通道%1未打开！", "提示|通道%1未打開！", "warning|Channel %1 is not open!"};
        for (unsigned language = 0; language < LanguageCount; ++language) {
            setLanguageCode(language);
            b.button(channel, "SendBtn")->click();
            const QString message = QString(texts[language]).arg(channel + 1);
            QCOMPARE(b.answer.takeMessages(), QStringList(message));
            QCOMPARE(logged.at(int(language)).first().toString(), message.section('|', 1));
        }
        QCOMPARE(b.state(channel), QString("idle"));
        QVERIFY(!b.thread1.isRunning() && !b.thread2.isRunning());

        settings::load(b.folder.settingsPath());
        const std::pair<const char *, const char *> fields[] = {
            {"FrameTypeCombo", "1"}, {"FrameDataCombo", "0"},  {"ProtocolCombo", "2"},     {"SendTypeCombo", "3"},
            {"sendLenCombo", "15"},  {"SendDataEdit", "1 22"}, {"SendIDEdit", "1FFFFFFF"}, {"SendCountEdit", "-1"},
            {"SendInvEdit", "7"},    {"DataAddChk", "0"},      {"IDAddChk", "1"}};
        for (const auto &[name, text] : fields)
            QCOMPARE(stored(channel, name), QString(text));
        QCOMPARE(stored(1 - channel, "IDAddChk"), QString("absent"));
    }

    void bothBoxesAreRestoredFromTheDataBox_data() { bothChannels(); }
    void bothBoxesAreRestoredFromTheDataBox()
    {
        QFETCH(int, channel);
        SendBench &b = *bench_;
        for (bool data : {true, false}) {
            settings::setValue(QString("ch%1DataAddChk").arg(channel + 1), data ? "1" : "0", false);
            settings::setValue(QString("ch%1IDAddChk").arg(channel + 1), data ? "0" : "1", false);
            b.restore();
            QCOMPARE(b.box(channel, "DataAddChk")->isChecked(), data);
            QCOMPARE(b.box(channel, "IDAddChk")->isChecked(), data);
        }
    }

    void restoringWhatNoPanelStored()
    {
        SendBench &b = *bench_;
        b.folder.write("config/setdb.txt",
                       "ch1FrameDataCombo,1;ch1ProtocolCombo,2;ch1sendLenCombo,15;ch2ProtocolCombo,1;"
                       "ch2SendTypeCombo,4;ch2FrameTypeCombo,-1;ch2sendLenCombo,16");
        settings::load(b.folder.settingsPath());
        b.restore();
        QCOMPARE(b.combo(0, "FrameDataCombo")->currentIndex(), 1);
        QCOMPARE(b.combo(0, "ProtocolCombo")->currentIndex(), 0);
        QVERIFY(!b.combo(0, "ProtocolCombo")->isEnabled());
        QCOMPARE(b.combo(0, "sendLenCombo")->currentText(), QString("8"));
        QCOMPARE(b.combo(1, "SendTypeCombo")->currentIndex(), 0);
        QCOMPARE(b.combo(1, "FrameTypeCombo")->currentIndex(), 0);
        QCOMPARE(b.combo(1, "sendLenCombo")->currentText(), QString("8"));
        QCOMPARE(enabledLengths(1), QString("0 1 2 3 4 5 6 7 8 12 16 20 24 32 48 64"));
    }

    void identifierRange_data()
    {
        QTest::addColumn<int>("format");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("sentId"); // empty: refused
        QTest::newRow("standard, last") << 0 << "7FF"
                                        << "7ff";
        QTest::newRow("standard, past") << 0 << "800"
                                        << "";
        QTest::newRow("standard, highest bit") << 0 << "80000000"
                                               << "";
        QTest::newRow("standard, no number") << 0 << ""
                                             << "0";
        QTest::newRow("prefix") << 0 << "0x12"
                                << "12";
        QTest::newRow("extended, last") << 1 << "1fffffff"
                                        << "9fffffff";
        QTest::newRow("extended, past") << 1 << "20000000"
                                        << "";
        QTest::newRow("extended, all bits") << 1 << "FFFFFFFF"
                                            << "";
    }
    void identifierRange()
    {
        QFETCH(int, format);
        QFETCH(QString, text);
        QFETCH(QString, sentId);
        const char *const refusals[2][LanguageCount][2] = {
            {{"警告|发送失败，标准帧ID范围为0~0x7FF！", "警告|发送失败，扩展帧ID范围为0~0x1FFFFFFF！"},
             {"警告|發送失敗，標準幀ID範圍為0~0x7FF！", "警告|發送失敗，擴展幀ID範圍為0~0x1FFFFFFF！"},
             {"warning|Sending failed, standard frame ID range is 0~0x7FF!",
              "warning|Sending failed, expanding frame ID range from 0 to 0x1FFFFFFFF!"}},
            {{"警告|发送失败，标准帧ID范围为0~0x7FF！", "警告|发送失败，扩展帧ID范围为0~0x1FFFFFFF！"},
             {"警告|发送失败，標準幀ID範圍為0~0x7FF！", "警告|发送失败，擴展幀ID範圍為0~0x1FFFFFFF！"},
             {"warning|Sending failed, standard frame ID range is 0~0x7FF!",
              "warning|Sending failed, expanding frame ID range from 0 to 0x1FFFFFFFF!"}}};
        SendBench &b = *bench_;
        b.open();
        b.restore();
        for (int channel : {0, 1}) {
            const QSignalSpy logged(&b.panel(channel), &SendPanel::logLine);
            b.combo(channel, "FrameTypeCombo")->setCurrentIndex(format);
            b.edit(channel, "SendIDEdit")->setText(text);
            if (!sentId.isEmpty()) {
                b.button(channel, "SendBtn")->click();
                QTRY_COMPARE(b.state(channel), QString("idle"));
                QCOMPARE(b.driver->sentCan(unsigned(channel)).size(), std::size_t(1));
                QCOMPARE(QString::number(b.driver->sentCan(unsigned(channel))[0].id, 16), sentId);
                continue;
            }
            for (unsigned language = 0; language < LanguageCount; ++language) {
                setLanguageCode(language);
                b.button(channel, "SendBtn")->click();
                QCOMPARE(b.answer.takeMessages(), QStringList(refusals[channel][language][format]));
            }
            QCOMPARE(b.state(channel), QString("idle"));
            QVERIFY(logged.isEmpty());
        }
        QCOMPARE(b.driver->calls().size(), sentId.isEmpty() ? 0 : 2);
    }

    void theWholeTemplateReachesTheBus()
    {
        SendBench &b = *bench_;
        b.open();
        b.restore();
        b.combo(1, "FrameTypeCombo")->setCurrentIndex(1);
        b.combo(1, "ProtocolCombo")->setCurrentIndex(2);
        b.combo(1, "SendTypeCombo")->setCurrentIndex(3);
        b.combo(1, "sendLenCombo")->setCurrentIndex(15);
        b.edit(1, "SendDataEdit")->setText(QString("f").repeated(2 * 70) + " 1");
        b.edit(1, "SendIDEdit")->setText("1FFFFFFF");
        b.edit(1, "SendCountEdit")->setText("3");
        b.edit(1, "SendInvEdit")->setText("0");
        b.box(1, "IDAddChk")->setChecked(true);
        b.button(1, "SendBtn")->click();
        QTRY_COMPARE(b.state(1), QString("idle"));
        const auto sent = b.driver->sentFd(1);
        QCOMPARE(sent.size(), std::size_t(3));
        QCOMPARE(sent[0].id, 0x9FFFFFFFu);
        QCOMPARE(sent[1].id, 0x80000000u);
        QCOMPARE(int(sent[2].length), 64);
        QCOMPARE(int(sent[2].flags), 1);
        QCOMPARE(sent[2].transmitType, 3u);
        QCOMPARE(QByteArray(reinterpret_cast<const char *>(sent[2].data), 64), QByteArray(64, '\xff'));
        QVERIFY(b.edit(1, "SendDataEdit")->text().endsWith("ff 01"));

        b.combo(0, "FrameDataCombo")->setCurrentIndex(1);
        b.edit(0, "SendDataEdit")->setText("12 345");
        b.edit(0, "SendCountEdit")->setText("2");
        b.box(0, "DataAddChk")->setChecked(true);
        b.button(0, "SendBtn")->click();
        QTRY_COMPARE(b.state(0), QString("idle"));
        const auto classic = b.driver->sentCan(0);
        QCOMPARE(classic.size(), std::size_t(2));
        QCOMPARE(classic[0].id, 0x40000001u);
        QCOMPARE(int(classic[0].length), 8);
        QCOMPARE(QByteArray(reinterpret_cast<const char *>(classic[1].data), 8),
                 QByteArray("\x13\x03\x45\0\0\0\0\0", 8));
    }

    void lengthAndProtocol_data() { bothChannels(); }
    void lengthAndProtocol()
    {
        QFETCH(int, channel);
        SendBench &b = *bench_;
        b.restore();
        QComboBox *length = b.combo(channel, "sendLenCombo");
        QLineEdit *data = b.edit(channel, "SendDataEdit");
        const QString ten = "00 01 02 03 04 05 06 07 08 09";
        b.combo(channel, "ProtocolCombo")->setCurrentIndex(1);
        QCOMPARE(enabledLengths(channel), QString("0 1 2 3 4 5 6 7 8 12 16 20 24 32 48 64"));
        length->setCurrentIndex(15);
        data->setText(ten);
        b.combo(channel, "ProtocolCombo")->setCurrentIndex(0);
        QCOMPARE(enabledLengths(channel), QString("0 1 2 3 4 5 6 7 8"));
        QCOMPARE(length->currentText(), QString("8"));
        // Channel 2's data follows the user's own choice alone.
        QCOMPARE(data->text(), channel == 0 ? "00 01 02 03 04 05 06 07 " : ten);

        data->setText("123 45");
        emit length->activated(length->currentIndex());
        length->setCurrentIndex(2);
        emit length->activated(2);
        QCOMPARE(data->text(), QString("01 23 "));
        length->setCurrentIndex(0);
        QCOMPARE(data->text(), channel == 0 ? QString() : QString("01 23 "));
        emit length->activated(0);
        QCOMPARE(data->text(), QString());
    }

    void remoteFramesAreClassic_data() { bothChannels(); }
    void remoteFramesAreClassic()
    {
        QFETCH(int, channel);
        SendBench &b = *bench_;
        b.open();
        b.restore();
        QComboBox *protocol = b.combo(channel, "ProtocolCombo");
        protocol->setCurrentIndex(1);
        b.combo(channel, "FrameDataCombo")->setCurrentIndex(1);
        QCOMPARE(protocol->currentIndex(), 0);
        QVERIFY(!protocol->isEnabled());
        b.button(channel, "SendBtn")->click();
        QTRY_COMPARE(b.state(channel), QString("idle"));
        QVERIFY(!protocol->isEnabled()); // the end of sending keeps the lock
        b.combo(channel, "FrameDataCombo")->setCurrentIndex(0);
        QVERIFY(protocol->isEnabled());
        b.button(channel, "SendBtn")->click();
        QVERIFY(!protocol->isEnabled());
        QTRY_VERIFY(protocol->isEnabled());
    }

    void fieldsTakeOnlyWhatCanBeMeant_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("taken");
        QTest::newRow("identifier") << "SendIDEdit"
                                    << "1;,gF -2"
                                    << "1F2";
        QTest::newRow("identifier, long") << "SendIDEdit"
                                          << "123456789"
                                          << "12345678";
        QTest::newRow("identifier, prefix") << "SendIDEdit"
                                            << "0x7g"
                                            << "0x7";
        QTest::newRow("count, endless") << "SendCountEdit"
                                        << "-2,1;0"
                                        << "-1";
        QTest::newRow("count") << "SendCountEdit"
                               << "1.0-x0"
                               << "100";
        QTest::newRow("interval") << "SendInvEdit"
                                  << "-1;0,a"
                                  << "10";
        QTest::newRow("data") << "SendDataEdit"
                              << "0,1 ;xAf"
                              << "01 Af";
    }
    void fieldsTakeOnlyWhatCanBeMeant()
    {
        QFETCH(QString, field);
        QFETCH(QString, typed);
        QFETCH(QString, taken);
        for (int channel : {0, 1}) {
            QLineEdit *edit = bench_->edit(channel, qPrintable(field));
            QTest::keyClicks(edit, typed);
            QCOMPARE(edit->text(), taken);
        }
    }

    void theByteEditorsBytesComeBack_data() { bothChannels(); }
    void theByteEditorsBytesComeBack()
    {
        QFETCH(int, channel);
        SendBench &b = *bench_;
        b.restore();
        b.edit(channel, "SendDataEdit")->setText("123");
        b.combo(channel, "sendLenCombo")->setCurrentIndex(3);
        b.answer.on<DataDlg>([](DataDlg *dialog) {
            QCOMPARE(dialog->data(), QByteArray("\x01\x23\0", 3));
            dialog->findChild<QTableWidget *>()->item(2, 0)->setText("ab");
            dialog->accept();
        });
        b.bytesButton(channel)->click();
        QCOMPARE(b.edit(channel, "SendDataEdit")->text(), QString("01 23 AB"));
        b.answer.on<DataDlg>([](DataDlg *dialog) {
            dialog->findChild<QTableWidget *>()->item(0, 0)->setText("99");
            dialog->reject();
        });
        b.bytesButton(channel)->click();
        QCOMPARE(b.edit(channel, "SendDataEdit")->text(), QString("01 23 AB"));
        QCOMPARE(b.answer.stepsLeft(), 0);
    }

    void aLanguageSwitchKeepsEverything()
    {
        SendBench &b = *bench_;
        b.restore();
        b.combo(0, "FrameDataCombo")->setCurrentIndex(1);
        b.combo(0, "SendTypeCombo")->setCurrentIndex(2);
        b.combo(1, "ProtocolCombo")->setCurrentIndex(2);
        b.edit(0, "SendDataEdit")->setText("1 2 3");
        b.panel2.beginFileSend();
        const BracketingTranslator translator;
        QCoreApplication::processEvents();
        QCOMPARE(b.panel1.title(), QString("[通道1发送]"));
        QCOMPARE(b.combo(0, "FrameDataCombo")->currentText(), QString("[远程帧]"));
        QCOMPARE(b.combo(0, "SendTypeCombo")->currentText(), QString("[自发自收]"));
        QCOMPARE(b.combo(1, "ProtocolCombo")->currentText(), QString("[CANFD加速]"));
        QCOMPARE(b.edit(0, "SendDataEdit")->text(), QString("1 2 3")); // no slot has normalised it
        QCOMPARE(enabledLengths(0), QString("0 1 2 3 4 5 6 7 8"));
        QVERIFY(!b.combo(0, "ProtocolCombo")->isEnabled());
        QCOMPARE(b.state(1), QString("sending"));
        QCOMPARE(enabledLengths(1), QString("0 1 2 3 4 5 6 7 8 12 16 20 24 32 48 64"));
    }
};

QTEST_MAIN(TestSendPanel)
#include "test_sendpanel.moc"
