#include "analysis/recordwindow.h"

#include "analysis/liverecording.h"
#include "analysis/triggeredit.h"
#include "device/language.h"
#include "traces/recordernames.h"
#include "traces/traceformats.h"
#include "widgets/messages.h"

#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QStandardPaths>
#include <QTimer>
#include <QVBoxLayout>

#include <utility>

namespace
{

constexpr QSize kDesignSize(800, 460);
constexpr int kStateMs = 250;
constexpr std::uint64_t kMegabyte = 1000000;
constexpr int kSecondsPerMinute = 60;
constexpr int kMsPerSecond = 1000;
constexpr int kLargestMegabytes = 100000;
constexpr int kLargestMinutes = 7 * 24 * 60;
constexpr int kMostFiles = 10000;
constexpr int kMostSeconds = 3600;
const QString kGroup = QStringLiteral("analysis/record/");

} // namespace

RecordWindow::RecordWindow(QWidget *parent)
    : AnalysisWindow(QStringLiteral("record"), parent), fields_(new QWidget(this)), timer_(new QTimer(this))
{
    arrange();
    restore();
    connectFields();
    showFields();
    timer_->setInterval(kStateMs);
    connect(timer_, &QTimer::timeout, this, &RecordWindow::look);
}

RecordWindow::~RecordWindow() = default;

QSize RecordWindow::designSize() const
{
    return kDesignSize;
}

// --- arrangement --------------------------------------------------------------------------------------------------

void RecordWindow::addRow(QLabel **label, QWidget *field)
{
    *label = new QLabel(fields_);
    (*label)->setBuddy(field);
    form_->addRow(*label, field);
}

QSpinBox *RecordWindow::addNumber(QLabel **label, const char *name, int largest)
{
    auto *box = new QSpinBox(fields_);
    box->setObjectName(QLatin1String(name));
    box->setRange(0, largest);
    addRow(label, box);
    return box;
}

void RecordWindow::arrange()
{
    form_ = new QFormLayout(fields_);
    form_->setContentsMargins(0, 0, 0, 0);
    form_->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    auto *file = new QWidget(fields_);
    path_ = new QLineEdit(file);
    path_->setObjectName(QStringLiteral("pathEdit"));
    browse_ = new QPushButton(file);
    browse_->setObjectName(QStringLiteral("browseBtn"));
    auto *fileRow = new QHBoxLayout(file);
    fileRow->setContentsMargins(0, 0, 0, 0);
    fileRow->addWidget(path_, 1);
    fileRow->addWidget(browse_);
    file->setFocusProxy(path_);
    addRow(&pathLabel_, file);
    format_ = new QComboBox(fields_);
    format_->setObjectName(QStringLiteral("formatCombo"));
    for (const TraceFormatEntry &entry : traceFormats())
        if (entry.write)
            format_->addItem(QStringLiteral("%1 (*.%2)")
                                 .arg(QString(QLatin1String(entry.name)).toUpper(), QLatin1String(entry.ending)),
                             QLatin1String(entry.ending));
    addRow(&formatLabel_, format_);
    megabytes_ = addNumber(&sizeLabel_, "sizeSpin", kLargestMegabytes);
    minutes_ = addNumber(&timeLabel_, "timeSpin", kLargestMinutes);
    keep_ = addNumber(&keepLabel_, "keepSpin", kMostFiles);
    filter_ = new QLineEdit(fields_);
    filter_->setObjectName(QStringLiteral("filterEdit"));
    filter_->setPlaceholderText(QStringLiteral("id 100..1FF"));
    addRow(&filterLabel_, filter_);
    start_ = new TriggerEdit(QStringLiteral("start"), fields_);
    addRow(&startLabel_, start_);
    stop_ = new TriggerEdit(QStringLiteral("stop"), fields_);
    addRow(&stopLabel_, stop_);
    beforeFrames_ = addNumber(&framesLabel_, "beforeFramesSpin", PreTriggerBuffer::kMostFrames);
    beforeSeconds_ = addNumber(&secondsLabel_, "beforeSecondsSpin", kMostSeconds);

    hint_ = new QLabel(this);
    hint_->setObjectName(QStringLiteral("hintLabel"));
    hint_->setWordWrap(true);
    hint_->setStyleSheet(QStringLiteral("color: #c00000"));
    hint_->hide();
    state_ = new QLabel(this);
    state_->setObjectName(QStringLiteral("stateLabel"));
    state_->setWordWrap(true);
    begin_ = new QPushButton(this);
    begin_->setObjectName(QStringLiteral("beginBtn"));
    end_ = new QPushButton(this);
    end_->setObjectName(QStringLiteral("endBtn"));
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(begin_);
    buttons->addWidget(end_);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(fields_);
    layout->addWidget(hint_);
    layout->addStretch(1);
    layout->addWidget(state_);
    layout->addLayout(buttons);
}

void RecordWindow::connectFields()
{
    connect(browse_, &QPushButton::clicked, this, &RecordWindow::browse);
    connect(path_, &QLineEdit::editingFinished, this, &RecordWindow::followName);
    connect(format_, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &RecordWindow::followFormat);
    connect(begin_, &QPushButton::clicked, this, &RecordWindow::begin);
    connect(end_, &QPushButton::clicked, this, &RecordWindow::end);
    connect(start_, &TriggerEdit::changed, this, &RecordWindow::showFields);
    connect(filter_, &QLineEdit::textChanged, hint_, &QLabel::hide);
}

void RecordWindow::retranslate()
{
    setWindowTitle(text3("记录", "記錄", "Record"));
    pathLabel_->setText(text3("文件(&F)：", "檔案(&F)：", "&File:"));
    browse_->setText(text3("浏览(&B)…", "瀏覽(&B)…", "&Browse…"));
    formatLabel_->setText(text3("格式(&M)：", "格式(&M)：", "For&mat:"));
    sizeLabel_->setText(text3("满多少换文件(&S)：", "滿多少換檔案(&S)：", "New file by &size:"));
    timeLabel_->setText(text3("隔多少分钟换文件(&T)：", "隔多少分鐘換檔案(&T)：", "New file by &time (minutes):"));
    keepLabel_->setText(text3("保留最新文件数(&K)：", "保留最新檔案數(&K)：", "&Keep the newest files:"));
    filterLabel_->setText(text3("筛选(&I)：", "篩選(&I)：", "F&ilter:"));
    startLabel_->setText(text3("开始条件(&A)：", "開始條件(&A)：", "St&arts with:"));
    stopLabel_->setText(text3("结束条件(&W)：", "結束條件(&W)：", "Stops &with:"));
    framesLabel_->setText(text3("开始之前的帧(&R)：", "開始之前的幀(&R)：", "Frames before the sta&rt:"));
    secondsLabel_->setText(text3("开始之前的时间(&N)：", "開始之前的時間(&N)：", "Seco&nds before the start:"));
    const QString off = text3("不限", "不限", "no limit");
    megabytes_->setSpecialValueText(off);
    megabytes_->setSuffix(QStringLiteral(" MB"));
    minutes_->setSpecialValueText(off);
    keep_->setSpecialValueText(text3("全部", "全部", "all"));
    beforeFrames_->setSpecialValueText(off);
    beforeSeconds_->setSpecialValueText(off);
    beforeSeconds_->setSuffix(QStringLiteral(" s"));
    start_->setTexts(text3("立即", "立即", "at once"));
    stop_->setTexts(text3("按“停止”", "按「停止」", "the Stop button"));
    begin_->setText(text3("开始(&G)", "開始(&G)", "Be&gin"));
    end_->setText(text3("停止(&P)", "停止(&P)", "Sto&p"));
    hint_->hide(); // of another language
    showState();
}

void RecordWindow::showFields()
{
    const bool triggered = start_->isSet();
    beforeFrames_->setEnabled(triggered);
    beforeSeconds_->setEnabled(triggered);
    fields_->setEnabled(!isRunning());
    begin_->setEnabled(!isRunning());
    end_->setEnabled(isRunning());
    showState();
}

void RecordWindow::keyPressEvent(QKeyEvent *event)
{
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    auto *button = qobject_cast<QPushButton *>(focusWidget());
    if (enter && button && button->isEnabled())
        button->click();
    else
        AnalysisWindow::keyPressEvent(event);
}

// --- settings -----------------------------------------------------------------------------------------------------

void RecordWindow::store() const
{
    QSettings settings;
    settings.setValue(kGroup + QStringLiteral("path"), path_->text());
    settings.setValue(kGroup + QStringLiteral("format"), format_->currentData());
    settings.setValue(kGroup + QStringLiteral("filter"), filter_->text());
    for (const QSpinBox *box : fields_->findChildren<QSpinBox *>())
        settings.setValue(kGroup + box->objectName(), box->value());
    start_->store(settings, kGroup + QStringLiteral("start"));
    stop_->store(settings, kGroup + QStringLiteral("stop"));
}

void RecordWindow::restore()
{
    const QSettings settings;
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    path_->setText(
        settings.value(kGroup + QStringLiteral("path"), folder + QStringLiteral("/recording.blf")).toString());
    const int format = format_->findData(settings.value(kGroup + QStringLiteral("format"), QStringLiteral("blf")));
    format_->setCurrentIndex(qMax(format, 0));
    filter_->setText(settings.value(kGroup + QStringLiteral("filter")).toString());
    for (QSpinBox *box : fields_->findChildren<QSpinBox *>())
        box->setValue(settings.value(kGroup + box->objectName()).toInt());
    start_->restore(settings, kGroup + QStringLiteral("start"));
    stop_->restore(settings, kGroup + QStringLiteral("stop"));
}

void RecordWindow::browse()
{
    const QString path = QFileDialog::getSaveFileName(this, text3("记录到", "記錄到", "Record to"), path_->text());
    if (path.isEmpty())
        return;
    path_->setText(path);
    followName();
    if (!traceFormatOfName(path))
        followFormat();
    agreed_ = path;
}

void RecordWindow::followName()
{
    const std::optional<TraceFormat> named = traceFormatOfName(path_->text().trimmed());
    const int format = named ? format_->findData(traceFormatEnding(*named)) : -1;
    const QSignalBlocker blocker(format_); // the name is right as it is
    if (format >= 0)
        format_->setCurrentIndex(format);
}

void RecordWindow::followFormat()
{
    const QFileInfo info(path_->text());
    if (!info.fileName().isEmpty())
        path_->setText(QDir(info.path()).filePath(info.completeBaseName()) + QLatin1Char('.') +
                       format_->currentData().toString());
}

void RecordWindow::refuse(QWidget *field, const QString &reason)
{
    hint_->setText(reason);
    hint_->show();
    field->setFocus();
}

std::optional<RecorderSettings> RecordWindow::settings()
{
    const auto start = start_->triggers();
    const auto stop = start ? stop_->triggers() : std::nullopt;
    if (!start || !stop) {
        hint_->setText(start ? stop_->errorText() : start_->errorText());
        hint_->show();
        return std::nullopt;
    }
    followName();
    RecorderSettings settings;
    settings.path = QDir::fromNativeSeparators(path_->text().trimmed());
    const std::optional<TraceFormat> format =
        traceFormatOfName(QStringLiteral("x.") + format_->currentData().toString());
    if (!format || QFileInfo(settings.path).fileName().isEmpty() ||
        !QFileInfo(QFileInfo(settings.path).path()).isDir()) {
        refuse(path_, text3("没有这个文件夹：%1", "沒有這個資料夾：%1", "There is no such folder: %1")
                          .arg(QDir::toNativeSeparators(QFileInfo(settings.path).path())));
        return std::nullopt;
    }
    settings.format = *format;
    settings.rotateBytes = static_cast<std::uint64_t>(megabytes_->value()) * kMegabyte;
    settings.rotateSeconds = minutes_->value() * kSecondsPerMinute;
    settings.keepFiles = keep_->value();
    settings.start = *start;
    settings.stop = *stop;
    settings.preTriggerFrames = beforeFrames_->value();
    settings.preTriggerMilliseconds = beforeSeconds_->value() * kMsPerSecond;
    return settings;
}

// Numbers go on behind the highest, so that files in a row replace none; the oldest make room where only some are kept.
bool RecordWindow::mayReplace(const RecorderSettings &settings)
{
    const bool agreed = settings.path == std::exchange(agreed_, QString());
    const bool many = settings.hasManyFiles();
    const std::size_t ring = many && settings.keepFiles > 0 ? numberedFiles(settings.path).size() : 0;
    if (ring > 0)
        return isConfirmed(
            this, tipTitle(),
            text3("已有%1个较早的编号文件。只保留最新的%2个，更早的将被删除。继续？",
                  "已有%1個較早的編號檔案。只保留最新的%2個，更早的將被刪除。繼續？",
                  "There are %1 numbered files of earlier recordings. Only the newest %2 are kept, older "
                  "ones are deleted. Go on?")
                .arg(QString::number(ring), QString::number(settings.keepFiles)));
    if (agreed || many || !QFileInfo::exists(settings.path))
        return true;
    return isConfirmed(
        this, tipTitle(),
        text3("文件已存在，是否覆盖？\n%1", "檔案已存在，是否覆寫？\n%1", "The file exists already. Replace it?\n%1")
            .arg(QDir::toNativeSeparators(settings.path)));
}

// --- recording ----------------------------------------------------------------------------------------------------

void RecordWindow::begin()
{
    hint_->hide();
    FilterError error;
    const std::optional<FrameFilter> filter = FrameFilter::parse(filter_->text(), &error);
    if (!filter) {
        refuse(filter_, text3("筛选，第%1个字符：%2", "篩選，第%1個字元：%2", "Filter, character %1: %2")
                            .arg(QString::number(error.position + 1), error.message));
        filter_->setSelection(error.position, error.length);
        return;
    }
    const std::optional<RecorderSettings> chosen = settings();
    if (!chosen || !mayReplace(*chosen) || isRunning())
        return;
    store();
    recording_ = std::make_unique<LiveRecording>(*chosen, *filter);
    timer_->start();
    showFields();
    look();
    end_->setFocus();
}

void RecordWindow::end()
{
    if (!recording_)
        return;
    recording_->end();
    look();
}

void RecordWindow::look()
{
    if (!recording_)
        return;
    for (const RecorderEvent &event : recording_->takeEvents())
        tell(event);
    showState();
    if (!recording_->isDone())
        return;
    timer_->stop();
    recording_->end();
    const std::uint64_t lost = recording_->lostFrames();
    emit log(text3("记录结束：共%1帧，丢失%2帧", "記錄結束：共%1幀，遺失%2幀", "Recording ended: %1 frames, %2 lost")
                 .arg(recording_->recordedFrames())
                 .arg(lost));
    recording_.reset();
    showFields();
    begin_->setFocus();
}

void RecordWindow::tell(const RecorderEvent &event)
{
    const QString path = QDir::toNativeSeparators(event.path);
    switch (event.kind) {
    case RecorderEvent::Kind::FileBegun:
        emit log(text3("记录文件开始：%1", "記錄檔案開始：%1", "Recording to %1").arg(path));
        break;
    case RecorderEvent::Kind::FileEnded:
        emit log(text3("记录文件完成：%1，%2帧", "記錄檔案完成：%1，%2幀", "Recorded: %1, %2 frames")
                     .arg(path, QString::number(event.frames)));
        for (const TraceLoss &loss : event.losses)
            emit log(text3("该格式无法保存：%1（%2次）", "該格式無法儲存：%1（%2次）",
                           "The format cannot hold: %1 (%2 times)")
                         .arg(loss.what, QString::number(loss.count)));
        break;
    case RecorderEvent::Kind::Trouble:
        emit log(text3("记录受阻：%1（%2），数据可能丢失", "記錄受阻：%1（%2），數據可能遺失",
                       "Recording is in trouble: %1: %2; frames are being lost")
                     .arg(path, event.reason));
        break;
    case RecorderEvent::Kind::Recovered:
        emit log(text3("记录恢复：%1，丢失%2帧", "記錄恢復：%1，遺失%2幀", "Recording goes on: %1, %2 frames were lost")
                     .arg(path, QString::number(event.lost)));
        break;
    }
}

void RecordWindow::showState()
{
    if (!recording_) {
        state_->setText(text3("未在记录", "未在記錄", "Not recording"));
        return;
    }
    const QString what = recording_->isRecording() ? text3("正在记录", "正在記錄", "Recording")
                                                   : text3("等待开始条件", "等待開始條件", "Waiting for the start");
    state_->setText(text3("%1：%2帧，丢失%3帧", "%1：%2幀，遺失%3幀", "%1: %2 frames, %3 lost")
                        .arg(what)
                        .arg(recording_->recordedFrames())
                        .arg(recording_->lostFrames()));
}
