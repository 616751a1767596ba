#include "modalhelper.h"

#include <QApplication>
#include <QEvent>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <utility>

namespace
{
constexpr int kLookEveryMs = 5;
constexpr char kHandled[] = "modalAnswerHandled";
} // namespace

ModalAnswer::ModalAnswer()
{
    QTimer::singleShot(kLookEveryMs, this, &ModalAnswer::look);
}

QStringList ModalAnswer::takeMessages()
{
    return std::exchange(messages_, {});
}

void ModalAnswer::look()
{
    // Armed anew before anything else: a running timer does not fire again inside its own slot, a new one does.
    QTimer::singleShot(kLookEveryMs, this, &ModalAnswer::look);
    auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
    if (!dialog || !dialog->isVisible() || dialog->property(kHandled).toBool())
        return;
    dialog->setProperty(kHandled, true);
    dialog->installEventFilter(this);
    handle(dialog);
}

bool ModalAnswer::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Hide)
        watched->setProperty(kHandled, false);
    return QObject::eventFilter(watched, event);
}

void ModalAnswer::handle(QDialog *dialog)
{
    if (auto *box = qobject_cast<QMessageBox *>(dialog)) {
        messages_.append(box->windowTitle() + QLatin1Char('|') + box->text());
        icons_.append(box->icon());
        QAbstractButton *button = box->defaultButton();
        if (!button && !box->buttons().isEmpty())
            button = box->buttons().constFirst();
        if (button)
            button->click();
        else
            box->reject();
    } else if (!steps_.isEmpty()) {
        steps_.takeFirst()(dialog);
    } else {
        refuse(dialog);
    }
}

void ModalAnswer::refuse(QDialog *dialog)
{
    unexpected_.append(QString::fromLatin1(dialog->metaObject()->className()));
    dialog->reject();
}

void pressButton(QWidget *window, const char *name)
{
    auto *button = window->findChild<QAbstractButton *>(QLatin1String(name));
    if (!button || !button->isEnabled())
        qFatal("no enabled button %s", name);
    button->click();
}
