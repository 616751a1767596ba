#include "analysis/statisticswindow.h"

#include "analysis/bitmap.h"
#include "analysis/channelpanel.h"
#include "analysis/identifiermodel.h"
#include "analysis/signaldatabases.h"
#include "analysis/supervision.h"
#include "device/channelrates.h"
#include "device/driver/driver.h"
#include "device/language.h"
#include "frames/buswatch.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFileDialog>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSaveFile>
#include <QTableView>
#include <QTimer>

#include <algorithm>

namespace
{
constexpr unsigned kMostPanels = 8; // of a recording with more channels the first ones
} // namespace

StatisticsWindow::StatisticsWindow(QWidget *parent) : StatisticsWindow(std::nullopt, parent) {}

StatisticsWindow *StatisticsWindow::openRecording(RecordingPart part, QWidget *parent)
{
    auto *window = new StatisticsWindow(std::move(part), parent);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->open();
    return window;
}

StatisticsWindow::StatisticsWindow(std::optional<RecordingPart> part, QWidget *parent)
    : AnalysisWindow(part ? QStringLiteral("recordingStatistics") : QStringLiteral("statistics"), parent),
      part_(std::move(part)),
      live_(isLive()),
      databases_(SignalDatabases::shared()),
      model_(new IdentifierModel(this)),
      supervision_(new Supervision(live_, this)),
      timer_(new QTimer(this))
{
    createWidgets();
    freeze_->setVisible(isLive());
    connect(supervision_, &Supervision::log, this, &StatisticsWindow::log);
    if (!isLive()) // the operation log is another window's affair
        connect(this, &StatisticsWindow::log, status_, [this](const QString &line) {
            lastLine_ = line;
            showStatus();
        });
    connect(databases_.get(), &SignalDatabases::changed, this, &StatisticsWindow::databasesChanged);
    databasesChanged();
    connect(supervision_, &Supervision::changed, this, &StatisticsWindow::baselineChanged);
    connect(timer_, &QTimer::timeout, this, &StatisticsWindow::refresh);
    timer_->setInterval(kRefreshMs);
    view_->setFocus();
}

StatisticsWindow::~StatisticsWindow() = default;

void StatisticsWindow::showEvent(QShowEvent *event)
{
    AnalysisWindow::showEvent(event);
    databases_->start();
    if (!feed_)
        begin();
}

void StatisticsWindow::begin()
{
    feed_.reset();
    showRates();
    live_.clear();
    feed_ = std::make_unique<FrameFeed>(live_, part_);
    timer_->start();
    freeze_->setChecked(false);
    refresh();
}

// A recording that was read is read again to be held against it.
void StatisticsWindow::baselineChanged()
{
    if (!isLive() && feed_)
        begin();
    else
        refresh();
}

void StatisticsWindow::databasesChanged()
{
    model_->setLookup(databases_->lookup());
    view_->horizontalHeader()->setSectionHidden(IdentifierModel::MessageColumn, databases_->entries().empty());
}

void StatisticsWindow::closeEvent(QCloseEvent *event)
{
    AnalysisWindow::closeEvent(event);
    timer_->stop();
    feed_.reset();
    storeArrangement();
}

// --- what is counted ----------------------------------------------------------------------------------------------

void StatisticsWindow::refresh()
{
    const bool readAll = hasReadAll(); // before the last look
    if (isLive())
        showRates();
    else if (readAll)
        timer_->stop();
    progress_->setVisible(!isLive() && feed_ && !readAll);
    progress_->setValue(feed_ ? static_cast<int>(feed_->progress() * progress_->maximum()) : 0);
    supervision_->tell();
    if (freeze_->isChecked())
        return;
    live_.snapshot(&spare_);
    model_->show(spare_);
    showChannels();
    showSelected();
    showStatus();
}

void StatisticsWindow::showChannels()
{
    const StatisticsSnapshot &shown = model_->shown();
    for (const auto &[number, statistics] : shown.channels)
        if (statistics.hasTime())
            makePanels(std::min(number, kMostPanels));
    for (unsigned channel = 0; channel < panels_.size(); ++channel) {
        const auto found = shown.channels.find(channel + 1);
        const BusReport report = isLive() ? lastBusReport(channel) : BusReport();
        panels_[channel]->show(found == shown.channels.end() ? nullptr : &found->second, isLive() ? &report : nullptr);
    }
}

void StatisticsWindow::showRates()
{
    for (unsigned channel = 0; channel < (isLive() ? kChannelCount : kMostPanels); ++channel) {
        const BusReport report = isLive() ? lastBusReport(channel) : BusReport();
        const ChannelRates stored = channelRates(channel < kChannelCount ? channel : 0);
        live_.setRates(channel + 1, report.arbitrationRate != 0 ? BusRates{report.arbitrationRate, report.dataRate}
                                                                : BusRates{stored.arbitration, stored.data});
    }
}

void StatisticsWindow::showSelected()
{
    const int row = view_->currentIndex().row();
    bits_->show(row >= 0 && row < model_->rowCount() ? model_->entry(row) : nullptr);
}

void StatisticsWindow::showStatus()
{
    const StatisticsSnapshot &shown = model_->shown();
    QString text = text3("ID数：%1", "ID數：%1", "Identifiers: %1").arg(shown.identifiers.size());
    if (shown.beyondCeiling > 0)
        text += text3("　超出上限的帧：%1", "　超出上限的幀：%1", "   Frames of identifiers beyond the ceiling: %1")
                    .arg(shown.beyondCeiling);
    if (shown.lost > 0)
        text +=
            text3("　来不及统计的帧：%1", "　來不及統計的幀：%1", "   Frames lost on the way here: %1").arg(shown.lost);
    if (supervision_->isOn())
        text += text3("　监视：%1条报文，%2条有违例", "　監視：%1個訊息，%2個有違例",
                      "   Supervision: %1 messages, %2 with violations")
                    .arg(QString::number(supervision_->messages()), QString::number(shown.marks.size()));
    if (freeze_->isChecked())
        text += text3("　（显示已冻结）", "　（顯示已凍結）", "   (frozen)");
    if (!lastLine_.isEmpty())
        text += text3("　", "　", "   ") + lastLine_;
    if (text != status_->text())
        status_->setText(text);
}

void StatisticsWindow::reset()
{
    if (!isLive())
        return begin();
    live_.clear();
    freeze_->setChecked(false);
    refresh();
}

// --- out of the window --------------------------------------------------------------------------------------------

// The table itself would copy one cell.
bool StatisticsWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress || !static_cast<QKeyEvent *>(event)->matches(QKeySequence::Copy))
        return AnalysisWindow::eventFilter(watched, event);
    copySelected();
    return true;
}

void StatisticsWindow::copySelected() const
{
    QList<int> rows;
    const QModelIndexList selected = view_->selectionModel()->selectedRows();
    for (const QModelIndex &index : selected)
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    QString text;
    for (const int row : qAsConst(rows)) {
        QStringList cells;
        for (int column = 0; column < IdentifierModel::ColumnCount; ++column)
            cells.append(model_->text(row, column));
        text += cells.join(QLatin1Char('\t')) + QLatin1Char('\n');
    }
    if (!text.isEmpty())
        QApplication::clipboard()->setText(text);
}

void StatisticsWindow::askExport()
{
    const QString path = QFileDialog::getSaveFileName(this, text3("导出统计", "匯出統計", "Export the statistics"),
                                                      QStringLiteral("statistics.csv"), QStringLiteral("CSV (*.csv)"));
    if (!path.isEmpty())
        exportCsv(path);
}

bool StatisticsWindow::exportCsv(const QString &path)
{
    QSaveFile file(path);
    const QByteArray text = model_->csv();
    const bool written = file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.commit();
    emit log(
        written
            ? text3("统计已导出：%1", "統計已匯出：%1", "Statistics exported: %1").arg(QDir::toNativeSeparators(path))
            : text3("无法写入%1：%2", "無法寫入%1：%2", "Cannot write %1: %2")
                  .arg(QDir::toNativeSeparators(path), file.errorString()));
    return written;
}
