#include "soakactions.h"

#include "analysis/statisticswindow.h"
#include "analysis/supervision.h"
#include "app/displayfilter.h"
#include "app/receiveview.h"
#include "device/dialogs/valuedialog.h"
#include "frames/mytablemodel.h"
#include "frames/sendthread.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QSpinBox>
#include <QStringList>
#include <QTableView>
#include <QThread>

#include <numeric>

namespace
{
constexpr int kFileRows = 500;
constexpr int kLongestSleepMs = 1500; // of the whole window, as behind a slow disk
constexpr int kStallMs = 12000;       // so long that pendingFrames fills up and the adapter loses frames
constexpr int kSleepsPerStall = 40;
} // namespace

const SoakActions::Choice SoakActions::kChoices[] = {
    {"send", 8, &SoakActions::send},
    {"stop", 5, &SoakActions::stopSending},
    {"file", 3, &SoakActions::sendFile},
    {"stop file", 2, &SoakActions::stopFile},
    {"merge", 4, &SoakActions::switchMerging},
    {"time stamp", 2, &SoakActions::switchTimeStamp},
    {"check", 2, &SoakActions::checkIdentifiers},
    {"pause", 4, &SoakActions::pause},
    {"clear list", 3, &SoakActions::clearList},
    {"clear log", 1, &SoakActions::clearLog},
    {"reset", 2, &SoakActions::resetTotals},
    {"filter", 5, &SoakActions::setFilter},
    {"no filter", 4, &SoakActions::clearFilters},
    {"language", 3, &SoakActions::switchLanguage},
    {"capture", 6, &SoakActions::switchCapture},
    {"tune", 3, &SoakActions::tune},
    {"dialog", 4, &SoakActions::cancelDialog},
    {"pull", 1, &SoakActions::pullAdapter},
    {"close", 1, &SoakActions::closeDevice},
    {"open", 2, &SoakActions::open},
    {"statistics", 4, &SoakActions::useStatistics},
    {"sleep", 1, &SoakActions::sleepLong},
    {"entries", 6, &SoakActions::switchEntries},
};

SoakActions::SoakActions(Scene &scene, SoakAccounts &accounts, quint32 seed)
    : scene_(scene), user_(*scene.user), accounts_(accounts), random_(seed)
{
    QByteArray rows = "titles\n";
    for (int i = 0; i < kFileRows; ++i)
        rows += "1,=\"10:00:" + QByteArray::number(i / 100).rightJustified(2, '0') + "." +
                QByteArray::number(i % 100 * 10).rightJustified(3, '0') + "\",0x0," + QByteArray::number(i % 2 + 1) +
                ",Tx,0x" + QByteArray::number(i % 0x700, 16).rightJustified(3, '0') + ",标准帧,数据帧,8," +
                (i % 3 == 0 ? "CANFD" : "CAN") + ",x| 01 02 03 04 05 06 07 08 \n";
    scene_.folder.write(QStringLiteral("send.csv"), rows);
    user_.trigger("actionStatistics");
    statistics_ = scene_.window->findChild<StatisticsWindow *>();
    accounts_.watch(statistics_);
    open();
}

int SoakActions::number(int first, int last)
{
    // Not std::uniform_int_distribution: a seed is to mean the same with every library.
    return first + static_cast<int>(random_() % static_cast<unsigned>(last - first + 1));
}

void SoakActions::next()
{
    const int all = std::accumulate(std::begin(kChoices), std::end(kChoices), 0,
                                    [](int sum, const Choice &choice) { return sum + choice.weight; });
    int left = number(0, all - 1);
    for (const Choice &choice : kChoices) {
        left -= choice.weight;
        if (left >= 0)
            continue;
        ++done_[QLatin1String(choice.name)];
        (this->*choice.action)();
        user_.modal().dropSteps(); // a message may have come in place of the dialog
        break;
    }
    QTest::qWait(number(0, 120));
    if (!isDeviceOpen() && number(0, 9) < 3)
        open();
    user_.modal().dropSteps();
}

void SoakActions::finish()
{
    for (sendThread *sender : scene_.window->findChildren<sendThread *>())
        sender->stop();
    endList();
    QTest::qWait(1000);
    user_.closeDevice();
    scene_.window->findChild<ReceiveView *>()->refresh();
    QTest::qWait(1000); // what is on its way to the statistics
    statistics_->findChild<QAbstractButton *>(QStringLiteral("freezeBtn"))->setChecked(false);
    statistics_->refresh();
}

QString SoakActions::summary() const
{
    QStringList texts;
    for (const auto &[name, times] : done_)
        texts += QStringLiteral("%1 %2").arg(name).arg(times);
    return texts.join(QStringLiteral(", "));
}

void SoakActions::expectCancel()
{
    user_.modal().onDialog([](QDialog *dialog) { dialog->reject(); });
}

void SoakActions::send()
{
    const QByteArray panel = number(0, 1) == 0 ? "ch1" : "ch2";
    if (!user_.find<QAbstractButton>(panel + "SendBtn")->isEnabled())
        return;
    static const char *const counts[] = {"-1", "1", "100", "5000"};
    static const char *const intervals[] = {"0", "0", "1", "20", "60000"};
    user_.find<QLineEdit>(panel + "SendCountEdit")->setText(QLatin1String(counts[number(0, 3)]));
    user_.find<QLineEdit>(panel + "SendInvEdit")->setText(QLatin1String(intervals[number(0, 4)]));
    for (const char *list : {"FrameTypeCombo", "FrameDataCombo", "ProtocolCombo", "SendTypeCombo", "sendLenCombo"}) {
        auto *combo = scene_.window->findChild<QComboBox *>(QString::fromLatin1(panel + list));
        if (combo && combo->count() > 0)
            combo->setCurrentIndex(number(0, combo->count() - 1));
    }
    user_.click(panel + "SendBtn");
}

void SoakActions::stopSending()
{
    const QByteArray button = number(0, 1) == 0 ? "ch1StopSendBtn" : "ch2StopSendBtn";
    if (user_.find<QAbstractButton>(button)->isEnabled())
        user_.click(button);
}

void SoakActions::sendFile()
{
    user_.trigger("actionFileSend");
    auto *dialog = user_.find<QDialog>("fileDlg");
    auto *button = dialog->findChild<QAbstractButton *>(QStringLiteral("pbSend"));
    if (button->isEnabled()) {
        dialog->findChild<QLineEdit *>(QStringLiteral("lineEdit"))
            ->setText(scene_.folder.path(QStringLiteral("send.csv")));
        dialog->findChild<QComboBox *>(QStringLiteral("comboBox"))->setCurrentIndex(number(0, 2));
        dialog->findChild<QComboBox *>(QStringLiteral("comboBox_2"))->setCurrentIndex(number(0, 1));
        dialog->findChild<QSpinBox *>(QStringLiteral("spinBox"))->setValue(number(-1, 3));
        dialog->findChild<QSpinBox *>(QStringLiteral("spinBox_2"))->setValue(number(0, 10));
        accounts_.fileWasSent();
        button->click();
    }
    dialog->hide();
}

void SoakActions::stopFile()
{
    auto *dialog = scene_.window->findChild<QDialog *>(QStringLiteral("fileDlg"));
    auto *button = dialog->findChild<QAbstractButton *>(QStringLiteral("pbStop"));
    if (button->isEnabled())
        button->click();
}

void SoakActions::switchMerging()
{
    user_.trigger("actionMergeSameId");
}

void SoakActions::switchTimeStamp()
{
    user_.trigger("actionHexTimeStamp");
}

void SoakActions::checkIdentifiers()
{
    user_.trigger("actionCheckRecvId");
}

void SoakActions::pause()
{
    user_.click("pauseBox");
}

void SoakActions::clearList()
{
    user_.click("cleanListBtn");
}

void SoakActions::clearLog()
{
    accounts_.readLog();
    user_.trigger("actionClearLog");
}

void SoakActions::resetTotals()
{
    accounts_.resetTotals();
}

void SoakActions::setFilter()
{
    const auto *model = scene_.window->findChild<ReceiveView *>()->model();
    const int column = number(ChannelColumn, DataColumn);
    QStringList texts;
    for (int i = 0; i < 3 && model->rowCount() > 0; ++i)
        texts += model->index(number(0, model->rowCount() - 1), column).data().toString();
    scene_.window->findChild<DisplayFilter *>()->setCondition(texts, column);
}

void SoakActions::clearFilters()
{
    if (user_.find<QAbstractButton>("pushButton_2")->isEnabled())
        user_.click("pushButton_2");
}

void SoakActions::switchLanguage()
{
    static const char *const names[] = {"actionSimplifiedChinese", "actionTraditionalChinese", "actionEnglish"};
    user_.trigger(names[number(0, 2)]);
}

void SoakActions::switchCapture()
{
    if (accounts_.capturing())
        accounts_.stopCapture();
    else
        accounts_.startCapture(scene_.folder.path(QStringLiteral("soak.csv")), number(0, 3) == 0 ? 1 : 0);
}

void SoakActions::tune()
{
    static const char *const names[] = {"actionScanTime", "actionFramesPerReceive", "actionListBuffer"};
    const QString value = QString::number(number(0, 1) == 0 ? number(1, 50) : number(1, 20000));
    user_.modal().on<valueDialog>([value](valueDialog *dialog) {
        dialog->findChild<QLineEdit *>(QStringLiteral("valueEdit"))->setText(value);
        dialog->findChild<QAbstractButton *>(QStringLiteral("btnValueOK"))->click();
        dialog->close();
    });
    user_.trigger(names[number(0, 2)]);
}

void SoakActions::cancelDialog()
{
    static const char *const names[] = {"actionDeviceOperations", "actionViewParameters", "actionScanTime",
                                        "actionListBuffer",       "actionCanSetting",     "actionListSend"};
    expectCancel();
    user_.trigger(names[number(0, 5)]);
}

void SoakActions::pullAdapter()
{
    scene_.adapter->unplug();
    QTest::qWait(number(0, 2500));
    scene_.adapter->replug();
}

void SoakActions::closeDevice()
{
    if (isDeviceOpen())
        user_.closeDevice();
}

void SoakActions::open()
{
    if (!isDeviceOpen())
        user_.openEverything();
}

// Everything but what would begin its counts anew.
void SoakActions::useStatistics()
{
    auto *table = statistics_->findChild<QTableView *>(QStringLiteral("identifierTable"));
    static const char *const searches[] = {"", "0x1", "rx 2", "nothing"};
    switch (number(0, 3)) {
    case 0:
        statistics_->findChild<QAbstractButton *>(QStringLiteral("freezeBtn"))->toggle();
        break;
    case 1:
        table->sortByColumn(number(0, table->model()->columnCount() - 1), Qt::DescendingOrder);
        break;
    case 2:
        statistics_->findChild<QLineEdit *>(QStringLiteral("searchEdit"))
            ->setText(QLatin1String(searches[number(0, 3)]));
        break;
    default:
        statistics_->supervision().learn();
    }
}

void SoakActions::sleepLong()
{
    const bool stall = number(1, kSleepsPerStall) == 1;
    QThread::msleep(static_cast<unsigned long>(stall ? kStallMs : number(0, kLongestSleepMs)));
}
