// The controls with which rows of a recording are sent on the open channels: start, pause, step, stop, speed, channels
// and the position.
#pragma once

#include "frames/recordingreplay.h"

#include <QWidget>

#include <functional>
#include <memory>

class QBoxLayout;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSlider;

class ReplayBar : public QWidget
{
    Q_OBJECT

public:
    enum class Choice { All, Shown, Selected };
    struct Rows {
        FrameFilter filter;
        std::uint64_t first = 0;
        std::uint64_t end = 0;
    };
    // rows: what a choice means at the moment.
    ReplayBar(std::shared_ptr<const RecordingIndex> index, std::function<Rows(Choice)> rows, QWidget *parent);

    // Shows how far it is; tells the end in the log.
    void look();
    // Stops and says nothing.
    void giveUp() { run_.reset(); }
    void retranslate();

signals:
    void log(const QString &line);

private:
    void makeSettings(QBoxLayout *line);
    void makeButtons(QBoxLayout *line);
    bool start(bool paused);
    void pauseOrGoOn();
    void step();
    void stop();
    void goTo(int value);
    void showState(const RecordingReplay::State &state);
    void enableButtons();
    void tellEnd(const RecordingReplay::State &state);

    const std::shared_ptr<const RecordingIndex> index_;
    const std::function<Rows(Choice)> rows_;
    std::unique_ptr<RecordingReplay> run_;
    std::uint64_t first_ = 0; // of the run, rows
    std::uint64_t end_ = 0;
    bool paused_ = false;

    QLabel *choiceLabel_;
    QComboBox *choice_;
    QLabel *speedLabel_;
    QDoubleSpinBox *speed_;
    QLabel *channelsLabel_;
    QLineEdit *channels_;
    QPushButton *start_;
    QPushButton *pause_;
    QPushButton *step_;
    QPushButton *stop_;
    QSlider *position_;
    QLabel *state_;
};
