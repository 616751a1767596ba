#include "app/operationlog.h"

#include "device/language.h"

#include <QDateTime>
#include <QLocale>
#include <QPlainTextEdit>
#include <QVBoxLayout>

namespace
{
constexpr int kMaxLines = 10000; // the oldest go beyond that
constexpr int kLayoutMargin = 4;
constexpr int kFewestCharacters = 8; // of a line, in the narrowest window
} // namespace

OperationLog::OperationLog(QWidget *parent) : QGroupBox(parent), lines_(new QPlainTextEdit(this))
{
    setObjectName(QStringLiteral("operationLog"));
    lines_->setObjectName(QStringLiteral("logEdit"));
    lines_->setReadOnly(true);
    lines_->setMaximumBlockCount(kMaxLines);
    lines_->setUndoRedoEnabled(false);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(kLayoutMargin, kLayoutMargin, kLayoutMargin, kLayoutMargin);
    layout->addWidget(lines_);
    lines_->setMinimumWidth(1);
    setTexts();
}

void OperationLog::setTexts()
{
    showTitle();
}

QSize OperationLog::minimumSizeHint() const
{
    return {fontMetrics().averageCharWidth() * kFewestCharacters, layout()->minimumSize().height()};
}

void OperationLog::resizeEvent(QResizeEvent *event)
{
    QGroupBox::resizeEvent(event);
    showTitle();
}

void OperationLog::showTitle()
{
    const QString title = text3("操作记录", "操作記錄", "Operation Log");
    setTitle(fontMetrics().elidedText(title, Qt::ElideRight, width()));
}

QString OperationLog::text() const
{
    return lines_->toPlainText();
}

void OperationLog::addWorkerLine(const QString &message)
{
    lines_->appendPlainText(QLocale::c().toString(QTime::currentTime(), QStringLiteral("hh:mm:ss.zzz")) + message);
}

void OperationLog::addWindowLine(const QString &message)
{
    lines_->appendPlainText(QLocale::c().toString(QDateTime::currentDateTime(), QStringLiteral("MM-dd hh:mm:ss")) +
                            tr("：") + message);
}

void OperationLog::clear()
{
    lines_->clear();
}
