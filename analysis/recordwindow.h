// "Record": writes what passes both channels to files in any format, all the time or between triggers. A recording goes
// on when the window is closed; it ends with its button, after its last trigger, or with the program.
#pragma once

#include "analysis/analysiswindow.h"

#include <memory>
#include <optional>

class LiveRecording;
class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;
class QTimer;
class TriggerEdit;
struct RecorderEvent;
struct RecorderSettings;

class RecordWindow : public AnalysisWindow
{
    Q_OBJECT

public:
    explicit RecordWindow(QWidget *parent);
    ~RecordWindow() override; // completes the file

    bool isRunning() const { return recording_ != nullptr; }

signals:
    void log(const QString &line);

protected:
    void retranslate() override;
    QSize designSize() const override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void addRow(QLabel **label, QWidget *field);
    QSpinBox *addNumber(QLabel **label, const char *name, int largest);
    void arrange();
    void connectFields();
    void store() const;
    void restore();

    void begin();
    void end();
    void look(); // what the recording has to tell; the timer's work
    std::optional<RecorderSettings> settings();
    bool mayReplace(const RecorderSettings &settings); // what an earlier recording may have left
    void tell(const RecorderEvent &event);
    void showState();
    void showFields();
    void refuse(QWidget *field, const QString &reason);
    void browse();
    void followFormat(); // the name's ending
    void followName();   // the format, when the ending is that of another one

    std::unique_ptr<LiveRecording> recording_;
    QString agreed_; // a file that the save dialog has asked about, for the next recording
    QFormLayout *form_;
    QWidget *fields_;
    QLabel *pathLabel_, *formatLabel_, *sizeLabel_, *timeLabel_, *keepLabel_, *filterLabel_, *startLabel_, *stopLabel_,
        *framesLabel_, *secondsLabel_;
    QLineEdit *path_;
    QPushButton *browse_;
    QComboBox *format_;
    QSpinBox *megabytes_;
    QSpinBox *minutes_;
    QSpinBox *keep_;
    QLineEdit *filter_;
    TriggerEdit *start_;
    TriggerEdit *stop_;
    QSpinBox *beforeFrames_;
    QSpinBox *beforeSeconds_;
    QLabel *hint_;
    QLabel *state_;
    QPushButton *begin_;
    QPushButton *end_;
    QTimer *timer_;
};
