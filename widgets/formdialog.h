// What the program's dialogs have in common: Enter presses the button that has the focus, the texts follow the
// language, the size follows the screen, and the title bar has no question mark.
#pragma once

#include <QDialog>

class FormDialog : public QDialog
{
    Q_OBJECT

public:
    explicit FormDialog(QWidget *parent = nullptr);

protected:
    // Last in the constructor, once all widgets are there. In a form that names no default button Enter presses nothing
    // unless a button has the focus.
    void finishForm();
    // Shows the form's texts, and those that the dialog writes itself, in the current language.
    virtual void retranslate() = 0;

    void changeEvent(QEvent *event) override;
};
