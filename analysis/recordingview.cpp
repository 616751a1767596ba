#include "analysis/recordingview.h"

#include "analysis/recordingmodel.h"
#include "widgets/columnmeasures.h"
#include "widgets/framecelldelegate.h"

#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QScrollBar>
#include <QSignalBlocker>

#include <algorithm>

namespace
{
constexpr std::uint64_t kLongestBar = 1000000000; // steps; a longer recording has several rows to a step
constexpr int kWheelStep = 120;                   // eighths of a degree, as mice send it
const QString kLongTime = QStringLiteral("2000-00-00 00:00:00.000000  ");
} // namespace

RecordingView::RecordingView(RecordingModel *model, QScrollBar *bar, QWidget *parent)
    : LightGridTable(parent), model_(model), bar_(bar)
{
    setModel(model);
    setItemDelegate(new FrameCellDelegate(this));
    verticalHeader()->hide();
    setCornerButtonEnabled(false);
    horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setStretchLastSection(true);
    setAlternatingRowColors(false);
    setSelectionMode(QAbstractItemView::NoSelection); // the view selects itself, also what is not in sight
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWordWrap(false);
    setTabKeyNavigation(false);
    connect(bar_, &QScrollBar::valueChanged, this, [this](int value) {
        const std::uint64_t last = lastTop();
        const std::uint64_t step = last / kLongestBar + 1;
        setTop(value == bar_->maximum() ? last : std::min(last, static_cast<std::uint64_t>(value) * step));
    });
    fitColumns();
}

void RecordingView::fitColumns()
{
    verticalHeader()->setDefaultSectionSize(columnmeasures::rowHeight(*this));
    for (int column = 0; column < FrameColumnCount; ++column)
        setColumnWidth(column, columnmeasures::usualWidth(*this, column));
    longestData_ = model_->longestData();
    setColumnWidth(DataColumn, columnmeasures::dataWidth(*this, longestData_));
    if (longTimes_) {
        const QFontMetrics metrics(columnmeasures::fixedWidthFont(font()));
        setColumnWidth(TimeStampColumn, metrics.horizontalAdvance(kLongTime));
    }
}

void RecordingView::setLongTimes(bool on)
{
    if (longTimes_ == on)
        return;
    longTimes_ = on;
    fitColumns();
}

int RecordingView::pageRows() const
{
    return qMax(1, viewport()->height() / qMax(1, verticalHeader()->defaultSectionSize()));
}

std::uint64_t RecordingView::lastTop() const
{
    const auto page = static_cast<std::uint64_t>(pageRows());
    return model_->total() - std::min(model_->total(), page);
}

void RecordingView::selectFrom(std::uint64_t position)
{
    anchor_ = std::min(position, model_->total() - std::min<std::uint64_t>(model_->total(), 1));
    showSelection();
}

bool RecordingView::isAtEnd() const
{
    return bar_->value() == bar_->maximum();
}

void RecordingView::scrollToEnd()
{
    setTop(lastTop());
}

void RecordingView::setTop(std::uint64_t position)
{
    model_->show(std::min(position, lastTop()), pageRows());
    if (model_->longestData() > longestData_)
        fitColumns();
    showBar();
    showSelection();
}

void RecordingView::showBar()
{
    const std::uint64_t last = lastTop();
    const std::uint64_t step = last / kLongestBar + 1;
    const QSignalBlocker quiet(bar_);
    bar_->setRange(0, static_cast<int>(last / step));
    bar_->setPageStep(static_cast<int>(static_cast<std::uint64_t>(pageRows()) / step));
    bar_->setValue(static_cast<int>(model_->top() / step));
}

void RecordingView::rowsChanged()
{
    const std::uint64_t total = model_->total();
    current_ = std::min(current_, total - std::min<std::uint64_t>(total, 1));
    anchor_ = std::min(anchor_, total - std::min<std::uint64_t>(total, 1));
    model_->refresh();
    setTop(model_->top());
}

void RecordingView::setCurrent(std::uint64_t position, bool extend)
{
    const std::uint64_t total = model_->total();
    if (total == 0)
        return;
    current_ = std::min(position, total - 1);
    if (!extend)
        anchor_ = current_;
    const auto page = static_cast<std::uint64_t>(pageRows());
    std::uint64_t top = model_->top();
    if (current_ + page < top || current_ > top + 2 * page)
        top = current_ - std::min(current_, page / 2); // far away: into the middle
    else if (current_ < top)
        top = current_;
    else if (current_ >= top + page)
        top = current_ - page + 1;
    setTop(top);
    emit currentChangedTo(current_);
}

void RecordingView::showSelection()
{
    QItemSelection selection;
    const std::uint64_t top = model_->top();
    const std::uint64_t begin = std::max(selectionBegin(), top);
    const std::uint64_t end = std::min(selectionEnd(), top + static_cast<std::uint64_t>(model_->rowCount()));
    if (begin < end)
        selection.select(model_->index(static_cast<int>(begin - top), 0),
                         model_->index(static_cast<int>(end - top) - 1, FrameColumnCount - 1));
    selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
}

void RecordingView::moveBy(std::int64_t rows, bool extend)
{
    const auto way = static_cast<std::uint64_t>(rows < 0 ? -rows : rows);
    setCurrent(rows < 0 ? current_ - std::min(current_, way) : current_ + way, extend);
}

void RecordingView::keyPressEvent(QKeyEvent *event)
{
    const bool extend = event->modifiers() & Qt::ShiftModifier;
    switch (event->key()) {
    case Qt::Key_Up:
        return moveBy(-1, extend);
    case Qt::Key_Down:
        return moveBy(1, extend);
    case Qt::Key_PageUp:
        return moveBy(-pageRows(), extend);
    case Qt::Key_PageDown:
        return moveBy(pageRows(), extend);
    case Qt::Key_Home:
        return setCurrent(0, extend);
    case Qt::Key_End:
        return setCurrent(model_->total() - 1, extend);
    default:
        // The table would search and select among the rows of this page only.
        QAbstractScrollArea::keyPressEvent(event); // NOLINT(bugprone-parent-virtual-call)
    }
}

void RecordingView::mousePressEvent(QMouseEvent *event)
{
    const int row = rowAt(event->pos().y());
    if (row >= 0 && event->button() == Qt::LeftButton)
        setCurrent(model_->top() + static_cast<std::uint64_t>(row), event->modifiers() & Qt::ShiftModifier);
}

void RecordingView::mouseMoveEvent(QMouseEvent *event)
{
    if (!(event->buttons() & Qt::LeftButton))
        return;
    const int row = rowAt(event->pos().y());
    if (row >= 0)
        setCurrent(model_->top() + static_cast<std::uint64_t>(row), true);
    else
        moveBy(event->pos().y() < 0 ? -1 : 1, true);
}

void RecordingView::wheelEvent(QWheelEvent *event)
{
    wheelRest_ += event->angleDelta().y() * QApplication::wheelScrollLines();
    const int rows = wheelRest_ / kWheelStep;
    wheelRest_ %= kWheelStep;
    const auto way = static_cast<std::uint64_t>(qAbs(rows));
    setTop(rows > 0 ? model_->top() - std::min(model_->top(), way) : model_->top() + way);
    event->accept();
}

void RecordingView::resizeEvent(QResizeEvent *event)
{
    LightGridTable::resizeEvent(event);
    setTop(model_->top());
}

void RecordingView::changeEvent(QEvent *event)
{
    LightGridTable::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        fitColumns();
}
