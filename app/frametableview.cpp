#include "app/frametableview.h"

#include "app/columntitles.h"
#include "app/framecelldelegate.h"
#include "app/rowheader.h"
#include "device/driver/wirerecords.h"
#include "frames/frametexts.h"

#include <QAccessible>
#include <QEvent>
#include <QItemSelectionModel>
#include <QScrollBar>
#include <QSignalBlocker>

namespace
{
constexpr int kRowPadding = 6;        // pixels at 96 DPI, above and below the text together
constexpr int kDataPrefix = 3;        // characters of "x| "
constexpr int kCharactersPerByte = 3; // two digits and a blank
constexpr int kUsualData =
    kDataPrefix + int(kClassicDataBytes) * kCharactersPerByte; // room that the data column always has

// Texts as long as a column's usually get in the current language.
QStringList samples(int column)
{
    const FrameWords &words = frameWords(languageCode());
    QStringList texts{columnTitles().at(column) + QLatin1Char('*')};
    switch (column) {
    case IndexColumn:
        texts << QStringLiteral("00000000");
        break;
    case SystemTimeColumn:
        texts << QStringLiteral("00:00:00.000");
        break;
    case TimeStampColumn:
        texts << QStringLiteral("0xDDDDDDDDD"); // 19 hours
        break;
    case IdColumn:
        texts << QStringLiteral("0xDDDDDDDD");
        break;
    case FormatColumn:
        texts << words.standardFrame << words.extendedFrame;
        break;
    case TypeColumn:
        texts << words.dataFrame << words.remoteFrame;
        break;
    case ProtocolColumn:
        texts << words.fdWithSwitch;
        break;
    default:
        break;
    }
    return texts;
}

int widest(const QFontMetrics &metrics, const QStringList &texts)
{
    int width = 0;
    for (const QString &text : texts)
        width = qMax(width, metrics.horizontalAdvance(text));
    return width;
}

// Width of a data text of so many characters, whatever its digits are.
int dataTextWidth(const QFontMetrics &metrics, int characters)
{
    QString widestByte;
    int width = 0;
    for (const char c : {'0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'A', 'B', 'C', 'D', 'E', 'F'}) {
        const QString byte = QString(2, QLatin1Char(c)) + QLatin1Char(' ');
        const int advance = metrics.horizontalAdvance(byte.repeated(kClassicDataBytes)); // advances may be fractions
        if (advance > width) {
            width = advance;
            widestByte = byte;
        }
    }
    const int bytes = (qMax(characters, kUsualData) - kDataPrefix) / kCharactersPerByte;
    return metrics.horizontalAdvance(QLatin1String("x| ") + widestByte.repeated(bytes));
}
} // namespace

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
    setEditTriggers(QAbstractItemView::NoEditTriggers);
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
    if (filtering_)
        failing_.erase(failing_.begin() + first, failing_.begin() + last + 1);
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
    viewport()->update();
#if QT_CONFIG(accessibility) // a Qt built without it is at hand for Windows
    if (QAccessible::isActive()) {
        QAccessibleTableModelChangeEvent event(this, QAccessibleTableModelChangeEvent::ModelReset);
        QAccessible::updateAccessibility(&event);
    }
#endif
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
        setColumnWidth(column, qMax(columnWidth(column), usualWidth(column)));
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
    if (frames_ && (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange))
        setMeasures();
}

void FrameTableView::resizeEvent(QResizeEvent *event)
{
    QTableView::resizeEvent(event);
    if (frames_)
        fitDataColumn();
}

void FrameTableView::setMeasures()
{
    const int padding = kRowPadding * logicalDpiY() / 96;
    rows_->setMinimumSectionSize(1);
    rows_->setDefaultSectionSize(fontMetrics().height() + padding);
    for (int column = 0; column < DataColumn; ++column)
        setColumnWidth(column, usualWidth(column));
    fitDataColumn();
}

int FrameTableView::usualWidth(int column) const
{
    const int margins = 2 * style()->pixelMetric(QStyle::PM_HeaderMargin) + fontMetrics().averageCharWidth();
    return widest(fontMetrics(), samples(column)) + margins;
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
    const QFontMetrics metrics = fontMetrics();
    const int needed = dataTextWidth(metrics, longestData_) + 2 * metrics.averageCharWidth();
    const int others = columnViewportPosition(DataColumn) + horizontalHeader()->offset();
    setColumnWidth(DataColumn, qMax(needed, viewport()->width() - others));
}
