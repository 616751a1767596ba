#include "widgets/messages.h"

#include <QMessageBox>

namespace
{

int showBox(QMessageBox::Icon icon, QWidget *parent, const QString &title, const QString &text,
            QMessageBox::StandardButtons buttons = QMessageBox::Ok)
{
    QMessageBox box(icon, title, text, buttons, parent);
    box.setTextFormat(Qt::PlainText);
    if (buttons.testFlag(QMessageBox::No))
        box.setDefaultButton(QMessageBox::No);
    return box.exec();
}

} // namespace

void showWarning(QWidget *parent, const QString &title, const QString &text)
{
    showBox(QMessageBox::Warning, parent, title, text);
}

void showCritical(QWidget *parent, const QString &title, const QString &text)
{
    showBox(QMessageBox::Critical, parent, title, text);
}

void showInformation(QWidget *parent, const QString &title, const QString &text)
{
    showBox(QMessageBox::Information, parent, title, text);
}

bool isConfirmed(QWidget *parent, const QString &title, const QString &question)
{
    return showBox(QMessageBox::Question, parent, title, question, QMessageBox::Yes | QMessageBox::No) ==
           QMessageBox::Yes;
}
