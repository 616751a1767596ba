#include "device/deviceinfo.h"
#include "device/devicelayer.h"
#include "device/infdialog.h"
#include "device/language.h"
#include "fakedriver.h"
#include "modalhelper.h"
#include "testfolder.h"

#include <QLabel>
#include <QtTest>

#include <cstring>

class TestDeviceInfo : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestFolder> folder_;
    FakeDriver *fake_ = nullptr;

private slots:
    void init()
    {
        folder_ = std::make_unique<TestFolder>();
        fake_ = FakeDriver::install();
    }
    void cleanup()
    {
        closeDevice();
        folder_.reset();
    }

    void warnings_data()
    {
        QTest::addColumn<bool>("open");
        QTest::addColumn<unsigned>("infoAnswer");
        QTest::addColumn<QStringList>("texts");
        const QStringList notOpen{"警告|设备未打开！", "警告|設備未打開！", "warning|The device is not opened!"};
        const QStringList failed{"警告|设备信息获取失败！", "警告|設備信息獲取失敗！",
                                 "warning|Device information acquisition failed!"};
        QTest::newRow("closed") << false << 1u << notOpen;
        QTest::newRow("no answer") << true << 0u << failed;
        QTest::newRow("no firmware word") << true << 1u << failed;
    }
    void warnings()
    {
        QFETCH(bool, open);
        QFETCH(unsigned, infoAnswer);
        QFETCH(QStringList, texts);
        ModalAnswer answers;
        QCOMPARE(open && openDevice(kDeviceType, 0, 0), open);
        fake_->infoAnswer = infoAnswer;
        fake_->info.firmwareVersion = open && infoAnswer ? 0 : 0x200;
        for (unsigned code = 0; code < LanguageCount; ++code) {
            setLanguageCode(code);
            showDeviceInfo(nullptr);
        }
        QCOMPARE(answers.messages(), texts);
        QCOMPARE(answers.unexpected(), QStringList());
    }

    void theRecordOnTheScreen_data()
    {
        QTest::addColumn<QByteArray>("serial");
        QTest::addColumn<QByteArray>("hardware");
        QTest::addColumn<QStringList>("shown");
        QTest::newRow("no terminating zero")
            << QByteArray(20, 'S') << QByteArray(49, 'h') << QStringList{QString(20, 'S'), QString(49, 'h')};
        QTest::newRow("Latin-1, markup, zero and control characters")
            << QByteArray("\xC4 <b>&amp;</b> \0\n\x1b[m", 20) << QByteArray("<img src=x>\0rest", 16)
            << QStringList{"Ä <b>&amp;</b>    [m", "<img src=x>"};
    }
    void theRecordOnTheScreen()
    {
        QFETCH(QByteArray, serial);
        QFETCH(QByteArray, hardware);
        QFETCH(QStringList, shown);
        fake_->info.hardwareVersion = 0x0205;
        fake_->info.firmwareVersion = 0xF12A;
        fake_->info.driverVersion = 0x0100;
        fake_->info.interfaceVersion = 0x0345;
        fake_->info.irqNumber = 65535;
        fake_->info.channelCount = 255;
        std::memcpy(fake_->info.serialNumber, serial.constData(), std::size_t(serial.size()));
        std::memcpy(fake_->info.hardwareType, hardware.constData(), std::size_t(hardware.size()));
        ModalAnswer answers;
        QStringList texts;
        answers.on<INfDialog>([&](INfDialog *dialog) {
            for (const char *name : {"labelhwVersion", "labelfwVersion", "labeldrVersion", "labelinVersion",
                                     "labelirqNum", "labelcanNum", "labelSerialNum", "labelhwType"}) {
                const auto *label = dialog->findChild<QLabel *>(QLatin1String(name));
                texts << (label->textFormat() == Qt::PlainText ? label->text() : QString("markup"));
            }
            pressButton(dialog, "pushButton");
        });
        QVERIFY(openDevice(kDeviceType, 0, 0));
        showDeviceInfo(nullptr);
        QCOMPARE(texts, QStringList({"V2.05", "V1.2a", "V1.00", "V3.45", "65535", "255"}) + shown);
    }
};

QTEST_MAIN(TestDeviceInfo)
#include "test_deviceinfo.moc"
