#include "dialogs/listsenddlg.h"

#include "ui_listsenddlg.h"

#include "dialogs/transmitdelegate.h"
#include "widgets/dialogscaler.h"
#include "widgets/messages.h"

#include <QAction>
#include <QFileInfo>
#include <QHeaderView>
#include <QKeyEvent>
#include <QSettings>
#include <QShortcut>
#include <QTimer>

#include <numeric>

namespace
{
constexpr int kRefreshMs = 200;
const QString kGeometryKey = QStringLiteral("transmit/geometry");
const QString kSplitterKey = QStringLiteral("transmit/splitter");

// Columns in pixels at 96 DPI; the title widens them where it is longer.
struct ColumnWidth {
    TransmitColumn column;
    int width;
};
constexpr ColumnWidth kWidths[] = {{NameColumn, 130},      {EntryIdColumn, 76},       {EntryFormatColumn, 70},
                                   {EntryTypeColumn, 64},  {EntryProtocolColumn, 88}, {SendTypeColumn, 84},
                                   {EntryDataColumn, 190}, {ModeColumn, 84},          {AwaitsColumn, 90},
                                   {ChangesColumn, 160},   {SentColumn, 70},          {LastSentColumn, 96},
                                   {CommentColumn, 120}};
} // namespace

listSendDlg::listSendDlg(QWidget *parent)
    : FormDialog(parent),
      ui_(std::make_unique<Ui::listSendDlg>()),
      engine_([this](const QString &line) { emit logLine(line); }),
      refresh_(new QTimer(this))
{
    setWindowFlag(Qt::WindowMinMaxButtonsHint, true);
    ui_->setupUi(this);
    document_.setObjectName(QStringLiteral("transmitDocument"));
    ui_->tableView->setModel(document_.model());
    ui_->tableView->setItemDelegate(new TransmitDelegate(this));
    ui_->tableView->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    ui_->tableView->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    addCommands();
    addFields();
    connect(document_.model(), &TransmitModel::refused, this, &listSendDlg::hint);
    connect(&document_, &TransmitDocument::listChanged, this, &listSendDlg::showList);
    connect(&document_, &TransmitDocument::stateChanged, this, &listSendDlg::showTitle);
    refresh_->setInterval(kRefreshMs);
    connect(refresh_, &QTimer::timeout, this, &listSendDlg::showCounts);
    const QString problem = document_.openLast();
    listSendDlg::retranslate();
    if (!problem.isEmpty())
        hint(text3("上次的列表无法打开：%1", "上次的列表無法開啟：%1", "The last list cannot be opened: %1")
                 .arg(problem));
    finishForm();
    setColumnWidths();
    const QSettings kept;
    restoreGeometry(kept.value(kGeometryKey).toByteArray());
    ui_->splitter->restoreState(kept.value(kSplitterKey).toByteArray());
}

listSendDlg::~listSendDlg()
{
    if (isVisible())
        keepPlace();
    document_.disconnect(this);
    ui_->tableView->selectionModel()->disconnect(this);
    document_.model()->disconnect(this);
}

void listSendDlg::setColumnWidths()
{
    QHeaderView *header = ui_->tableView->horizontalHeader();
    for (int column = 0; column < TransmitColumnCount; ++column)
        ui_->tableView->setColumnWidth(column, header->sectionSizeHint(column));
    for (const ColumnWidth &wanted : kWidths) {
        const int width = wanted.width * logicalDpiX() / kDesignDpi;
        if (ui_->tableView->columnWidth(wanted.column) < width)
            ui_->tableView->setColumnWidth(wanted.column, width);
    }
}

void listSendDlg::retranslate()
{
    ui_->retranslateUi(this);
    for (const Command &command : commands_) {
        command.action->setText(text3(command.text.simplified, command.text.traditional, command.text.english));
        const QString key = command.action->shortcut().toString(QKeySequence::NativeText);
        command.action->setToolTip(key.isEmpty() ? command.action->text()
                                                 : command.action->text() + QStringLiteral(" (%1)").arg(key));
    }
    ui_->hintLabel->clear(); // of another language
    document_.model()->retranslate();
    fields_.retranslate();
    showFields();
    setColumnWidths();
    showTitle();
}

void listSendDlg::showTitle()
{
    QString title = tr("列表发送");
    const QString name = QFileInfo(document_.path()).fileName();
    if (!name.isEmpty() || document_.isModified())
        title += QStringLiteral(" - ") + (name.isEmpty() ? text3("未命名", "未命名", "untitled") : name);
    if (document_.isModified())
        title += QStringLiteral(" *");
    setWindowTitle(title);
}

void listSendDlg::hint(const QString &text)
{
    ui_->hintLabel->setText(text);
    ui_->hintLabel->setToolTip(text);
}

// --- sending ----------------------------------------------------------------------------------------------------

void listSendDlg::on_pbnStart_clicked()
{
    hint({});
    engine_.start();
    if (!engine_.hasWork()) {
        engine_.stop();
        hint(text3("没有可发送的项", "沒有可發送的項", "There is nothing to send by itself"));
        return;
    }
    emit logLine(text3("列表发送：开始", "列表發送：開始", "List send: started"));
    showRunning();
}

void listSendDlg::on_pbnStop_clicked()
{
    if (!engine_.isRunning())
        return;
    engine_.stop();
    const std::vector<TransmitCounts> counts = engine_.counts();
    const auto sum = [&counts](std::uint64_t TransmitCounts::*count) {
        return std::accumulate(counts.begin(), counts.end(), std::uint64_t(0),
                               [count](std::uint64_t all, const TransmitCounts &one) { return all + one.*count; });
    };
    emit logLine(text3("列表发送：停止，已发送%1帧，被拒绝%2帧，错过%3帧",
                       "列表發送：停止，已發送%1幀，被拒絕%2幀，錯過%3幀",
                       "List send: stopped; frames sent: %1, refused: %2, missed: %3")
                     .arg(sum(&TransmitCounts::sent))
                     .arg(sum(&TransmitCounts::refused))
                     .arg(sum(&TransmitCounts::skipped)));
    showCounts();
}

void listSendDlg::on_pbnClose_clicked()
{
    close();
}

void listSendDlg::showRunning()
{
    const bool running = engine_.isRunning();
    const bool hadFocus = ui_->pbnStart->hasFocus() || ui_->pbnStop->hasFocus();
    ui_->pbnStop->setEnabled(running);
    ui_->pbnStart->setEnabled(!running);
    if (hadFocus)
        (running ? ui_->pbnStop : ui_->pbnStart)->setFocus();
}

void listSendDlg::showCounts()
{
    if (engine_.isRunning() && !engine_.hasWork())
        on_pbnStop_clicked(); // counted entries are through
    document_.model()->setCounts(engine_.counts());
    showRunning();
}

void listSendDlg::showList(const TransmitList &list)
{
    engine_.setEntries(list);
    bindKeys();
    showFields();
}

// Keys of entries work in the main window as well, as long as this one is open.
void listSendDlg::bindKeys()
{
    qDeleteAll(keys_);
    keys_.clear();
    if (!isVisible())
        return;
    QMap<QString, std::vector<unsigned>> serials;
    for (const TransmitEntryPointer &entry : document_.list())
        if (!entry->key.isEmpty())
            serials[entry->key].push_back(entry->serial);
    for (auto it = serials.cbegin(); it != serials.cend(); ++it) {
        auto *shortcut = new QShortcut(QKeySequence(it.key()), this);
        shortcut->setContext(Qt::ApplicationShortcut);
        shortcut->setAutoRepeat(false);
        connect(shortcut, &QShortcut::activated, this, [this, asked = it.value()] {
            for (const unsigned serial : asked)
                engine_.request(serial);
        });
        keys_.push_back(shortcut);
    }
}

// --- window -----------------------------------------------------------------------------------------------------

// Escape ends the edit of a cell; it does not close a window in which work is done.
void listSendDlg::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Escape)
        FormDialog::keyPressEvent(event);
}

void listSendDlg::keepPlace() const
{
    QSettings kept;
    kept.setValue(kGeometryKey, saveGeometry());
    kept.setValue(kSplitterKey, ui_->splitter->saveState());
}

// What cannot be seen does not send.
void listSendDlg::hideEvent(QHideEvent *event)
{
    if (!event->spontaneous()) {
        on_pbnStop_clicked();
        refresh_->stop();
        keepPlace();
        bindKeys();
    }
    FormDialog::hideEvent(event);
}

void listSendDlg::showEvent(QShowEvent *event)
{
    FormDialog::showEvent(event);
    refresh_->start();
    bindKeys();
}
