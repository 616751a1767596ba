// The window's menus and actions, and their texts in the current language.
#pragma once

#include "device/language.h"

#include <QObject>

class QAction;
class QMenu;
class QMenuBar;

// An entry's text as a title: without its access key, which Chinese texts and these have in brackets at the end.
QString entryTitle(const QAction &entry);

class MainMenu : public QObject
{
    Q_OBJECT

public:
    explicit MainMenu(QMenuBar *bar);

    void setTexts();
    // The values that three entries show: milliseconds, frames, rows.
    void setTuning(unsigned scanTime, unsigned framesPerReceive, unsigned listLimit);
    // The help menu anew: the two fixed entries and one for every manual of the current language.
    void fillHelpMenu();
    // The menu between view and language; empty, with its title its owner's affair.
    QMenu *analysisMenu() const { return analysisMenu_; }
    // Ticks the language in force.
    void showLanguage(unsigned code);

    QAction *deviceOperations;
    QAction *firmwareUpgrade;
    QAction *fileSend;
    QAction *listSend;
    QAction *canSetting;
    QAction *viewParameters;
    QAction *scanTime;
    QAction *framesPerReceive;
    QAction *deviceInfo;
    QAction *hexTimeStamp; // checkable, as the next two
    QAction *checkRecvId;
    QAction *mergeSameId;
    QAction *listBuffer;
    QAction *clearLog;
    QAction *languages[LanguageCount]; // checkable, one at a time
    QAction *about;
    QAction *helpFolder;

private:
    QAction *add(QMenu *menu, const char *name, const char *key, bool checkable = false);

    QMenu *deviceMenu_;
    QMenu *sendMenu_;
    QMenu *parameterMenu_;
    QMenu *infoMenu_;
    QMenu *viewMenu_;
    QMenu *analysisMenu_;
    QMenu *languageMenu_;
    QMenu *helpMenu_;
    unsigned scanTimeValue_ = 0;
    unsigned framesPerReceiveValue_ = 0;
    unsigned listLimitValue_ = 0;
};
