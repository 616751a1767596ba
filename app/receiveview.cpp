#include "app/receiveview.h"

#include "app/buttonkeys.h"
#include "app/displayfilter.h"
#include "app/rowclipboard.h"
#include "app/tablehint.h"
#include "device/language.h"
#include "frames/framecounter.h"
#include "frames/mytablemodel.h"
#include "frames/pendingframes.h"
#include "traces/columntitles.h"
#include "ui_receiveview.h"

#include <QEvent>
#include <QLocale>
#include <QPointer>
#include <QTime>

#include <algorithm>

ReceiveView::ReceiveView(QWidget *parent)
    : QWidget(parent), ui_(std::make_unique<Ui::ReceiveView>()), model_(new MyTableModel(this))
{
    ui_->setupUi(this);
    setLabelWidths();
    setHeaderTexts();
    ui_->tableView->setFrameModel(model_);
    filter_ = new DisplayFilter(model_, ui_->tableView);
    connect(filter_, &DisplayFilter::conditionsChanged, this, &ReceiveView::showConditions);
    showConditions();
    addCopyKeys(ui_->tableView, model_);

    statistics_.attach(FrameStatistics::Channel1Received, ui_->ch1RecvCount, ui_->ch1RecvRate);
    statistics_.attach(FrameStatistics::Channel2Received, ui_->ch2RecvCount, ui_->ch2RecvRate);
    statistics_.attach(FrameStatistics::Channel1Transmitted, ui_->ch1SendCount, ui_->ch1SendRate);
    statistics_.attach(FrameStatistics::Channel2Transmitted, ui_->ch2SendCount, ui_->ch2SendRate);

    connect(&capture_, &CaptureFile::logLine, this, &ReceiveView::logLine);
    const auto keepSelection = [this] { selectionKept_ = true; };
    connect(ui_->tableView, &QAbstractItemView::clicked, this, keepSelection);
    connect(ui_->tableView, &QAbstractItemView::pressed, this, keepSelection);
    showHint();
}

ReceiveView::~ReceiveView()
{
    capture_.disconnect(this);
    closeCapture();
}

void ReceiveView::refresh()
{
    runRound(isCapturing());
    showHint();
}

void ReceiveView::runRound(bool capturing)
{
    QList<ModelItem> frames = takePendingFrames();
    if (frames.isEmpty())
        return;
    quint64 number = takeFrameNumbers(static_cast<quint64>(frames.size()));
    const QString now = QLocale::c().toString(QTime::currentTime(), QStringLiteral("hh:mm:ss.zzz"));
    const bool paused = isPaused();
    FrameStatistics::Counts counts{};
    Frames shown;
    int overtaken = capturing ? 0 : overtakenFrames(frames.size());
    for (ModelItem &frame : frames) {
        ++counts[FrameStatistics::counterOf(frame.channel, frame.direction)];
        if (overtaken > 0) {
            --overtaken;
            ++number;
            continue;
        }
        frame.indexText = QString::number(number++);
        frame.systemTime = now;
        const bool accepted = model_->acceptsRow(frame);
        if (capturing && (accepted || !capture_.wantsFilteredOnly()))
            capture_.add(frame);
        if (accepted && !paused)
            shown.push_back(&frame);
    }
    if (capturing)
        capture_.writeRound();
    if (!paused)
        display(shown);
    statistics_.add(counts);
}

// Of so many new frames, the first ones that nobody will see: later ones of the same round take their place.
int ReceiveView::overtakenFrames(int count) const
{
    if (isPaused())
        return count;
    const bool everyFrameMatters = merge_ || model_->isFiltered();
    return everyFrameMatters ? 0 : static_cast<int>(qMax<qint64>(0, count - qint64(listLimit_)));
}

void ReceiveView::recvData(QList<ModelItem> modelList, uint channel)
{
    takeBatch(modelList, FrameStatistics::counterOf(channel, Received));
}

void ReceiveView::sendedData(QList<ModelItem> modelList, uint channel)
{
    takeBatch(modelList, FrameStatistics::counterOf(channel, Transmitted));
}

void ReceiveView::takeBatch(QList<ModelItem> &frames, FrameStatistics::Counter counter)
{
    statistics_.add(counter, static_cast<quint32>(frames.size()));
    quint64 number = takeFrameNumbers(static_cast<quint64>(frames.size()));
    const bool capturing = isCapturing();
    Frames shown;
    for (ModelItem &frame : frames) {
        frame.indexText = QString::number(number++);
        frame.idText = QLatin1String("0x") + frame.idText.toUpper();
        frame.dataText = QLatin1String("x| ") + frame.dataText.toUpper();
        if (capturing)
            capture_.add(frame);
        shown.push_back(&frame);
    }
    if (capturing)
        capture_.writeRound();
    if (isPaused())
        return;
    if (merge_)
        filter_->clearAll();
    display(shown);
}

// Room for numbers that grow, so that nothing moves when they do.
void ReceiveView::setLabelWidths()
{
    const int total = fontMetrics().horizontalAdvance(QStringLiteral("0000000000"));
    const int rate = fontMetrics().horizontalAdvance(QStringLiteral("000000/s;"));
    for (QLabel *label : {ui_->ch1RecvCount, ui_->ch2RecvCount, ui_->ch1SendCount, ui_->ch2SendCount})
        label->setMinimumWidth(total);
    for (QLabel *label : {ui_->ch1RecvRate, ui_->ch2RecvRate, ui_->ch1SendRate, ui_->ch2SendRate})
        label->setMinimumWidth(rate);
}

bool ReceiveView::isCapturing() const
{
    return ui_->checkBox->isChecked() && capture_.isOpen();
}

bool ReceiveView::isPaused() const
{
    return ui_->pauseBox->isChecked();
}

// Moves the texts of the frames into the table; of more than the limit, those of the last ones.
void ReceiveView::display(const Frames &frames)
{
    const qint64 limit = listLimit_;
    const qint64 count = std::min<qint64>(static_cast<qint64>(frames.size()), limit);
    {
        const FrameTableView::Round round(*ui_->tableView);
        const qint64 excess = model_->rowCount() + count - limit;
        if (excess > 0) {
            model_->removeFirstRows(static_cast<int>(std::min<qint64>(excess, model_->rowCount())));
            ui_->tableView->clearCurrent();
        }
        QList<FrameRow> rows;
        rows.reserve(merge_ ? 0 : static_cast<int>(count));
        for (auto frame = frames.end() - count; frame != frames.end(); ++frame) {
            if (merge_)
                model_->mergeRow(toFrameRow(std::move(**frame)));
            else
                rows.append(toFrameRow(std::move(**frame)));
        }
        if (!rows.isEmpty())
            model_->appendRows(rows);
    }
    if (!selectionKept_)
        selectCurrentRow();
    selectionKept_ = false;
}

void ReceiveView::showHint()
{
    if (model_->rowCount() == 0)
        ui_->tableView->setHint(tableHint(isPaused(), model_->isFiltered()));
}

void ReceiveView::selectCurrentRow()
{
    QItemSelectionModel *selection = ui_->tableView->selectionModel();
    const QModelIndex current = selection->currentIndex();
    if (current.isValid() && !selection->isSelected(current))
        selection->select(current, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void ReceiveView::showRates()
{
    statistics_.showRates();
}

void ReceiveView::setListLimit(uint rows)
{
    listLimit_ = qMax(1U, rows);
}

void ReceiveView::setMerge(bool merge)
{
    merge_ = merge;
    ui_->tableView->setFollowsEnd(!merge);
    if (!merge) {
        ui_->tableView->scrollToBottom(); // the merged rows were shown from the top
        return;
    }
    clearList();
    filter_->clearAll();
}

void ReceiveView::setHeaderTexts()
{
    model_->setHeader(columnTitles());
    if (ui_->tableView->model())
        ui_->tableView->languageChanged();
    showConditions();
}

// The button is there only while it can do something, and says for which columns; a language takes their marks away.
void ReceiveView::showConditions()
{
    QStringList filtered;
    for (int column = 0; column < FrameColumnCount; ++column)
        if (!model_->filter(column).isEmpty())
            filtered << columnTitles().at(column);
    const QString key = buttonKeyText(*ui_->pushButton_2);
    ui_->pushButton_2->setEnabled(!filtered.isEmpty());
    ui_->pushButton_2->setToolTip(
        filtered.isEmpty() ? key
                           : text3("已筛选的列：%1（%2）", "已篩選的欄：%1（%2）", "Filtered columns: %1 (%2)")
                                 .arg(filtered.join(text3("、", "、", ", ")), key));
}

void ReceiveView::on_cleanListBtn_clicked()
{
    clearList();
}

QString ReceiveView::selectedFrameCsv() const
{
    return sameFrameRowsCsv(*ui_->tableView, *model_);
}

void ReceiveView::clearList()
{
    resetFrameCounter();
    model_->clear();
    ui_->tableView->clearCurrent();
}

void ReceiveView::on_pushButton_clicked()
{
    statistics_.resetTotals();
}

void ReceiveView::on_pushButton_2_clicked()
{
    filter_->clearAll();
}

void ReceiveView::on_checkBox_clicked()
{
    closeCapture();
    if (ui_->checkBox->isChecked())
        startCapture();
}

void ReceiveView::startCapture()
{
    const QPointer<savefileDlg> dialog = new savefileDlg(this);
    dialog->exec();
    if (!dialog) // the window went away meanwhile
        return;
    const QString path = dialog->path();
    const CaptureMode mode = dialog->mode();
    delete dialog;
    if (path.isEmpty())
        ui_->checkBox->setChecked(false);
    else
        capture_.open(path, model_->header(), mode);
}

void ReceiveView::closeCapture()
{
    if (!capture_.isOpen())
        return;
    runRound(true);
    capture_.close();
}

void ReceiveView::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        ui_->retranslateUi(this); // counts and rates are not part of the form's texts
    else if (event->type() == QEvent::FontChange)
        setLabelWidths();
}
