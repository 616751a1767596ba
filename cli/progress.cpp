#include "cli/progress.h"

#include "cli/messages.h"

#include <algorithm>
#include <cmath>

namespace
{

constexpr std::int64_t kFirstShownMs = 500; // short work gets no bar
constexpr std::int64_t kShownEveryMs = 200;
constexpr int kBarWidth = 30;

QString durationText(double seconds)
{
    const auto whole = static_cast<qint64>(std::lround(std::min(seconds, 1e9)));
    return whole < 60 ? QStringLiteral("%1 s").arg(whole)
                      : QStringLiteral("%1:%2 min").arg(whole / 60).arg(whole % 60, 2, 10, QLatin1Char('0'));
}

} // namespace

Progress::Progress(std::uint64_t total) : total_(total), nextShown_(kFirstShownMs)
{
    timer_.start();
}

Progress::~Progress()
{
    showProgressLine({});
}

void Progress::add(std::uint64_t done, std::uint64_t frames)
{
    done_ += done;
    frames_ += frames;
    if (!progressIsShown() || timer_.elapsed() < nextShown_)
        return;
    if (showing_.try_lock()) {
        const std::lock_guard<std::mutex> guard(showing_, std::adopt_lock);
        nextShown_ = timer_.elapsed() + kShownEveryMs;
        show();
    }
}

void Progress::show()
{
    const double seconds = static_cast<double>(timer_.elapsed()) / 1e3;
    const QString rate = QStringLiteral("%1 frames/s").arg(static_cast<double>(frames_) / seconds, 0, 'f', 0);
    if (total_ == 0) {
        showProgressLine(QStringLiteral("%1 frames, %2").arg(frames_.load()).arg(rate));
        return;
    }
    const double share = std::min(1.0, static_cast<double>(done_) / static_cast<double>(total_));
    const int filled = static_cast<int>(share * kBarWidth);
    QString line = QLatin1Char('[') + QString(filled, QLatin1Char('#')) +
                   QString(kBarWidth - filled, QLatin1Char(' ')) +
                   QStringLiteral("] %1 %, %2").arg(static_cast<int>(share * 100)).arg(rate);
    if (share > 0)
        line += QStringLiteral(", %1 left").arg(durationText(seconds / share - seconds));
    showProgressLine(line);
}
