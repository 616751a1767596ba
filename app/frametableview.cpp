#include "app/frametableview.h"

#include "app/rowheader.h"
#include "widgets/columnmeasures.h"
#include "widgets/framecelldelegate.h"

#include <QAccessible>
#include <QEvent>
#include <QItemSelectionModel>
#include <QPainter>
#include <QScrollBar>
#include <QSignalBlocker>

#include <algorithm>
#include <utility>

FrameTableView::Round::Round(FrameTableView &view) : view_(view)
{
    view_.inRound_ = true;
}

FrameTableView::Round::~Round()
{
    view_.inRound_ = false;
    if (view_.pending_)
        view_.sync();
}

FrameTableView::FrameTableView(QWidget *parent) : LightGridTable(parent), rows_(new RowHeader(this))
{
    setVerticalHeader(rows_);
    setItemDelegate(new FrameCellDelegate(this));
    setCornerButtonEnabled(false);
    horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    horizontalHeader()->setHighlightSections(false);
    setAlternatingRowColors(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    setWordWrap(false);
    setTabKeyNavigation(false);
    connect(horizontalHeader(), &QHeaderView::sectionResized, this, [this](int column) {
        if (column != DataColumn)
            fitDataColumn();
    });
}

void FrameTableView::setFrameModel(MyTableModel *model)
{
    Q_ASSERT_X(model->columnCount() == FrameColumnCount, "setFrameModel", "the model has no titles yet");
    frames_ = model;
    setModel(model);
    takeOverNotifications();
    horizontalHeader()->setSectionResizeMode(DataColumn, QHeaderView::Fixed);
    setMeasures();
    filterChanged();
}

void FrameTableView::takeOverNotifications()
{
    QList<QObject *> listeners{this, horizontalHeader(), rows_};
    const auto selections = findChildren<QItemSelectionModel *>();
    for (QItemSelectionModel *selection : selections)
        listeners.append(selection);
    for (const QObject *listener : listeners) {
        disconnect(frames_, &QAbstractItemModel::rowsAboutToBeInserted, listener, nullptr);
        disconnect(frames_, &QAbstractItemModel::rowsInserted, listener, nullptr);
        disconnect(frames_, &QAbstractItemModel::rowsAboutToBeRemoved, listener, nullptr);
        disconnect(frames_, &QAbstractItemModel::rowsRemoved, listener, nullptr);
        disconnect(frames_, &QAbstractItemModel::modelAboutToBeReset, listener, nullptr);
        disconnect(frames_, &QAbstractItemModel::modelReset, listener, nullptr);
    }
    connect(frames_, &QAbstractItemModel::rowsInserted, this,
            [this](const QModelIndex &, int first, int last) { rowsAppeared(first, last); });
    connect(frames_, &QAbstractItemModel::rowsAboutToBeRemoved, this, [this] { rememberCurrent(); });
    connect(frames_, &QAbstractItemModel::rowsRemoved, this,
            [this](const QModelIndex &, int first, int last) { rowsGone(first, last); });
    connect(frames_, &QAbstractItemModel::modelAboutToBeReset, this, [this] { rememberCurrent(); });
    connect(frames_, &QAbstractItemModel::modelReset, this, [this] {
        pendingReset_ = true;
        changed();
    });
}

void FrameTableView::rowsAppeared(int first, int last)
{
    int longest = longestData_;
    for (int row = first; row <= last; ++row)
        longest = qMax(longest, frames_->row(row)[DataColumn].size());
    setLongestData(longest);
    if (filtering_) {
        std::deque<bool> failing;
        for (int row = first; row <= last; ++row)
            failing.push_back(!frames_->acceptsRow(frames_->row(row)));
        failing_.insert(failing_.begin() + first, failing.begin(), failing.end());
    }
    changed();
}

void FrameTableView::rowsGone(int first, int last)
{
    int shown = last - first + 1;
    if (filtering_) {
        const auto begin = failing_.begin() + first;
        const auto end = failing_.begin() + last + 1;
        shown = static_cast<int>(std::count(begin, end, false));
        failing_.erase(begin, end);
    }
    if (first == 0)
        heightGone_ += qint64(shown) * rows_->defaultSectionSize();
    if (rememberedRow_ > last)
        rememberedRow_ -= last - first + 1;
    else if (rememberedRow_ >= first)
        rememberedRow_ = -1;
    changed();
}

void FrameTableView::changed()
{
    pending_ = true;
    if (!inRound_)
        sync();
}

void FrameTableView::sync()
{
    QScrollBar *bar = verticalScrollBar();
    const bool follow = standsAtFollowedEnd();
    const int place = static_cast<int>(qMax<qint64>(0, bar->value() - std::exchange(heightGone_, 0)));
    pending_ = false;
    if (pendingReset_) {
        pendingReset_ = false;
        testRows();
        int longest = longestData_;
        for (int row = 0; row < frames_->rowCount(); ++row)
            longest = qMax(longest, frames_->row(row)[DataColumn].size());
        setLongestData(longest);
    }
    rows_->followRowCount();
    hideFailingRows();
    restoreCurrent();
    if (frames_->rowCount() == 0)
        setLongestData(0);
    executeDelayedItemsLayout();
    bar->setValue(follow ? bar->maximum() : place);
    viewport()->update();
#if QT_CONFIG(accessibility) // a Qt built without it is at hand for Windows
    if (QAccessible::isActive()) {
        QAccessibleTableModelChangeEvent event(this, QAccessibleTableModelChangeEvent::ModelReset);
        QAccessible::updateAccessibility(&event);
    }
#endif
}

bool FrameTableView::standsAtFollowedEnd() const
{
    return followsEnd_ && verticalScrollBar()->value() == verticalScrollBar()->maximum();
}

void FrameTableView::setFollowsEnd(bool on)
{
    followsEnd_ = on;
}

void FrameTableView::setHint(TableHint hint)
{
    if (hint_ == hint)
        return;
    hint_ = hint;
    viewport()->update();
}

void FrameTableView::filterChanged()
{
    filtering_ = false;
    for (int column = 0; column < FrameColumnCount; ++column)
        filtering_ = filtering_ || !frames_->filter(column).isEmpty();
    testRows();
    titlesChanged();
    changed();
}

void FrameTableView::testRows()
{
    failing_.clear();
    for (int row = 0; filtering_ && row < frames_->rowCount(); ++row)
        failing_.push_back(!frames_->acceptsRow(frames_->row(row)));
}

void FrameTableView::hideFailingRows()
{
    if (!filtering_ && !anyHidden_)
        return;
    const QSignalBlocker blocker(rows_); // one update of the geometry instead of one per row
    rows_->setUpdatesEnabled(false);
    anyHidden_ = false;
    for (int row = 0; row < rows_->count(); ++row) {
        const bool hide = filtering_ && failing_[static_cast<std::size_t>(row)];
        anyHidden_ = anyHidden_ || hide;
        if (isRowHidden(row) != hide)
            setRowHidden(row, hide);
    }
    rows_->setUpdatesEnabled(true);
    updateGeometries();
}

void FrameTableView::titlesChanged()
{
    horizontalHeader()->headerDataChanged(Qt::Horizontal, 0, frames_->columnCount() - 1);
}

void FrameTableView::languageChanged()
{
    titlesChanged();
    for (int column = 0; column < DataColumn; ++column)
        setColumnWidth(column, qMax(columnWidth(column), columnmeasures::usualWidth(*this, column)));
    viewport()->update(); // the hint
}

int FrameTableView::currentRow() const
{
    return remembering_ ? rememberedRow_ : currentIndex().row();
}

void FrameTableView::clearCurrent()
{
    if (inRound_) {
        rememberCurrent();
        rememberedRow_ = -1;
        pending_ = true;
        return;
    }
    setCurrentIndex(QModelIndex());
    clearSelection();
}

void FrameTableView::rememberCurrent()
{
    if (remembering_)
        return;
    remembering_ = true;
    const QModelIndex current = currentIndex();
    rememberedRow_ = current.row();
    rememberedColumn_ = current.column();
    rememberedSelected_ = selectionModel()->isSelected(current);
}

void FrameTableView::restoreCurrent()
{
    if (!remembering_)
        return;
    remembering_ = false;
    selectionModel()->reset();
    if (rememberedRow_ < 0)
        return;
    const bool scrolls = hasAutoScroll();
    setAutoScroll(false);
    QItemSelectionModel::SelectionFlags command = QItemSelectionModel::NoUpdate;
    if (rememberedSelected_)
        command = QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows;
    selectionModel()->setCurrentIndex(frames_->index(rememberedRow_, rememberedColumn_), command);
    setAutoScroll(scrolls);
}

void FrameTableView::changeEvent(QEvent *event)
{
    QTableView::changeEvent(event);
    if (frames_ && (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)) {
        const bool follow = standsAtFollowedEnd();
        setMeasures();
        updateGeometries();
        if (follow)
            scrollToBottom();
    }
}

void FrameTableView::resizeEvent(QResizeEvent *event)
{
    const bool follow = standsAtFollowedEnd();
    QTableView::resizeEvent(event);
    if (!frames_)
        return;
    fitDataColumn();
    if (follow)
        scrollToBottom();
}

void FrameTableView::paintEvent(QPaintEvent *event)
{
    LightGridTable::paintEvent(event);
    if (!frames_ || frames_->rowCount() > 0)
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Text));
    const int margin = fontMetrics().height();
    painter.drawText(viewport()->rect().adjusted(margin, margin, -margin, -margin), Qt::AlignCenter | Qt::TextWordWrap,
                     tableHintText(hint_));
}

void FrameTableView::scrollContentsBy(int dx, int dy)
{
    QTableView::scrollContentsBy(dx, dy);
    if (frames_ && frames_->rowCount() == 0)
        viewport()->update(); // the hint stays in the middle
}

void FrameTableView::setMeasures()
{
    rows_->setMinimumSectionSize(1);
    rows_->setHeight(columnmeasures::rowHeight(*this));
    for (int column = 0; column < DataColumn; ++column)
        setColumnWidth(column, columnmeasures::usualWidth(*this, column));
    fitDataColumn();
}

void FrameTableView::setLongestData(int characters)
{
    if (characters == longestData_)
        return;
    longestData_ = characters;
    fitDataColumn();
}

void FrameTableView::fitDataColumn()
{
    const int needed = columnmeasures::dataWidth(*this, longestData_);
    const int others = columnViewportPosition(DataColumn) + horizontalHeader()->offset();
    setColumnWidth(DataColumn, qMax(needed, viewport()->width() - others));
}
