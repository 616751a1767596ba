#include "analysis/channelpanel.h"

#include "analysis/loadcurve.h"
#include "analysis/plaincell.h"
#include "analysis/statisticstexts.h"
#include "device/driver/timeunits.h"
#include "device/language.h"
#include "widgets/accessibletexts.h"

#include <QHeaderView>
#include <QLabel>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace
{
constexpr int kDigits = 7;                     // of a number, its margins included
constexpr int kNameMargins = 4;                // of a row's name, in margins of the style
constexpr std::uint16_t kLongestCounter = 888; // as wide as error counters get

enum class Span { LastSecond, Whole, WholeBySecond };

// Of one kind, or of all when the row is past them.
KindCount sum(const ChannelStatistics &statistics, Direction direction, int row, Span span)
{
    KindCount all;
    for (std::size_t kind = 0; kind < kFrameKinds; ++kind) {
        if (row < static_cast<int>(kFrameKinds) && row != static_cast<int>(kind))
            continue;
        const auto of = static_cast<FrameKind>(kind);
        const KindCount one =
            span == Span::LastSecond ? statistics.lastSecond(direction, of) : statistics.counted(direction, of);
        all.frames += one.frames;
        all.bytes += one.bytes;
    }
    const double seconds = static_cast<double>(statistics.lastTime() - statistics.firstTime()) / kNanosecondsPerSecond;
    if (span != Span::WholeBySecond || seconds <= 0)
        return all;
    const auto bySecond = [seconds](std::uint64_t count) {
        return static_cast<std::uint64_t>(std::llround(static_cast<double>(count) / seconds));
    };
    return {bySecond(all.frames), bySecond(all.bytes)};
}

// A label whose text may be wider than its room without widening the window.
QLabel *makeLabel(const char *name, QWidget *parent)
{
    auto *label = new QLabel(parent);
    label->setObjectName(QLatin1String(name));
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

QString loadText(std::optional<double> now, std::optional<double> mean, std::optional<double> peak)
{
    return text3("总线负载：%1  平均%2  峰值%3", "匯流排負載：%1  平均%2  峰值%3", "Bus load: %1  mean %2  peak %3")
        .arg(percentText(now), percentText(mean), percentText(peak));
}

QString wholeLoadText(std::optional<double> mean, std::optional<double> peak)
{
    return text3("总线负载：平均%1  峰值%2", "匯流排負載：平均%1  峰值%2", "Bus load: mean %1  peak %2")
        .arg(percentText(mean), percentText(peak));
}

QString controllerText(const ChannelState &state)
{
    return text3("控制器：%1", "控制器：%1", "Controller: %1").arg(stateText(state));
}

} // namespace

void KindModel::show(const ChannelStatistics &statistics, bool ofWhole)
{
    const Span rates = ofWhole ? Span::WholeBySecond : Span::LastSecond;
    auto numbers = numbers_;
    for (int row = 0; row < kRows; ++row) {
        auto &line = numbers[static_cast<std::size_t>(row)];
        const KindCount received = sum(statistics, Direction::Received, row, rates);
        const KindCount sent = sum(statistics, Direction::Sent, row, rates);
        line = {received.frames,
                received.bytes,
                sent.frames,
                sent.bytes,
                sum(statistics, Direction::Received, row, Span::Whole).frames,
                sum(statistics, Direction::Sent, row, Span::Whole).frames};
    }
    if (numbers == numbers_)
        return;
    numbers_ = numbers;
    emit dataChanged(index(0, 0), index(kRows - 1, ColumnCount - 1));
}

void KindModel::setTexts()
{
    emit layoutAboutToBeChanged(); // the titles may need other room
    emit headerDataChanged(Qt::Horizontal, 0, ColumnCount - 1);
    emit headerDataChanged(Qt::Vertical, 0, kRows - 1);
    emit layoutChanged();
}

QVariant KindModel::data(const QModelIndex &index, int role) const
{
    if (role == Qt::DisplayRole)
        return QString::number(
            numbers_[static_cast<std::size_t>(index.row())][static_cast<std::size_t>(index.column())]);
    if (role == Qt::TextAlignmentRole)
        return int(Qt::AlignRight | Qt::AlignVCenter);
    return {};
}

QVariant KindModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role == Qt::TextAlignmentRole)
        return int(Qt::AlignVCenter | (orientation == Qt::Horizontal ? Qt::AlignRight : Qt::AlignLeft));
    if (role != Qt::DisplayRole)
        return {};
    if (orientation == Qt::Vertical)
        return section < static_cast<int>(kFrameKinds) ? kindText(static_cast<FrameKind>(section))
                                                       : text3("合计", "合計", "All");
    switch (section) {
    case RxRate:
        return text3("接收帧/s", "接收幀/s", "Rx/s");
    case RxBytes:
        return text3("接收B/s", "接收B/s", "Rx B/s");
    case TxRate:
        return text3("发送帧/s", "發送幀/s", "Tx/s");
    case TxBytes:
        return text3("发送B/s", "發送B/s", "Tx B/s");
    case RxTotal:
        return text3("接收总数", "接收總數", "Rx total");
    case TxTotal:
        return text3("发送总数", "發送總數", "Tx total");
    default:
        return {};
    }
}

ChannelPanel::ChannelPanel(unsigned channel, QWidget *parent)
    : QGroupBox(parent),
      channel_(channel),
      kinds_(new KindModel(this)),
      load_(makeLabel("loadLabel", this)),
      state_(makeLabel("stateLabel", this)),
      table_(new LightGridTable<QTableView>(this)),
      curve_(new LoadCurve(this))
{
    setObjectName(QStringLiteral("channelPanel%1").arg(channel + 1));
    table_->setObjectName(QStringLiteral("kindTable"));
    table_->setModel(kinds_);
    makePlain(*table_);
    table_->setSelectionMode(QAbstractItemView::NoSelection);
    table_->setFocusPolicy(Qt::NoFocus);
    table_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    table_->horizontalHeader()->setMinimumSectionSize(1);
    table_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    const int rows = table_->verticalHeader()->defaultSectionSize() * KindModel::kRows;
    table_->setFixedHeight(table_->horizontalHeader()->sizeHint().height() + rows + 2 * table_->frameWidth());
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(load_);
    layout->addWidget(state_);
    layout->addWidget(table_);
    layout->addWidget(curve_, 1);
}

void ChannelPanel::show(const ChannelStatistics *statistics, const BusReport *report)
{
    static const ChannelStatistics none;
    const ChannelStatistics &shown = statistics ? *statistics : none;
    const QString title =
        text3("通道%1：%2 / %3", "通道%1：%2 / %3", "Channel %1: %2 / %3")
            .arg(QString::number(channel_ + 1), rateText(shown.rates().arbitration), rateText(shown.rates().data));
    if (title != this->title())
        setTitle(title);
    const QString load = loadText(shown.loadNow(), shown.loadMean(), shown.loadPeak());
    load_->setText(report ? load : wholeLoadText(shown.loadMean(), shown.loadPeak()));
    state_->setText(controllerText(report ? report->state : ChannelState()));
    kinds_->show(shown, report == nullptr);
    curve_->setPoints(shown.loadNow() ? shown.loadCurve() : std::vector<float>());
}

void ChannelPanel::setTexts()
{
    kinds_->setTexts();
    QHeaderView *names = table_->verticalHeader();
    int room = 0;
    for (int row = 0; row < KindModel::kRows; ++row)
        room = std::max(room, names->fontMetrics().horizontalAdvance(
                                  kinds_->headerData(row, Qt::Vertical, Qt::DisplayRole).toString()));
    names->setFixedWidth(room + kNameMargins * names->style()->pixelMetric(QStyle::PM_HeaderMargin));
    // As wide as every column's title and its largest numbers need.
    const QHeaderView &titles = *table_->horizontalHeader();
    int widest = table_->fontMetrics().averageCharWidth() * kDigits;
    for (int column = 0; column < KindModel::ColumnCount; ++column)
        widest = std::max(widest, titles.sectionSizeHint(column));
    table_->setMinimumWidth(widest * KindModel::ColumnCount + names->width() + 2 * table_->frameWidth());
    load_->setMinimumWidth(load_->fontMetrics().horizontalAdvance(loadText(1, 1, 1)));
    state_->setMinimumWidth(state_->fontMetrics().horizontalAdvance(
        controllerText({ControllerState::BusOff, true, kLongestCounter, kLongestCounter})));
    tellName(table_, text3("按帧类型统计", "按幀類型統計", "Frames by kind"));
    tellName(curve_, text3("总线负载曲线", "匯流排負載曲線", "Bus load curve"));
}
