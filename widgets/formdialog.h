// What the program's dialogs have in common: Enter presses the button that has the focus, the texts follow the
// language, the size follows the screen, and the title bar has no question mark.
#pragma once

#include <QDialog>

class FormDialog : public QDialog
{
    Q_OBJECT

public:
    explicit FormDialog(QWidget *parent = nullptr);

    // A form that names no default button has none: Enter in one of its fields then presses nothing.
    void setVisible(bool visible) override;

protected:
    // Last in the constructor, once all widgets are there.
    void finishForm();
    // Shows the form's texts, and those that the dialog writes itself, in the current language.
    virtual void retranslate() = 0;

    void changeEvent(QEvent *event) override;

private:
    void setEnterPressesFocus(bool on);
};
