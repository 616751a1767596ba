#include "analysis/recordingwindow.h"

#include "analysis/filterline.h"
#include "analysis/recordingexporter.h"
#include "analysis/recordingview.h"
#include "analysis/replaybar.h"
#include "device/language.h"

#include <QFileInfo>
#include <QInputDialog>
#include <QMenu>
#include <QTimer>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QToolButton>

#include <cmath>

namespace
{
constexpr double kNanoseconds = 1e9;
constexpr double kLongestTime = 9e9; // seconds
} // namespace

RecordingWindow *RecordingWindow::openFile(const QString &path, QWidget *parent, QString *error)
{
    auto index = std::make_unique<RecordingIndex>(path);
    if (!index->open(error))
        return nullptr;
    auto *window = new RecordingWindow(std::move(index), parent);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->open();
    return window;
}

RecordingWindow::~RecordingWindow()
{
    timer_->stop();
    replay_->giveUp();
    exporter_->giveUp();
    model_->setFilter(nullptr);
}

void RecordingWindow::look()
{
    if (search_ && search_->finished()) {
        const auto found = search_->found();
        search_.reset();
        if (found)
            goToRow(*found);
        tell(found ? QString() : text3("没有找到", "沒有找到", "Not found"));
    }
    exporter_->look();
    replay_->look();
    const std::uint64_t total = model_->total();
    if (total != totalShown_) {
        const bool wasAtEnd = follow_->isChecked() && view_->isAtEnd();
        totalShown_ = total;
        view_->rowsChanged();
        if (wasAtEnd && !filter_)
            view_->scrollToEnd();
    }
    if (keeping_ && (!filter_ || filter_->rowsDone() > rowToKeep_ || filter_->finished())) {
        keeping_ = false;
        view_->setCurrent(model_->positionFrom(rowToKeep_));
    }
    showProgress();
}

void RecordingWindow::showProgress()
{
    const RecordingIndex::State state = index_->state();
    double part = 1;
    if (exporter_->isRunning())
        part = exporter_->progress();
    else if (filter_ && !filter_->finished())
        part = static_cast<double>(filter_->rowsDone()) / static_cast<double>(std::max<std::uint64_t>(state.rows, 1));
    else if (!state.complete)
        part = static_cast<double>(state.bytesDone) / static_cast<double>(std::max<std::uint64_t>(state.bytes, 1));
    const bool busy = exporter_->isRunning() || search_ || (filter_ && !filter_->finished()) ||
                      (!state.complete && !follow_->isChecked());
    if (search_)
        progress_->setRange(0, 0);
    else
        progress_->setRange(0, kProgressSteps);
    progress_->setValue(static_cast<int>(std::min(part, 1.0) * kProgressSteps));
    progress_->setVisible(busy);
    cancel_->setVisible(busy);
    showState();
    exportShown_->setEnabled(!exporter_->isRunning() && (!filter_ || filter_->finished()));
    exportSelected_->setEnabled(exportShown_->isEnabled());
}

QString RecordingWindow::stateText() const
{
    const RecordingIndex::State state = index_->state();
    QStringList parts;
    parts.append(text3("%1 帧", "%1 幀", "%1 frames").arg(state.rows));
    if (filter_)
        parts.append(text3("显示 %1", "顯示 %1", "%1 shown").arg(filter_->matches()));
    if (state.cancelled)
        parts.append(text3("索引已取消", "索引已取消", "indexing cancelled"));
    if (state.skipped > 0)
        parts.append(text3("跳过 %1 行", "略過 %1 行", "%1 parts skipped").arg(state.skipped));
    if (state.change == RecordingIndex::Change::Shorter)
        parts.append(text3("文件变短了", "檔案變短了", "the file has become shorter"));
    else if (state.change == RecordingIndex::Change::Gone)
        parts.append(text3("文件已不存在", "檔案已不存在", "the file is gone"));
    else if (state.error)
        parts.append(text3("读取止于%1：%2", "讀取止於%1：%2", "reading ended at %1: %2")
                         .arg(state.error->place.toString(), state.error->reason.toString()));
    if (const auto row = currentRow()) {
        const auto note = bookmarks_.all().constFind(*row);
        if (note != bookmarks_.all().constEnd())
            parts.append(text3("书签：", "書籤：", "bookmark: ") + note.value());
    }
    return parts.join(text3("，", "，", ", "));
}

void RecordingWindow::showState()
{
    const QString text = stateText();
    status_->setText(text);
    status_->setToolTip(text);
}

void RecordingWindow::cancel()
{
    if (exporter_->isRunning())
        exporter_->cancel();
    else if (search_)
        search_.reset();
    else if (filter_ && !filter_->finished())
        filter_->cancel();
    else
        index_->cancel();
    look();
}

void RecordingWindow::applyFilter()
{
    const std::optional<FrameFilter> filter = filterLine_->filter();
    if (!filter)
        return;
    if (exporter_->isRunning()) {
        tell(text3("导出结束后才能筛选", "匯出結束後才能篩選", "The filter can change once the export has ended"));
        return;
    }
    const auto row = currentRow();
    rowToKeep_ = row.value_or(rowToKeep_);
    model_->setFilter(nullptr);
    shown_ = *filter;
    filter_ = filter->isEmpty() ? nullptr : std::make_unique<RecordingFilter>(*index_, *filter);
    model_->setFilter(filter_.get());
    totalShown_ = model_->total();
    view_->rowsChanged();
    keeping_ = true;
    tell(QString());
    look();
}

void RecordingWindow::search(bool backwards)
{
    const std::optional<FrameFilter> what = searchLine_->filter();
    if (!what || searchLine_->text().trimmed().isEmpty()) {
        searchLine_->setFocus();
        return;
    }
    const auto row = currentRow();
    if (backwards && row.value_or(0) == 0) {
        tell(text3("没有找到", "沒有找到", "Not found"));
        return;
    }
    const std::uint64_t from = backwards ? *row - 1 : row ? *row + 1 : 0;
    search_.reset();
    search_ = std::make_unique<RecordingSearch>(*index_, *what, shown_, from, backwards);
    tell(QString());
}

void RecordingWindow::goTo()
{
    QString text = goTo_->text().trimmed();
    const bool time = text.contains(QLatin1Char('.')) || text.endsWith(QLatin1Char('s'));
    if (text.endsWith(QLatin1Char('s')))
        text.chop(1);
    bool good = false;
    if (time) {
        const double seconds = text.toDouble(&good);
        if (good && std::abs(seconds) < kLongestTime)
            goToRow(index_->rowAtTime(std::llround(seconds * kNanoseconds)));
    } else {
        const qulonglong row = text.toULongLong(&good);
        good = good && row > 0;
        if (good)
            goToRow(row - 1);
    }
    tell(good ? QString()
              : text3("行号（如 1200）或秒（如 12.5）", "列號（如 1200）或秒（如 12.5）",
                      "A row (1200) or seconds (12.5)"));
}

void RecordingWindow::goToRow(std::uint64_t row)
{
    view_->setCurrent(model_->positionFrom(row));
    view_->setFocus();
}

std::optional<std::uint64_t> RecordingWindow::currentRow() const
{
    return view_->current() < model_->total() ? std::optional(model_->rowOf(view_->current())) : std::nullopt;
}

void RecordingWindow::setTimes(int times)
{
    model_->setTimes(static_cast<RecordingTimes>(times));
    view_->setLongTimes(static_cast<RecordingTimes>(times) == RecordingTimes::Absolute);
}

void RecordingWindow::markRow()
{
    if (const auto row = currentRow()) {
        model_->setMarked(*row);
        times_->setCurrentIndex(static_cast<int>(RecordingTimes::SinceMarked));
    }
}

void RecordingWindow::toggleBookmark()
{
    const auto row = currentRow();
    if (!row)
        return;
    bool kept = true;
    if (bookmarks_.all().contains(*row)) {
        kept = bookmarks_.remove(*row);
    } else {
        bool accepted = false;
        const QString note =
            QInputDialog::getText(this, text3("书签", "書籤", "Bookmark"),
                                  text3("第 %1 行的备注：", "第 %1 列的備註：", "Note for row %1:").arg(*row + 1),
                                  QLineEdit::Normal, QString(), &accepted);
        if (!accepted)
            return;
        kept = bookmarks_.set(*row, note);
    }
    model_->setBookmarks(bookmarks_.rows());
    if (!kept)
        tell(text3("书签无法保存到 %1", "書籤無法儲存到 %1", "Bookmarks cannot be kept in %1")
                 .arg(bookmarks_.fileName()));
    look();
}

void RecordingWindow::fillBookmarks()
{
    bookmarkMenu_->clear();
    // A key of the action's own would stand against the window's.
    QAction *toggle = bookmarkMenu_->addAction(text3("添加或删除书签", "新增或刪除書籤", "Add or remove") +
                                               QStringLiteral("\tCtrl+B"));
    connect(toggle, &QAction::triggered, this, &RecordingWindow::toggleBookmark);
    bookmarkMenu_->addSeparator();
    const auto &all = bookmarks_.all();
    for (auto note = all.begin(); note != all.end(); ++note) {
        QString text = QStringLiteral("%1  %2").arg(QString::number(note.key() + 1), note.value());
        text.replace(QLatin1Char('&'), QStringLiteral("&&"));
        const quint64 row = note.key();
        connect(bookmarkMenu_->addAction(text), &QAction::triggered, this, [this, row] { goToRow(row); });
    }
}

void RecordingWindow::exportRows(bool selected)
{
    if (model_->total() == 0)
        return;
    std::uint64_t first = 0;
    std::uint64_t end = index_->rows();
    if (selected)
        std::tie(first, end) = selectedRows();
    exporter_->start(filter_.get(), first, end);
    look();
}

void RecordingWindow::tell(const QString &message)
{
    message_->setText(message);
    message_->setToolTip(message); // the window may be too narrow for it
}
