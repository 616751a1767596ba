// The operation log: a titled pane of lines, the workers' and the window's own.
#pragma once

#include <QGroupBox>

class QPlainTextEdit;

class OperationLog : public QGroupBox
{
    Q_OBJECT

public:
    explicit OperationLog(QWidget *parent = nullptr);

    void setTexts(); // the title in the current language; lines keep the language they were made in
    QString text() const;
    QSize sizeHint() const override { return minimumSizeHint(); } // the room that is left is its own
    QSize minimumSizeHint() const override;                       // narrower than its title, which is then elided

public slots:
    void addWorkerLine(const QString &message); // "hh:mm:ss.zzz" + message
    void addWindowLine(const QString &message); // "MM-dd hh:mm:ss" + "：" + message
    void clear();

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void showTitle();

    QPlainTextEdit *lines_;
};
