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
    bool hasDefault = false;
    for (QPushButton *button : findChildren<QPushButton *>()) {
        button->setAutoDefault(true); // Enter presses it while it has the focus
        hasDefault = hasDefault || button->isDefault();
    }
    if (!hasDefault) { // one that is never seen: the toolkit would choose among the others
        auto *nobody = new QPushButton(this);
        nobody->setFocusPolicy(Qt::NoFocus);
        nobody->setDefault(true);
        nobody->hide();
    }
    new DialogScaler(this);
}

void FormDialog::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QDialog::changeEvent(event);
}
