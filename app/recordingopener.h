// The ways in which a recording is opened in its window: the menu's entry and a file dropped on the main window.
#pragma once

#include <QObject>

class QWidget;

class RecordingOpener : public QObject
{
    Q_OBJECT

public:
    // window: the main one, which takes dropped files from now on.
    explicit RecordingOpener(QWidget *window);

    // Asks for the files.
    void choose();
    // Tells in a box why it cannot be opened.
    void open(const QString &path);

signals:
    void log(const QString &line); // of the windows, for the operation log

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QWidget *window_;
};
