#include "analysis/supervision.h"

#include "analysis/signaldatabases.h"
#include "analysis/statisticstexts.h"
#include "device/language.h"
#include "statistics/databasebaseline.h"
#include "traces/tracereader.h"

#include <QAction>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QMenu>
#include <QSaveFile>

namespace
{

constexpr double kPercent = 100;
constexpr qint64 kSecondMs = 1000;
constexpr int kFramesAtOnce = 4096;

} // namespace

Supervision::Supervision(LiveStatistics &statistics, QWidget *window)
    : QObject(window), statistics_(statistics), window_(window)
{
}

Supervision::~Supervision()
{
    giveUp_ = true;
    if (reader_.joinable())
        reader_.join();
}

// --- what can be done ---------------------------------------------------------------------------------------------

void Supervision::fill(QMenu *menu)
{
    const auto add = [&](const char *name, const char *simplified, const char *traditional, const char *english) {
        QAction *action = menu->addAction(QString());
        action->setObjectName(QLatin1String(name));
        entries_.push_back({action, simplified, traditional, english});
        return action;
    };
    const QString baselines = QStringLiteral("Baseline (*.json)");
    const QString recordings = QStringLiteral("*.log *.asc *.trc *.blf *.csv (*.log *.asc *.trc *.blf *.csv);;* (*)");
    connect(add("actionLearn", "从当前统计学习基准(&L)", "從目前統計學習基準(&L)", "&Learn from what runs"),
            &QAction::triggered, this, &Supervision::learn);
    connect(add("actionLoadBaseline", "打开基准文件(&O)…", "開啟基準檔案(&O)…", "&Open a baseline…"),
            &QAction::triggered, this, [this, baselines] {
                const QString path = ask(false, text3("打开基准文件", "開啟基準檔案", "Open a baseline"), baselines);
                if (!path.isEmpty())
                    load(path);
            });
    connect(add("actionLearnRecording", "从记录文件学习(&R)…", "從記錄檔案學習(&R)…", "Learn from a &recording…"),
            &QAction::triggered, this, [this, recordings] {
                const QString path =
                    ask(false, text3("从记录文件学习", "從記錄檔案學習", "Learn from a recording"), recordings);
                if (!path.isEmpty())
                    readRecording(path);
            });
    connect(add("actionDatabaseBaseline", "使用信号数据库的周期(&D)", "使用訊號資料庫的週期(&D)",
                "Cycle times of the signal &databases"),
            &QAction::triggered, this, &Supervision::useDatabases);
    connect(add("actionSaveBaseline", "保存基准文件(&S)…", "儲存基準檔案(&S)…", "&Save the baseline…"),
            &QAction::triggered, this, [this, baselines] {
                const QString path = ask(true, text3("保存基准文件", "儲存基準檔案", "Save the baseline"), baselines);
                if (!path.isEmpty())
                    save(path);
            });
    connect(add("actionStopSupervision", "停止监视(&T)", "停止監視(&T)", "S&top the supervision"), &QAction::triggered,
            this, &Supervision::stop);
}

void Supervision::setTexts()
{
    for (const Entry &entry : entries_)
        entry.action->setText(text3(entry.simplified, entry.traditional, entry.english));
}

QString Supervision::ask(bool save, const QString &title, const QString &filter) const
{
    return save ? QFileDialog::getSaveFileName(window_, title, QStringLiteral("baseline.json"), filter)
                : QFileDialog::getOpenFileName(window_, title, QString(), filter);
}

void Supervision::setTolerance(int percent)
{
    tolerancePercent_ = percent;
    if (!baseline_)
        return;
    statistics_.supervise(baseline_, percent / kPercent);
    emit changed();
}

void Supervision::use(std::optional<Baseline> baseline, const QString &from)
{
    baseline_ = std::move(baseline);
    statistics_.supervise(baseline_, tolerancePercent_ / kPercent);
    untold_ = 0;
    emit log(text3("监视开始：%1条报文，基准来自%2", "監視開始：%1個訊息，基準來自%2",
                   "Supervision begins: %1 messages, baseline from %2")
                 .arg(QString::number(messages()), from));
    emit changed();
}

void Supervision::learn()
{
    Baseline learned = statistics_.learn();
    if (learned.messages.empty()) {
        emit log(text3("监视：还没有可以学习的报文", "監視：還沒有可以學習的訊息",
                       "Supervision: nothing to learn from yet"));
        return;
    }
    use(std::move(learned), text3("当前统计", "目前統計", "what runs"));
}

void Supervision::useDatabases()
{
    const std::shared_ptr<SignalDatabases> databases = SignalDatabases::shared();
    databases->start();
    StatisticsSnapshot shown;
    statistics_.snapshot(&shown);
    std::vector<unsigned> channels; // that carry anything
    for (const auto &[number, channel] : shown.channels)
        if (channel.hasTime())
            channels.push_back(number);
    Baseline baseline = databaseBaseline(databases->entries(), channels);
    if (baseline.messages.empty()) {
        emit log(text3("监视：没有报文可用——请先加载信号数据库（分析 → 信号），且通道上要有数据",
                       "監視：沒有訊息可用——請先載入訊號資料庫（分析 → 訊號），且通道上要有數據",
                       "Supervision: no messages - load a signal database first (Analysis → Signals); a channel must "
                       "have frames"));
        return;
    }
    use(std::move(baseline), text3("信号数据库", "訊號資料庫", "the signal databases"));
}

void Supervision::stop()
{
    if (!baseline_)
        return;
    baseline_.reset();
    statistics_.supervise(std::nullopt);
    emit log(text3("监视已停止", "監視已停止", "Supervision has ended"));
    emit changed();
}

// --- files --------------------------------------------------------------------------------------------------------

bool Supervision::load(const QString &path)
{
    QFile file(path);
    QString reason;
    std::optional<Baseline> baseline;
    if (file.open(QIODevice::ReadOnly))
        baseline = baselineFromJson(file.readAll(), &reason);
    else
        reason = file.errorString();
    if (baseline)
        use(std::move(baseline), QDir::toNativeSeparators(path));
    else
        emit log(text3("无法读取基准文件%1：%2", "無法讀取基準檔案%1：%2", "The baseline %1 cannot be read: %2")
                     .arg(QDir::toNativeSeparators(path), reason));
    return baseline_ && reason.isEmpty();
}

bool Supervision::save(const QString &path)
{
    QSaveFile file(path);
    const QByteArray json = toJson(baseline_ ? *baseline_ : statistics_.learn());
    const bool saved = file.open(QIODevice::WriteOnly) && file.write(json) == json.size() && file.commit();
    emit log(saved ? text3("基准已保存：%1", "基準已儲存：%1", "Baseline saved: %1").arg(QDir::toNativeSeparators(path))
                   : text3("无法保存%1：%2", "無法儲存%1：%2", "Cannot save %1: %2")
                         .arg(QDir::toNativeSeparators(path), file.errorString()));
    return saved;
}

void Supervision::readRecording(const QString &path)
{
    giveUp_ = true;
    if (reader_.joinable())
        reader_.join();
    giveUp_ = false;
    const int reading = ++reading_;
    reader_ = std::thread([this, path, reading] {
        read(path);
        QMetaObject::invokeMethod(this, [this, path, reading] {
            if (reading != reading_)
                return;
            reader_.join();
            if (!error_.isEmpty())
                emit log(text3("读取%1时出错：%2", "讀取%1時出錯：%2", "Reading %1: %2")
                             .arg(QDir::toNativeSeparators(path), error_));
            if (!learned_.messages.empty())
                use(std::move(learned_), QDir::toNativeSeparators(path));
        });
    });
}

void Supervision::read(const QString &path)
{
    learned_ = Baseline();
    error_.clear();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        error_ = file.errorString();
        return;
    }
    const std::unique_ptr<TraceReader> reader = openTrace(&file, path, &error_);
    if (!reader)
        return;
    IdentifierTable table;
    std::vector<RawFrame> frames(kFramesAtOnce);
    while (!giveUp_ && !reader->atEnd()) {
        const int count = reader->read(frames.data(), kFramesAtOnce);
        for (int i = 0; i < count; ++i)
            table.add(frames[static_cast<std::size_t>(i)]);
        if (reader->error())
            break;
    }
    if (giveUp_)
        return;
    if (const std::optional<TraceError> error = reader->error())
        error_ = text3("%1：%2", "%1：%2", "%1: %2").arg(error->place.toString(), error->reason.toString());
    learned_ = learnBaseline(table);
    if (learned_.messages.empty() && error_.isEmpty())
        error_ = text3("没有帧", "沒有幀", "no frames");
}

// --- what was found -----------------------------------------------------------------------------------------------

void Supervision::tell()
{
    std::uint64_t more = 0;
    const std::vector<Violation> found = statistics_.takeViolations(&more);
    untold_ += more;
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    if (now - second_ >= kSecondMs || now < second_) {
        if (untold_ > 0)
            emit log(text3("监视：另有%1条违例未逐条列出", "監視：另有%1條違例未逐條列出",
                           "Supervision: %1 further violations, not told one by one")
                         .arg(untold_));
        untold_ = 0;
        lines_ = 0;
        second_ = now;
    }
    for (const Violation &violation : found) {
        if (lines_ < kLinesPerSecond)
            emit log(violationLine(violation));
        else
            ++untold_;
        ++lines_;
    }
}
