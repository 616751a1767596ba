// The menu of the windows beside the main one. A window is made when it is first asked for and kept until the end.
#pragma once

#include <QObject>

#include <functional>
#include <vector>

class QAction;
class QMenu;
class QWidget;
class RecordingOpener;
class SignalWindows;
class listSendDlg;

class AnalysisMenu : public QObject
{
    Q_OBJECT

public:
    // Fills the menu; window: the main window, parent of the windows.
    AnalysisMenu(QMenu *menu, QWidget *window);

    // A file named on the command line.
    void openRecording(const QString &path);
    // Gives the transmit list the signal databases.
    void joinTransmitList(listSendDlg *list);
    // Whether a hint at the built-in vehicle's signals is of use: no signal database is in use, and that one is there.
    static bool lacksDatabases();
    // Title and entries in the current language.
    void setTexts();

signals:
    void log(const QString &message); // for the operation log

private:
    // name: of the action and, without "action", of its test; texts as text3() takes them.
    QAction *add(const char *name, const char *key, const char *simplified, const char *traditional,
                 const char *english, const std::function<void()> &open);

    // The window of this class, made when it is first asked for.
    template <typename Window> void open();

    struct Entry {
        QAction *action;
        const char *simplified;
        const char *traditional;
        const char *english;
    };

    QMenu *menu_;
    QWidget *window_;
    RecordingOpener *recordings_;
    SignalWindows *values_;
    std::vector<Entry> entries_;
};
