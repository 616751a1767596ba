#include "widgets/messages.h"

#include <QMessageBox>

namespace
{

void showBox(QMessageBox::Icon icon, QWidget *parent, const QString &title, const QString &text)
{
    QMessageBox box(icon, title, text, QMessageBox::Ok, parent);
    box.setTextFormat(Qt::PlainText);
    box.exec();
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
