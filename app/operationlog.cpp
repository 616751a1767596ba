#include "app/operationlog.h"

#include "device/language.h"

#include <QDateTime>
#include <QPlainTextEdit>
#include <QVBoxLayout>

namespace
{
constexpr int kMaxLines = 10000; // the oldest go beyond that
constexpr int kLayoutMargin = 4;
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
    setTexts();
}

void OperationLog::setTexts()
{
    setTitle(text3("操作记录", "操作記錄", "Operation Log"));
}

QString OperationLog::text() const
{
    return lines_->toPlainText();
}

void OperationLog::addWorkerLine(const QString &message)
{
    lines_->appendPlainText(QTime::currentTime().toString(QStringLiteral("hh:mm:ss.zzz")) + message);
}

void OperationLog::addWindowLine(const QString &message)
{
    lines_->appendPlainText(QDateTime::currentDateTime().toString(QStringLiteral("MM-dd hh:mm:ss")) + tr("：") +
                            message);
}

void OperationLog::clear()
{
    lines_->clear();
}
