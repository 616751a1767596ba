// What the windows beside the main one have in common: each remembers its place, and its texts follow the language.
#pragma once

#include <QWidget>

class AnalysisWindow : public QWidget
{
    Q_OBJECT

public:
    // name: under which its place is kept (QSettings), ASCII. parent: the main window, which keeps its own taskbar
    // entry and stays usable; the window closes with it.
    AnalysisWindow(const QString &name, QWidget *parent);
    ~AnalysisWindow() override;

    // Shows the window where it was the last time, or brings it to the front.
    void open();

protected:
    static constexpr int kProgressSteps = 1000; // of every progress bar

    // Shows every text in the current language; called by open() and whenever the language changes.
    virtual void retranslate() = 0;
    // Size before one was kept, in pixels at 96 DPI.
    virtual QSize designSize() const = 0;

    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    QString key(const char *what) const;
    void keepPlace() const;

    const QString name_;
};
