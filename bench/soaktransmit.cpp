// The transmit list in a soak: its window opened, entries switched, edited and asked for at random while it runs.
#include "dialogs/listsenddlg.h"
#include "soakactions.h"

#include <QAbstractButton>
#include <QAction>
#include <QUndoStack>

namespace
{
constexpr int kEntries = 60;

TransmitList manyEntries()
{
    TransmitList list;
    for (int number = 0; number < kEntries; ++number) {
        auto entry = std::make_shared<TransmitEntry>();
        entry->serial = newTransmitSerial();
        entry->channel = static_cast<unsigned>(number % 2);
        entry->frame.id = 0x300 + static_cast<unsigned>(number);
        entry->frame.length = kClassicDataBytes;
        entry->frame.fd = number % 3 == 0;
        entry->mode = static_cast<TransmitMode>(number % 4);
        entry->interval = 1 + static_cast<unsigned>(number * 7 % 200);
        entry->count = 100;
        entry->resumes = number % 5 != 0;
        setAwaited(*entry, QStringLiteral("100/700"));
        setChanges(*entry, QStringLiteral("counter 0:8; crc8-sae-j1850 7"));
        list << entry;
    }
    return list;
}
} // namespace

listSendDlg *SoakActions::openedList()
{
    user_.trigger("actionListSend");
    auto *window = scene_.window->findChild<listSendDlg *>();
    if (window->document()->list().isEmpty())
        window->document()->change(manyEntries());
    return window;
}

void SoakActions::switchEntries()
{
    listSendDlg *window = openedList();
    TransmitModel *model = window->document()->model();
    for (const char *name : {"pbnStart", "pbnStop"}) {
        auto *button = window->findChild<QAbstractButton *>(QLatin1String(name));
        if (button->isEnabled() && number(0, name == std::string("pbnStart") ? 1 : 5) == 0) {
            button->click();
            break;
        }
    }
    const int first = number(0, model->rowCount() - 1);
    QVector<int> rows;
    for (int row = first; row < std::min(first + number(1, 20), model->rowCount()); ++row)
        rows << row;
    model->setCells(rows, OnColumn, number(0, 2) > 0);
    model->setCells({first}, IntervalColumn, QString::number(number(1, 300)));
    model->setCells({first}, EntryChannelColumn, number(0, 1));
    window->findChild<QAction *>(QStringLiteral("actionSendOnce"))->trigger();
    if (number(0, 4) == 0)
        window->document()->undoStack()->undo();
    if (number(0, 7) == 0)
        window->close();
}

void SoakActions::endList()
{
    if (auto *window = scene_.window->findChild<listSendDlg *>())
        window->close(); // which stops it
}
