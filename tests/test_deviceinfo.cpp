#include "device/devicelayer.h"
#include "device/dialogs/deviceinfo.h"
#include "device/dialogs/infdialog.h"
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

    void warnings()
    {
        const QStringList notOpen{"警告|设备未打开！", "警告|設備未打開！", "warning|The device is not opened!"};
        const QStringList failed{"警告|设备信息获取失败！", "警告|設備信息獲取失敗！",
                                 "warning|Device information acquisition failed!"};
        ModalAnswer answers;
        for (int code = 0; code < int(LanguageCount); ++code) {
            setLanguageCode(unsigned(code));
            showDeviceInfo(nullptr);
            QVERIFY(openDevice(kDeviceType, 0, 0));
            fake_->info.firmwareVersion = 0;
            showDeviceInfo(nullptr);
            fake_->info.firmwareVersion = 0x200;
            fake_->infoAnswer = 0;
            showDeviceInfo(nullptr);
            fake_->infoAnswer = kDriverSuccess;
            closeDevice();
            QCOMPARE(answers.takeMessages(), QStringList({notOpen.at(code), failed.at(code), failed.at(code)}));
        }
        QCOMPARE(answers.unexpected(), QStringList());
    }

    void theRecordOnTheScreen()
    {
        DeviceInfoRecord &info = fake_->info;
        info.hardwareVersion = 0x0205;
        info.firmwareVersion = 0xF12A;
        info.driverVersion = 0x0100;
        info.interfaceVersion = 0x0345;
        info.irqNumber = 65535;
        info.channelCount = 255;
        std::memcpy(info.serialNumber, "\xC4 <b>&amp;</b> \0\n\x1b[m", sizeof info.serialNumber); // no zero behind it
        QVERIFY(openDevice(kDeviceType, 0, 0));
        const QByteArray hardware[] = {QByteArray("<img src=x>\0rest", 16), QByteArray(49, 'h')};
        for (const QByteArray &type : hardware) {
            std::memcpy(info.hardwareType, type.constData(), std::size_t(type.size()));
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
            showDeviceInfo(nullptr);
            QCOMPARE(texts, QStringList({"V2.05", "V1.2a", "V1.00", "V3.45", "65535", "255", "Ä <b>&amp;</b>    [m",
                                         QString(type.constData())}));
        }
    }
};

QTEST_MAIN(TestDeviceInfo)
#include "test_deviceinfo.moc"
