// What the user of a soak does: one random thing after another, with everything the window has.
#pragma once

#include "soakaccounts.h"
#include "trialscene.h"

#include <map>
#include <random>

class StatisticsWindow;
class listSendDlg;

class SoakActions
{
public:
    SoakActions(Scene &scene, SoakAccounts &accounts, quint32 seed);

    void next();
    // Brings everything to rest: senders stopped, device closed, nothing pending.
    void finish();
    // How often each thing was done, in one line.
    QString summary() const;

private:
    using Action = void (SoakActions::*)();
    struct Choice {
        const char *name;
        int weight;
        Action action;
    };
    static const Choice kChoices[];

    int number(int first, int last);
    void expectCancel();

    void send();
    void stopSending();
    void sendFile();
    void stopFile();
    void switchMerging();
    void switchTimeStamp();
    void checkIdentifiers();
    void pause();
    void clearList();
    void clearLog();
    void resetTotals();
    void setFilter();
    void clearFilters();
    void switchLanguage();
    void switchCapture();
    void tune();
    void cancelDialog();
    void pullAdapter();
    void closeDevice();
    void open();
    void sleepLong();
    void useStatistics();
    void switchEntries(); // of the transmit list
    listSendDlg *openedList();
    void endList();

    Scene &scene_;
    WindowDriver &user_;
    SoakAccounts &accounts_;
    StatisticsWindow *statistics_;
    std::mt19937 random_;
    std::map<QString, int> done_;
};
