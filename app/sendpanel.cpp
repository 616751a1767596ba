#include "app/sendpanel.h"

#include "ui_sendpanel.h"

#include "device/devicelayer.h"
#include "device/language.h"
#include "device/settingsstore.h"
#include "dialogs/datadlg.h"
#include "frames/sendthread.h"
#include "transmit/datatext.h"
#include "transmit/framechecks.h"
#include "widgets/messages.h"
#include "widgets/storedfields.h"

#include <QEvent>
#include <QRegularExpressionValidator>

#include <algorithm>
#include <array>
#include <utility>

namespace
{
// Length items: 0 to 8 bytes are the first nine, so the item's index is its length.
constexpr int kLongestClassicItem = kLongestClassicFrame;

// Flags of a length item, where the list's model keeps them.
constexpr int kItemFlagsRole = Qt::UserRole - 1;
constexpr int kItemEnabled = 255;
constexpr int kItemDisabled = 0;

constexpr uint kFramesPerSend = 1;
// Between endSend and the return of a run lies next to nothing; this is waited out only when something is wrong.
constexpr unsigned long kRestTimeoutMs = 2000;

constexpr char kCountPattern[] = "^(-1|[0-9]{1,18})$";

void restrictTo(QLineEdit *edit, const char *pattern)
{
    edit->setValidator(new QRegularExpressionValidator(QRegularExpression(QLatin1String(pattern)), edit));
}

QString flagText(bool set)
{
    return set ? QStringLiteral("1") : QStringLiteral("0");
}
} // namespace

SendPanel::SendPanel(uint channel, sendThread *thread, QWidget *parent)
    : QGroupBox(parent), channel_(channel), thread_(thread), ui_(std::make_unique<Ui::SendPanel>())
{
    ui_->setupUi(this);
    nameWidgets();
    installValidators();
    connectWidgets();
    showTexts();
    showProtocol(ui_->ProtocolCombo->currentIndex());
}

SendPanel::~SendPanel() = default;

QString SendPanel::key(const char *name) const
{
    return QStringLiteral("ch%1").arg(channel_ + 1) + QLatin1String(name);
}

void SendPanel::nameWidgets()
{
    const std::pair<QWidget *, const char *> names[] = {
        {this, "SendPanel"},
        {ui_->FrameTypeCombo, "FrameTypeCombo"},
        {ui_->FrameDataCombo, "FrameDataCombo"},
        {ui_->ProtocolCombo, "ProtocolCombo"},
        {ui_->SendTypeCombo, "SendTypeCombo"},
        {ui_->sendLenCombo, "sendLenCombo"},
        {ui_->SendDataEdit, "SendDataEdit"},
        {ui_->SendIDEdit, "SendIDEdit"},
        {ui_->SendCountEdit, "SendCountEdit"},
        {ui_->SendInvEdit, "SendInvEdit"},
        {ui_->DataAddChk, "DataAddChk"},
        {ui_->IDAddChk, "IDAddChk"},
        {ui_->SendBtn, "SendBtn"},
        {ui_->StopSendBtn, "StopSendBtn"},
        {ui_->SendFileBtn, "SendFileBtn"},
    };
    for (const auto &[widget, name] : names)
        widget->setObjectName(key(name));
    ui_->dataBytesBtn->setObjectName(channel_ == 0 ? QStringLiteral("pushButton_3") : QStringLiteral("pushButton_4"));
}

void SendPanel::installValidators()
{
    restrictTo(ui_->SendDataEdit, kDataTextPattern);
    restrictTo(ui_->SendIDEdit, kIdentifierPattern);
    restrictTo(ui_->SendCountEdit, kCountPattern);
    restrictTo(ui_->SendInvEdit, kIntervalPattern);
}

void SendPanel::connectWidgets()
{
    const auto indexChanged = QOverload<int>::of(&QComboBox::currentIndexChanged);
    connect(ui_->SendBtn, &QPushButton::clicked, this, &SendPanel::send);
    connect(ui_->StopSendBtn, &QPushButton::clicked, this, &SendPanel::stopSending);
    connect(ui_->SendFileBtn, &QPushButton::clicked, this, &SendPanel::fileSendRequested);
    connect(ui_->dataBytesBtn, &QPushButton::clicked, this, &SendPanel::editDataBytes);
    connect(ui_->ProtocolCombo, indexChanged, this, &SendPanel::showProtocol);
    connect(ui_->FrameDataCombo, indexChanged, this, &SendPanel::showFrameType);
    // Channel 1's data follows every change of the length, channel 2's only the user's own.
    if (channel_ == 0)
        connect(ui_->sendLenCombo, indexChanged, this, &SendPanel::cutDataToLength);
    else
        connect(ui_->sendLenCombo, QOverload<int>::of(&QComboBox::activated), this, &SendPanel::cutDataToLength);
}

void SendPanel::showTexts()
{
    setTitle(tr("通道%1发送").arg(channel_ + 1));
}

void SendPanel::changeEvent(QEvent *event)
{
    QGroupBox::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        ui_->retranslateUi(this);
        showTexts();
    }
}

// --- settings ---------------------------------------------------------------------------------------------------

void SendPanel::restore()
{
    if (isSending())
        return;
    restoreIndex(ui_->FrameTypeCombo, key("FrameTypeCombo"), QStringLiteral("0"));
    restoreIndex(ui_->FrameDataCombo, key("FrameDataCombo"), QStringLiteral("0"));
    restoreIndex(ui_->ProtocolCombo, key("ProtocolCombo"), QStringLiteral("0"));
    restoreIndex(ui_->SendTypeCombo, key("SendTypeCombo"), QStringLiteral("0"));
    restoreIndex(ui_->sendLenCombo, key("sendLenCombo"), QStringLiteral("8"));
    ui_->SendDataEdit->setText(settings::value(key("SendDataEdit"), QStringLiteral("00 11 22 33 44 55 66 77")));
    ui_->SendIDEdit->setText(settings::value(key("SendIDEdit"), QStringLiteral("00000001")));
    ui_->SendCountEdit->setText(settings::value(key("SendCountEdit"), QStringLiteral("1")));
    ui_->SendInvEdit->setText(settings::value(key("SendInvEdit"), QStringLiteral("10")));
    // Both boxes follow the data box's key; the identifier box's own key is written but never read.
    const bool dataAdd = storedNumber(key("DataAddChk"), QStringLiteral("0")) == 1;
    ui_->DataAddChk->setChecked(dataAdd);
    ui_->IDAddChk->setChecked(dataAdd);

    // A file may hold what the panel would never have let through (a remote FD frame, a long classic one).
    showFrameType(ui_->FrameDataCombo->currentIndex());
    showProtocol(ui_->ProtocolCombo->currentIndex());
}

void SendPanel::store() const
{
    const std::pair<const char *, QString> fields[] = {
        {"FrameTypeCombo", QString::number(ui_->FrameTypeCombo->currentIndex())},
        {"FrameDataCombo", QString::number(ui_->FrameDataCombo->currentIndex())},
        {"ProtocolCombo", QString::number(ui_->ProtocolCombo->currentIndex())},
        {"SendTypeCombo", QString::number(ui_->SendTypeCombo->currentIndex())},
        {"sendLenCombo", QString::number(ui_->sendLenCombo->currentIndex())},
        {"SendDataEdit", ui_->SendDataEdit->text()},
        {"SendIDEdit", ui_->SendIDEdit->text()},
        {"SendCountEdit", ui_->SendCountEdit->text()},
        {"SendInvEdit", ui_->SendInvEdit->text()},
        {"DataAddChk", flagText(ui_->DataAddChk->isChecked())},
    };
    for (const auto &[name, text] : fields)
        settings::setValue(key(name), text, false);
    settings::setValue(key("IDAddChk"), flagText(ui_->IDAddChk->isChecked()), true);
}

// --- sending ----------------------------------------------------------------------------------------------------

void SendPanel::send()
{
    if (isSending())
        return;
    store();
    if (!isChannelOpen(channel_)) {
        const QString text = channel_ == 0 ? text3("通道1未打开！", "通道1未打開！", "Channel 1 is not open!")
                                           : text3("通道2未打开！", "通道2未打開！", "Channel 2 is not open!");
        emit logLine(text);
        showWarning(this, tipTitle(), text);
        return;
    }
    uint identifier = 0;
    if (!checkIdentifier(&identifier) || !waitForThread())
        return;
    normalizeData();
    handOver(identifier);
    enterState(State::Sending);
    thread_->start();
}

bool SendPanel::checkIdentifier(uint *identifier)
{
    const bool extended = ui_->FrameTypeCombo->currentIndex() != StandardFormat;
    if (identifierFits(ui_->SendIDEdit->text(), extended, identifier))
        return true;
    showWarning(this, warningTitle(), identifierRangeText(extended, channel_));
    return false;
}

void SendPanel::handOver(uint identifier)
{
    std::array<quint8, kFdDataBytes> data{};
    const QByteArray bytes = dataBytes(ui_->SendDataEdit->text()).left(static_cast<int>(data.size()));
    std::copy(bytes.cbegin(), bytes.cend(), data.begin());

    const int protocol = ui_->ProtocolCombo->currentIndex();
    thread_->setSend(identifier, ui_->IDAddChk->isChecked() ? 1 : 0,
                     static_cast<uint>(ui_->FrameTypeCombo->currentIndex()), protocol != ClassicCan ? 1 : 0,
                     protocol == CanFdBitRateSwitch ? 1 : 0, data.data(), ui_->sendLenCombo->currentText().toUInt(),
                     ui_->DataAddChk->isChecked() ? 1 : 0, ui_->SendCountEdit->text().toLongLong(), kFramesPerSend,
                     ui_->SendInvEdit->text().toUInt(), static_cast<uint>(ui_->FrameDataCombo->currentIndex()),
                     static_cast<uint>(ui_->SendTypeCombo->currentIndex()));
}

void SendPanel::stopSending()
{
    if (state_ == State::SendingFile)
        emit fileStopRequested();
    else
        thread_->stop();
}

bool SendPanel::waitForThread()
{
    return thread_->wait(kRestTimeoutMs);
}

void SendPanel::beginFileSend()
{
    enterState(State::SendingFile);
}

void SendPanel::endSend()
{
    enterState(State::Idle);
}

void SendPanel::setSendEnabled(bool enabled)
{
    if (!enabled || !isSending())
        ui_->SendBtn->setEnabled(enabled);
}

void SendPanel::enterState(State state)
{
    state_ = state;
    const bool idle = state == State::Idle;
    ui_->SendBtn->setEnabled(idle && isChannelOpen(channel_));
    ui_->StopSendBtn->setEnabled(!idle);
    for (QWidget *input :
         std::initializer_list<QWidget *>{ui_->DataAddChk, ui_->FrameTypeCombo, ui_->IDAddChk, ui_->SendCountEdit,
                                          ui_->SendDataEdit, ui_->dataBytesBtn, ui_->SendIDEdit, ui_->SendInvEdit,
                                          ui_->sendLenCombo, ui_->FrameDataCombo, ui_->SendTypeCombo})
        input->setEnabled(idle);
    ui_->ProtocolCombo->setEnabled(idle && ui_->FrameDataCombo->currentIndex() == DataFrame);
}

// --- fields that follow each other ------------------------------------------------------------------------------

void SendPanel::normalizeData()
{
    ui_->SendDataEdit->setText(normalizedDataText(ui_->SendDataEdit->text()));
}

void SendPanel::cutDataToLength(int index)
{
    normalizeData();
    const int length = ui_->sendLenCombo->itemText(index).toInt();
    const QString text = ui_->SendDataEdit->text();
    if (dataBytes(text).size() > length)
        ui_->SendDataEdit->setText(firstDataBytes(text, length));
}

void SendPanel::showProtocol(int index)
{
    const bool fd = index != ClassicCan;
    for (int item = kLongestClassicItem + 1; item < ui_->sendLenCombo->count(); ++item)
        ui_->sendLenCombo->setItemData(item, fd ? kItemEnabled : kItemDisabled, kItemFlagsRole);
    if (!fd && ui_->sendLenCombo->currentIndex() > kLongestClassicItem)
        ui_->sendLenCombo->setCurrentIndex(kLongestClassicItem);
}

void SendPanel::showFrameType(int index)
{
    const bool remote = index == RemoteFrame;
    if (remote)
        ui_->ProtocolCombo->setCurrentIndex(ClassicCan);
    ui_->ProtocolCombo->setEnabled(!remote);
}

void SendPanel::editDataBytes()
{
    normalizeData();
    DataDlg dialog(dataBytes(ui_->SendDataEdit->text()), ui_->sendLenCombo->currentText().toUInt(), this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    ui_->SendDataEdit->setText(dataText(dialog.data()));
    normalizeData();
}
