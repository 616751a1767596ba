// Answers the modal dialogs that a test brings up, while the code under test waits in their event loops.
#pragma once

#include <QDialog>
#include <QList>
#include <QObject>
#include <QStringList>

#include <functional>

// While one of these lives, every message box is written down and answered with its default or only button, and every
// other modal dialog is handed once to the next step given to onDialog(), which is to make it close now or later. A
// dialog that no step is left for is written down as unexpected and rejected, so that a test fails instead of hanging.
class ModalAnswer : public QObject
{
    Q_OBJECT

public:
    using Step = std::function<void(QDialog *)>;

    ModalAnswer();

    // Steps are taken in the order given; a step may itself bring up further dialogs.
    void onDialog(Step step) { steps_.append(std::move(step)); }
    // The same for a dialog that has to be of this class; one of another class is rejected as unexpected.
    template <typename Dialog> void on(std::function<void(Dialog *)> step)
    {
        onDialog([this, step](QDialog *dialog) {
            if (auto *wanted = qobject_cast<Dialog *>(dialog))
                step(wanted);
            else
                refuse(dialog);
        });
    }
    // For dialogs that may not have come up.
    void dropSteps() { steps_.clear(); }
    int stepsLeft() const { return steps_.size(); }

    // Message boxes so far as "title|text", oldest first; takeMessages also forgets them.
    QStringList messages() const { return messages_; }
    QStringList takeMessages();
    // The icons (QMessageBox::Icon) of all message boxes so far.
    QList<int> icons() const { return icons_; }
    // Class names of the dialogs that nobody expected.
    QStringList unexpected() const { return unexpected_; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override; // a dialog shown again counts as a new one

private:
    void look();
    void handle(QDialog *dialog);
    void refuse(QDialog *dialog);

    QList<Step> steps_;
    QStringList messages_;
    QList<int> icons_;
    QStringList unexpected_;
};

// Clicks the button with this object name; ends the test program when there is none or it is disabled.
void pressButton(QWidget *window, const char *name);
