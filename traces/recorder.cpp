#include "traces/recorder.h"

#include "device/driver/timeunits.h"
#include "traces/recordernames.h"

#include <QElapsedTimer>

#include <algorithm>
#include <utility>

namespace
{
constexpr std::int64_t kFlushMilliseconds = 1000;
// So many frames at most go between two looks at a file's size.
constexpr int kSlice = 256;

QString fileGone()
{
    return text3("文件已不存在", "檔案已不存在", "the file is gone");
}

Recorder::Clock steadyClock()
{
    QElapsedTimer timer;
    timer.start();
    return [timer] { return timer.elapsed(); };
}

} // namespace

Recorder::Recorder(RecorderSettings settings, Listener listener, Clock clock)
    : settings_(std::move(settings)),
      listener_(std::move(listener)),
      clock_(clock ? std::move(clock) : steadyClock()),
      before_(settings_.preTriggerFrames, settings_.preTriggerMilliseconds)
{
}

Recorder::~Recorder()
{
    end();
}

void Recorder::begin()
{
    if (state_ != State::Idle)
        return;
    if (settings_.hasManyFiles()) {
        const std::map<int, QString> before = numberedFiles(settings_.path);
        number_ = before.empty() ? 0 : before.rbegin()->first;
        for (const auto &file : before)
            row_.append(file.second);
    }
    if (settings_.start.empty())
        startRecording();
    else
        state_ = State::Waiting;
}

void Recorder::write(const RawFrame *frames, int count)
{
    int first = 0; // of those that belong to the recording and are not written yet
    for (int index = 0; index < count && state_ != State::Done; ++index) {
        if (state_ == State::Waiting) {
            first = index + 1;
            if (!anyMatches(settings_.start, frames[index])) {
                before_.add(frames[index]);
                continue;
            }
            before_.dropOld(frames[index].time);
            startRecording();
            first = index;
        } else if (state_ == State::Recording && anyMatches(settings_.stop, frames[index])) {
            record(frames + first, index + 1 - first);
            first = index + 1;
            if (state_ == State::Recording)
                stopRecording();
        }
    }
    if (state_ == State::Recording)
        record(frames + first, count - first);
    tick();
}

void Recorder::markLost(std::uint64_t count)
{
    if (count == 0)
        return;
    if (state_ == State::Waiting && anyMatchesLost(settings_.start))
        startRecording();
    else if (state_ == State::Recording && anyMatchesLost(settings_.stop))
        stopRecording();
}

void Recorder::tick()
{
    if (state_ == State::Recording)
        flushWhenDue();
}

void Recorder::end()
{
    if (state_ == State::Recording)
        endFile();
    state_ = State::Done;
}

void Recorder::startRecording()
{
    state_ = State::Recording;
    trouble_ = false;
    troubleLost_ = 0;
    openFile();
    for (int index = 0; index < before_.size() && state_ == State::Recording; ++index)
        record(&before_.at(index), 1);
    before_.clear();
}

void Recorder::stopRecording()
{
    endFile();
    state_ = settings_.start.empty() ? State::Done : State::Waiting;
}

void Recorder::record(const RawFrame *frames, int count)
{
    if (settings_.mostFrames == 0)
        return recordPart(frames, count);
    // What cannot be written does not count: the rest has its chance.
    for (int index = 0; index < count && recordedFrames() < settings_.mostFrames; index += kSlice) {
        const auto left = settings_.mostFrames - recordedFrames();
        recordPart(frames + index, static_cast<int>(std::min<std::uint64_t>(left, std::min(count - index, kSlice))));
    }
    if (recordedFrames() >= settings_.mostFrames)
        end();
}

// Parts the frames at the times at which a new file is due.
void Recorder::recordPart(const RawFrame *frames, int count)
{
    const std::int64_t span = settings_.rotateSeconds * kNanosecondsPerSecond;
    int first = 0;
    for (int index = 0; index < count; ++index) {
        if (span > 0 && fileTime_ && frames[index].time - *fileTime_ >= span) {
            recordSlice(frames + first, index - first);
            first = index;
            if (!trouble_) {
                endFile();
                openFile();
            }
        }
        if (!fileTime_)
            fileTime_ = frames[index].time;
        if (index + 1 - first == kSlice) {
            recordSlice(frames + first, kSlice);
            first = index + 1;
        }
    }
    recordSlice(frames + first, count - first);
}

void Recorder::recordSlice(const RawFrame *frames, int count)
{
    if (count == 0)
        return;
    if (trouble_)
        tryAgain();
    if (!trouble_ && !file_.write(frames, count))
        beginTrouble(file_.path(), file_.errorText(), 0);
    if (trouble_) {
        lose(static_cast<std::uint64_t>(count));
        return;
    }
    if (settings_.rotateBytes == 0 || file_.bytes() < settings_.rotateBytes)
        return;
    if (!file_.flush()) {
        beginTrouble(file_.path(), file_.errorText(), 0);
    } else if (file_.bytes() >= settings_.rotateBytes) {
        endFile();
        openFile();
    }
}

bool Recorder::openFile()
{
    fileTime_.reset();
    lastFlush_ = clock_();
    const QString path = settings_.hasManyFiles() ? numberedName(settings_.path, number_ + 1) : settings_.path;
    if (!file_.open(path, !settings_.hasManyFiles(), settings_.format, settings_.options)) {
        // Somebody else has taken the number: the next one, the next time.
        if (settings_.hasManyFiles() && QFile::exists(path))
            ++number_;
        beginTrouble(path, file_.errorText(), 0);
        return false;
    }
    ++number_;
    listener_({RecorderEvent::Kind::FileBegun, path, 0, 0, {}});
    row_.append(path);
    keepNewest();
    return true;
}

void Recorder::endFile()
{
    if (!file_.isOpen())
        return;
    const QString path = file_.path();
    const std::uint64_t taken = file_.frames();
    if (file_.vanished()) {
        file_.abandon();
        lose(taken);
        beginTrouble(path, fileGone(), taken);
        return;
    }
    const bool complete = file_.finish();
    const std::uint64_t missing = taken - file_.frames();
    lose(missing);
    ended_ += file_.frames();
    if (!complete)
        beginTrouble(path, file_.errorText(), missing);
    listener_({RecorderEvent::Kind::FileEnded, path, file_.frames(), missing, {}, file_.losses()});
}

void Recorder::lose(std::uint64_t count)
{
    lost_ += count;
    troubleLost_ += count;
}

void Recorder::beginTrouble(const QString &path, const QString &reason, std::uint64_t lost)
{
    lastFlush_ = clock_();
    if (std::exchange(trouble_, true))
        return;
    troubleLost_ = lost;
    listener_({RecorderEvent::Kind::Trouble, path, 0, lost, reason});
}

// Once a second; going on in the same file where it is still there.
void Recorder::tryAgain()
{
    if (clock_() - lastFlush_ < kFlushMilliseconds)
        return;
    lastFlush_ = clock_();
    if (file_.isOpen() && file_.vanished()) {
        lose(file_.frames());
        file_.abandon();
    }
    if (file_.isOpen() ? !file_.flush() : !openFile())
        return;
    trouble_ = false;
    listener_({RecorderEvent::Kind::Recovered, file_.path(), 0, std::exchange(troubleLost_, 0), {}});
}

void Recorder::flushWhenDue()
{
    if (trouble_) {
        tryAgain();
        return;
    }
    if (clock_() - lastFlush_ < kFlushMilliseconds)
        return;
    lastFlush_ = clock_();
    if (file_.vanished()) {
        const std::uint64_t gone = file_.frames();
        const QString path = file_.path();
        file_.abandon();
        lost_ += gone;
        beginTrouble(path, fileGone(), gone);
    } else if (!file_.flush()) {
        beginTrouble(file_.path(), file_.errorText(), 0);
    }
}

void Recorder::keepNewest()
{
    while (settings_.keepFiles > 0 && row_.size() > settings_.keepFiles)
        QFile::remove(row_.takeFirst());
}
