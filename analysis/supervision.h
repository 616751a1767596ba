// The baseline that traffic is held against: learned, loaded, read from a recording, saved; and the lines that the
// operation log gets of it.
#pragma once

#include "statistics/livestatistics.h"

#include <QObject>
#include <QString>

#include <atomic>
#include <thread>

class QAction;
class QMenu;
class QWidget;

class Supervision : public QObject
{
    Q_OBJECT

public:
    // Violations told in the operation log in a second; of the others only their number.
    static constexpr int kLinesPerSecond = 5;

    // statistics: supervised; outlives this. window: parent of the dialogs.
    Supervision(LiveStatistics &statistics, QWidget *window);
    // A recording that is being read is given up.
    ~Supervision() override;

    // Adds what can be done to a menu; setTexts() names it.
    void fill(QMenu *menu);
    void setTexts();
    void setTolerance(int percent);

    // Each tells in the log what has become of it.
    void learn();
    bool load(const QString &path);
    bool save(const QString &path);
    void useDatabases();                     // cycle times of those that the signal windows use
    void readRecording(const QString &path); // in a thread of its own; the log tells its end
    void stop();
    bool isOn() const { return baseline_.has_value(); }
    std::size_t messages() const { return baseline_ ? baseline_->messages.size() : 0; }

    // A few times a second: tells what was found since.
    void tell();

signals:
    void log(const QString &line);
    void changed(); // the baseline, or the tolerance that is allowed to it

private:
    struct Entry {
        QAction *action;
        const char *simplified;
        const char *traditional;
        const char *english;
    };

    QString ask(bool save, const QString &title, const QString &filter) const;
    void use(std::optional<Baseline> baseline, const QString &from);
    void read(const QString &path); // the thread

    LiveStatistics &statistics_;
    QWidget *window_;
    std::vector<Entry> entries_;
    std::optional<Baseline> baseline_;
    int tolerancePercent_ = static_cast<int>(Supervisor::kDefaultTolerance * 100);
    qint64 second_ = 0; // when lines were last counted anew, milliseconds
    int lines_ = 0;
    std::uint64_t untold_ = 0;
    std::thread reader_;
    int reading_ = 0; // which one it is; those before were given up
    std::atomic<bool> giveUp_{false};
    // Of the reading thread, until it is joined.
    Baseline learned_;
    QString error_;
};
