// How the window of a recording is laid out, and its texts.
#include "analysis/recordingwindow.h"

#include "analysis/filterline.h"
#include "analysis/recordingexporter.h"
#include "analysis/recordingview.h"
#include "analysis/signaldatabases.h"
#include "device/language.h"
#include "widgets/namedwidget.h"

#include <QFileInfo>
#include <QMenu>
#include <QScrollBar>
#include <QShortcut>
#include <QTimer>

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace
{
constexpr int kLookMs = 80;
constexpr int kGoToCharacters = 20;

} // namespace

RecordingWindow::RecordingWindow(std::unique_ptr<RecordingIndex> index, QWidget *parent)
    : AnalysisWindow(QStringLiteral("recording"), parent),
      index_(std::move(index)),
      bookmarks_(index_->path()),
      databases_(SignalDatabases::shared())
{
    model_ = new RecordingModel(*index_, this);
    auto *bar = new QScrollBar(Qt::Vertical, this);
    view_ = named(new RecordingView(model_, bar, this), "recordingTable");
    exporter_ = new RecordingExporter(*index_, this);
    auto *rows = new QVBoxLayout(this);
    makeTools(rows);
    makeLines(rows);
    auto *table = new QHBoxLayout;
    table->setSpacing(0);
    table->addWidget(view_);
    table->addWidget(bar);
    rows->addLayout(table, 1);
    rows->addWidget(replay_);
    makeStatus(rows);
    // As they stand in the window; the replay's follow.
    const QList<QWidget *> order = {replayButton_, filterLine_, searchLine_, previous_, next_, view_};
    for (int i = 1; i < order.size(); ++i)
        setTabOrder(order.at(i - 1), order.at(i));
    setTabOrder(cancel_, follow_);
    makeKeys();
    findSignals();
    connect(exporter_, &RecordingExporter::told, this, &RecordingWindow::tell);
    connect(view_, &RecordingView::currentChangedTo, this, &RecordingWindow::showState);
    model_->setBookmarks(bookmarks_.rows());
    timer_ = new QTimer(this);
    connect(timer_, &QTimer::timeout, this, &RecordingWindow::look);
    timer_->start(kLookMs);
    view_->setFocus();
}

void RecordingWindow::makeTools(QBoxLayout *rows)
{
    auto *tools = new QHBoxLayout;
    timesLabel_ = new QLabel(this);
    times_ = named(new QComboBox(this), "recordingTimes");
    for (int i = 0; i <= static_cast<int>(RecordingTimes::SinceMarked); ++i)
        times_->addItem(QString());
    times_->setCurrentIndex(static_cast<int>(RecordingTimes::SinceStart));
    times_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    timesLabel_->setBuddy(times_);
    mark_ = named(new QPushButton(this), "recordingMark");
    goToLabel_ = new QLabel(this);
    goTo_ = named(new QLineEdit(this), "recordingGoTo");
    goTo_->setFixedWidth(fontMetrics().averageCharWidth() * kGoToCharacters);
    goToLabel_->setBuddy(goTo_);
    follow_ = named(new QCheckBox(this), "recordingFollow");
    bookmarkButton_ = named(new QToolButton(this), "recordingBookmarks");
    bookmarkMenu_ = new QMenu(this);
    exportButton_ = named(new QToolButton(this), "recordingExport");
    auto *exportMenu = new QMenu(this);
    exportShown_ = named(exportMenu->addAction(QString()), "actionExportShown");
    exportSelected_ = named(exportMenu->addAction(QString()), "actionExportSelected");
    copySelected_ = named(exportMenu->addAction(QString()), "actionCopySelected");
    copySelected_->setShortcut(QKeySequence::Copy);
    addAction(copySelected_); // its key works without the menu
    bookmarkButton_->setMenu(bookmarkMenu_);
    exportButton_->setMenu(exportMenu);
    for (QToolButton *button : {bookmarkButton_, exportButton_}) {
        button->setPopupMode(QToolButton::InstantPopup);
        button->setToolButtonStyle(Qt::ToolButtonTextOnly);
        button->setFocusPolicy(Qt::TabFocus);
    }
    for (QWidget *widget : std::initializer_list<QWidget *>{timesLabel_, times_, mark_, goToLabel_, goTo_})
        tools->addWidget(widget);
    tools->addStretch(1);
    tools->addWidget(bookmarkButton_);
    tools->addWidget(exportButton_);
    makeAnalyses(tools);
    rows->addLayout(tools);

    connect(times_, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &RecordingWindow::setTimes);
    connect(mark_, &QPushButton::clicked, this, &RecordingWindow::markRow);
    connect(goTo_, &QLineEdit::returnPressed, this, &RecordingWindow::goTo);
    connect(follow_, &QCheckBox::toggled, this, [this](bool on) {
        index_->setFollow(on);
        if (on)
            view_->scrollToEnd();
    });
    connect(bookmarkMenu_, &QMenu::aboutToShow, this, &RecordingWindow::fillBookmarks);
    connect(exportShown_, &QAction::triggered, this, [this] { exportRows(false); });
    connect(exportSelected_, &QAction::triggered, this, [this] { exportRows(true); });
    connect(copySelected_, &QAction::triggered, this, &RecordingWindow::copyRows);
}

void RecordingWindow::makeLines(QBoxLayout *rows)
{
    auto *lines = new QHBoxLayout;
    filterLabel_ = new QLabel(this);
    filterLine_ = named(new FilterLine(this), "recordingFilter");
    filterLabel_->setBuddy(filterLine_);
    searchLabel_ = new QLabel(this);
    searchLine_ = named(new FilterLine(this), "recordingSearch");
    searchLabel_->setBuddy(searchLine_);
    previous_ = named(new QPushButton(this), "recordingPrevious");
    next_ = named(new QPushButton(this), "recordingNext");
    lines->addWidget(filterLabel_);
    lines->addWidget(filterLine_, 3);
    lines->addWidget(searchLabel_);
    lines->addWidget(searchLine_, 2);
    lines->addWidget(previous_);
    lines->addWidget(next_);
    rows->addLayout(lines);

    connect(filterLine_, &QLineEdit::returnPressed, this, &RecordingWindow::applyFilter);
    connect(filterLine_, &QLineEdit::textChanged, this, [this](const QString &text) {
        if (text.isEmpty())
            applyFilter();
    });
    connect(searchLine_, &QLineEdit::returnPressed, this, [this] { search(false); });
    connect(filterLine_, &FilterLine::wrong, this, &RecordingWindow::tell);
    connect(searchLine_, &FilterLine::wrong, this, &RecordingWindow::tell);
    connect(previous_, &QPushButton::clicked, this, [this] { search(true); });
    connect(next_, &QPushButton::clicked, this, [this] { search(false); });
}

void RecordingWindow::makeStatus(QBoxLayout *rows)
{
    auto *line = new QHBoxLayout;
    status_ = named(new QLabel(this), "recordingStatus");
    message_ = named(new QLabel(this), "recordingMessage");
    progress_ = named(new QProgressBar(this), "recordingProgress");
    progress_->setTextVisible(false);
    cancel_ = named(new QPushButton(this), "recordingCancel");
    // Texts of any length must not widen the window.
    for (QLabel *label : {status_, message_})
        label->setMinimumWidth(1);
    line->addWidget(follow_);
    line->addWidget(status_, 1);
    line->addWidget(message_);
    line->addWidget(progress_);
    line->addWidget(cancel_);
    rows->addLayout(line);
    for (QWidget *widget : std::initializer_list<QWidget *>{progress_, cancel_}) {
        QSizePolicy policy = widget->sizePolicy();
        policy.setRetainSizeWhenHidden(true); // the table must not jump
        widget->setSizePolicy(policy);
        widget->hide();
    }
    connect(cancel_, &QPushButton::clicked, this, &RecordingWindow::cancel);
}

void RecordingWindow::makeKeys()
{
    const auto on = [this](const QKeySequence &key, auto &&action) {
        connect(new QShortcut(key, this), &QShortcut::activated, this, action);
    };
    on(QKeySequence(Qt::Key_F3), [this] { search(false); });
    on(QKeySequence(Qt::SHIFT + Qt::Key_F3), [this] { search(true); });
    on(QKeySequence(Qt::CTRL + Qt::Key_F), [this] { searchLine_->setFocus(); });
    on(QKeySequence(Qt::CTRL + Qt::Key_L), [this] { filterLine_->setFocus(); });
    on(QKeySequence(Qt::CTRL + Qt::Key_G), [this] { goTo_->setFocus(); });
    on(QKeySequence(Qt::CTRL + Qt::Key_B), [this] { toggleBookmark(); });
}

void RecordingWindow::retranslate()
{
    setWindowTitle(text3("记录 - %1", "記錄 - %1", "Recording - %1").arg(QFileInfo(index_->path()).fileName()));
    timesLabel_->setText(text3("时间(&T)：", "時間(&T)：", "&Time:"));
    const QStringList times = {text3("绝对时间", "絕對時間", "Absolute"),
                               text3("自记录开始", "自記錄開始", "Since start"),
                               text3("距上一行", "距上一列", "Since previous row"),
                               text3("距同一 ID 的上一行", "距同一 ID 的上一列", "Since previous row of the ID"),
                               text3("距标记行", "距標記列", "Since marked row")};
    for (int i = 0; i < times.size(); ++i)
        times_->setItemText(i, times.at(i));
    mark_->setText(text3("标记当前行(&M)", "標記目前列(&M)", "&Mark row"));
    goToLabel_->setText(text3("转到(&G)：", "移至(&G)：", "&Go to:"));
    goTo_->setPlaceholderText(text3("行号或 12.5 秒", "列號或 12.5 秒", "row or 12.5 s"));
    goTo_->setToolTip(text3("行号（如 1200），或记录开始后的秒数（如 12.5 或 12s）",
                            "列號（如 1200），或記錄開始後的秒數（如 12.5 或 12s）",
                            "A row (1200), or seconds since the recording's start (12.5 or 12s)"));
    follow_->setText(text3("跟随文件增长(&W)", "跟隨檔案成長(&W)", "Follo&w a growing file"));
    bookmarkButton_->setText(text3("书签(&B)", "書籤(&B)", "&Bookmarks"));
    exportButton_->setText(text3("导出(&X)", "匯出(&X)", "E&xport"));
    exportShown_->setText(text3("导出显示的所有行…", "匯出顯示的所有列…", "All shown rows…"));
    exportSelected_->setText(text3("导出选中的行…", "匯出選取的列…", "Selected rows…"));
    copySelected_->setText(text3("复制选中的行", "複製選取的列", "Copy selected rows"));
    filterLabel_->setText(text3("筛选(&F)：", "篩選(&F)：", "&Filter:"));
    filterLine_->setPlaceholderText(QStringLiteral("id 100..1FF and data 02 ?? 7F and not rx"));
    searchLabel_->setText(text3("查找(&S)：", "尋找(&S)：", "&Search:"));
    previous_->setText(text3("上一个(&V)", "上一個(&V)", "Pre&vious"));
    next_->setText(text3("下一个(&N)", "下一個(&N)", "&Next"));
    previous_->setToolTip(QStringLiteral("Shift+F3"));
    next_->setToolTip(QStringLiteral("F3"));
    cancel_->setText(text3("取消", "取消", "Cancel"));
    retranslateAnalyses();
    tell(QString()); // of another language
    for (FilterLine *line : {filterLine_, searchLine_})
        if (!line->toolTip().isEmpty())
            line->filter();
    view_->fitColumns();
    model_->refresh();
    emit model_->headerDataChanged(Qt::Horizontal, 0, FrameColumnCount - 1);
    look();
}
