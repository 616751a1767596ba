#include "widgets/formdialog.h"

#include "widgets/dialogscaler.h"

#include <QEvent>
#include <QPushButton>

FormDialog::FormDialog(QWidget *parent) : QDialog(parent)
{
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
}

void FormDialog::finishForm()
{
    setEnterPressesFocus(true);
    new DialogScaler(this);
}

void FormDialog::setEnterPressesFocus(bool on)
{
    for (QPushButton *button : findChildren<QPushButton *>())
        if (button->window() == this)
            button->setAutoDefault(on);
}

void FormDialog::setVisible(bool visible)
{
    // While it shows itself the toolkit would make the first such button the default one of a form that names none.
    setEnterPressesFocus(false);
    QDialog::setVisible(visible);
    setEnterPressesFocus(true);
}

void FormDialog::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QDialog::changeEvent(event);
}
