#include "analysis/replaybar.h"

#include "analysis/recordingmodel.h"
#include "device/devicelayer.h"
#include "device/language.h"
#include "widgets/namedwidget.h"

#include <QFileInfo>
#include <QSignalBlocker>

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QVBoxLayout>

#include <algorithm>

namespace
{
constexpr double kSlowest = 0.01;
constexpr double kFastest = 1000;
constexpr int kChannelCharacters = 14;
constexpr int kPositionSteps = 10000;
constexpr int kPages = 20;

} // namespace

ReplayBar::ReplayBar(std::shared_ptr<const RecordingIndex> index, std::function<Rows(Choice)> rows, QWidget *parent)
    : QWidget(parent), index_(std::move(index)), rows_(std::move(rows))
{
    auto *lines = new QVBoxLayout(this);
    lines->setContentsMargins(0, 0, 0, 0);
    auto *line = new QHBoxLayout;
    makeSettings(line);
    makeButtons(line);
    lines->addLayout(line);
    auto *second = new QHBoxLayout;
    position_ = named(new QSlider(Qt::Horizontal, this), "replayPosition");
    position_->setTracking(false); // rows that the handle passes are not sent
    position_->setRange(0, kPositionSteps);
    position_->setPageStep(kPositionSteps / kPages);
    state_ = named(new QLabel(this), "replayState");
    state_->setMinimumWidth(1);
    second->addWidget(position_, 3);
    second->addWidget(state_, 2);
    lines->addLayout(second);
    connect(position_, &QSlider::valueChanged, this, &ReplayBar::goTo);
    enableButtons();
}

void ReplayBar::makeSettings(QBoxLayout *line)
{
    choiceLabel_ = new QLabel(this);
    choice_ = named(new QComboBox(this), "replayRows");
    choice_->addItems({QString(), QString(), QString()});
    choice_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    choiceLabel_->setBuddy(choice_);
    speedLabel_ = new QLabel(this);
    speed_ = named(new QDoubleSpinBox(this), "replaySpeed");
    speed_->setRange(kSlowest, kFastest);
    speed_->setValue(1);
    speed_->setPrefix(QStringLiteral("× "));
    speed_->setStepType(QAbstractSpinBox::AdaptiveDecimalStepType);
    speed_->setKeyboardTracking(false);
    speedLabel_->setBuddy(speed_);
    channelsLabel_ = new QLabel(this);
    channels_ = named(new QLineEdit(this), "replayChannels");
    channels_->setFixedWidth(fontMetrics().averageCharWidth() * kChannelCharacters);
    channels_->setPlaceholderText(QStringLiteral("1=2,2=1"));
    channelsLabel_->setBuddy(channels_);
    for (QWidget *widget :
         std::initializer_list<QWidget *>{choiceLabel_, choice_, speedLabel_, speed_, channelsLabel_, channels_})
        line->addWidget(widget);
    line->addStretch(1);
    connect(speed_, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, [this](double speed) {
        if (run_)
            run_->setSpeed(speed);
    });
}

void ReplayBar::makeButtons(QBoxLayout *line)
{
    start_ = named(new QPushButton(this), "replayStart");
    pause_ = named(new QPushButton(this), "replayPause");
    step_ = named(new QPushButton(this), "replayStep");
    stop_ = named(new QPushButton(this), "replayStop");
    for (QPushButton *button : {start_, pause_, step_, stop_})
        line->addWidget(button);
    connect(start_, &QPushButton::clicked, this, [this] { start(false); });
    connect(pause_, &QPushButton::clicked, this, &ReplayBar::pauseOrGoOn);
    connect(step_, &QPushButton::clicked, this, &ReplayBar::step);
    connect(stop_, &QPushButton::clicked, this, &ReplayBar::stop);
}

bool ReplayBar::start(bool paused)
{
    const auto channels = replayChannelsFromText(channels_->text());
    const Rows rows = rows_(static_cast<Choice>(choice_->currentIndex()));
    QString refusal;
    if (!channels)
        refusal = text3("通道映射应如 1=2,2=1", "通道對應應如 1=2,2=1", "Channels: a mapping such as 1=2,2=1");
    else if (rows.first >= rows.end)
        refusal = text3("没有要发送的行", "沒有要發送的列", "There are no rows to send");
    else if (!isChannelOpen(0) && !isChannelOpen(1))
        refusal = text3("没有打开的通道！", "沒有打開的通道！", "No channel is open!");
    state_->setText(refusal);
    if (!refusal.isEmpty())
        return false;
    first_ = rows.first;
    end_ = rows.end;
    RecordingReplay::Plan plan{index_, rows.filter, first_, end_, *channels, speed_->value(), paused};
    run_.reset();
    run_ = std::make_unique<RecordingReplay>(std::move(plan));
    emit log(
        text3("记录重放开始：%1", "記錄重播開始：%1", "Replay of %1 begins").arg(QFileInfo(index_->path()).fileName()));
    look();
    return true;
}

void ReplayBar::pauseOrGoOn()
{
    if (!run_)
        return;
    if (paused_)
        run_->goOn();
    else
        run_->pause();
    look();
}

void ReplayBar::step()
{
    if (run_ || start(true))
        run_->step();
    look();
}

void ReplayBar::stop()
{
    if (run_)
        run_->stop();
    look();
}

void ReplayBar::goTo(int value)
{
    if (!run_)
        return;
    const double part = static_cast<double>(value) / kPositionSteps;
    run_->goTo(first_ + static_cast<std::uint64_t>(static_cast<double>(end_ - first_) * part));
    look();
}

void ReplayBar::look()
{
    if (run_) {
        const RecordingReplay::State state = run_->state();
        paused_ = state.paused;
        showState(state);
        if (state.end != RecordingReplay::End::None) {
            run_.reset();
            tellEnd(state);
        }
    }
    enableButtons();
}

void ReplayBar::showState(const RecordingReplay::State &state)
{
    if (!position_->isSliderDown()) {
        const QSignalBlocker quiet(position_);
        const double part = static_cast<double>(state.row - first_) / static_cast<double>(end_ - first_);
        position_->setValue(static_cast<int>(part * kPositionSteps));
    }
    QString text =
        text3("第 %1 行，%2 秒；已发送 %3 帧", "第 %1 列，%2 秒；已發送 %3 幀", "row %1, %2 s; %3 frames sent")
            .arg(QString::number(std::min(state.row + 1, end_)), recordingSeconds(state.time))
            .arg(state.counts.sent);
    const std::uint64_t others = state.counts.refused + state.counts.unsendable;
    if (others > 0)
        text += text3("，未发送 %1 帧", "，未發送 %1 幀", ", %1 not sent").arg(others);
    state_->setText(text);
}

void ReplayBar::enableButtons()
{
    const bool runs = run_ != nullptr;
    for (QWidget *widget : std::initializer_list<QWidget *>{choice_, channels_, start_})
        widget->setEnabled(!runs);
    for (QWidget *widget : std::initializer_list<QWidget *>{pause_, stop_, position_})
        widget->setEnabled(runs);
    pause_->setText(runs && paused_ ? text3("继续(&U)", "繼續(&U)", "Contin&ue")
                                    : text3("暂停(&U)", "暫停(&U)", "Pa&use"));
}

void ReplayBar::tellEnd(const RecordingReplay::State &state)
{
    QString line;
    switch (state.end) {
    case RecordingReplay::End::None:
    case RecordingReplay::End::Done:
        line = text3("记录重放完成", "記錄重播完成", "Replay completed");
        break;
    case RecordingReplay::End::Stopped:
        line = text3("记录重放中止", "記錄重播中止", "Replay stopped");
        break;
    case RecordingReplay::End::NoChannel:
        line =
            text3("记录重放结束：没有打开的通道", "記錄重播結束：沒有打開的通道", "Replay ended: no channel is open");
        break;
    case RecordingReplay::End::Unreadable:
        line = text3("记录重放结束：文件无法继续读取", "記錄重播結束：檔案無法繼續讀取",
                     "Replay ended: the file cannot be read on");
        break;
    }
    const std::uint64_t others = state.counts.refused + state.counts.unsendable;
    state_->setText(
        line + text3("：已发送 %1 帧，未发送 %2 帧", "：已發送 %1 幀，未發送 %2 幀", ": %1 frames sent, %2 not sent")
                   .arg(state.counts.sent)
                   .arg(others));
    line += text3("：已发送 %1 帧", "：已發送 %1 幀", ": %1 frames sent").arg(state.counts.sent);
    if (state.counts.refused > 0)
        line += text3("，%1 帧未被接收（只听、无应答或通道未打开）", "，%1 幀未被接收（只聽、無應答或通道未打開）",
                      ", %1 not taken (listen-only, no acknowledge or channel not open)")
                    .arg(state.counts.refused);
    if (state.counts.unsendable > 0)
        line += text3("，%1 帧不能发送（错误帧，或长度、ID 无效）", "，%1 幀不能發送（錯誤幀，或長度、ID 無效）",
                      ", %1 cannot be sent (error frames, or no valid length or ID)")
                    .arg(state.counts.unsendable);
    emit log(line);
}

void ReplayBar::retranslate()
{
    choiceLabel_->setText(text3("发送(&D)：", "發送(&D)：", "Sen&d:"));
    const QStringList choices = {text3("所有行", "所有列", "All rows"), text3("显示的行", "顯示的列", "Shown rows"),
                                 text3("选中的行", "選取的列", "Selected rows")};
    for (int i = 0; i < choices.size(); ++i)
        choice_->setItemText(i, choices.at(i));
    speedLabel_->setText(text3("速度(&P)：", "速度(&P)：", "S&peed:"));
    channelsLabel_->setText(text3("通道(&C)：", "通道(&C)：", "&Channels:"));
    channels_->setToolTip(text3("记录中的通道=适配器的通道；未列出的不变", "記錄中的通道=轉接器的通道；未列出的不變",
                                "The recording's channel = the adapter's; others stay as they are"));
    start_->setText(text3("开始(&A)", "開始(&A)", "St&art"));
    step_->setText(text3("单步(&E)", "單步(&E)", "St&ep"));
    step_->setToolTip(text3("发送下一帧，然后暂停", "發送下一幀，然後暫停", "Sends the next frame, then pauses"));
    stop_->setText(text3("停止(&O)", "停止(&O)", "St&op"));
    if (!run_)
        state_->clear(); // of another language
    enableButtons();
}
