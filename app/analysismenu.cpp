#include "app/analysismenu.h"

#include "analysis/recordwindow.h"
#include "analysis/signaldatabases.h"
#include "analysis/signalhub.h"
#include "analysis/signalwindows.h"
#include "analysis/statisticswindow.h"
#include "app/recordingopener.h"
#include "device/language.h"
#include "dialogs/listsenddlg.h"

#include <QAction>
#include <QMenu>

AnalysisMenu::AnalysisMenu(QMenu *menu, QWidget *window)
    : QObject(window), menu_(menu), window_(window), recordings_(new RecordingOpener(window))
{
    add("actionStatistics", "Ctrl+Shift+S", "总线统计(&S)", "匯流排統計(&S)", "Bus &statistics",
        [this] { open<StatisticsWindow>(); });
    add("actionOpenRecording", "Ctrl+Shift+O", "打开记录(&O)…", "開啟記錄(&O)…", "&Open recording…",
        [this] { recordings_->choose(); });
    add("actionRecord", "Ctrl+R", "记录(&R)…", "記錄(&R)…", "&Record…", [this] { open<RecordWindow>(); });
    connect(recordings_, &RecordingOpener::log, this, &AnalysisMenu::log);
    SignalWindows *values = values_ = new SignalWindows(window);
    connect(values, &SignalWindows::log, this, &AnalysisMenu::log);
    add("actionSignals", "Ctrl+G", "信号(&G)", "訊號(&G)", "Si&gnals", [values] { values->openSignals(); });
    add("actionPlot", "Ctrl+Shift+G", "曲线(&P)", "曲線(&P)", "&Plot", [values] { values->openPlot(); });
}

template <typename Window> void AnalysisMenu::open()
{
    Window *shown = nullptr;
    for (Window *window : window_->findChildren<Window *>(QString(), Qt::FindDirectChildrenOnly))
        if (!window->testAttribute(Qt::WA_DeleteOnClose)) // those belong to a recording
            shown = window;
    if (!shown) {
        shown = new Window(window_);
        connect(shown, &Window::log, this, &AnalysisMenu::log);
    }
    shown->open();
}

bool AnalysisMenu::lacksDatabases()
{
    const auto databases = SignalDatabases::shared();
    return databases->isEmpty() && !databases->unusedVehicleDatabase().isEmpty();
}

void AnalysisMenu::openRecording(const QString &path)
{
    recordings_->open(path);
}

void AnalysisMenu::joinTransmitList(listSendDlg *list)
{
    SignalHub *hub = values_->hub();
    hub->start();
    connect(hub, &SignalHub::databasesChanged, list, &listSendDlg::showFields);
    list->setDatabases({[hub] { return hub->databases()->entries(); }, [hub] { return hub->lookup(); },
                        [this](QWidget *parent) { values_->chooseDatabases(parent); }});
}

QAction *AnalysisMenu::add(const char *name, const char *key, const char *simplified, const char *traditional,
                           const char *english, const std::function<void()> &open)
{
    QAction *action = menu_->addAction(QString());
    action->setObjectName(QLatin1String(name));
    action->setShortcut(QKeySequence(QLatin1String(key)));
    connect(action, &QAction::triggered, this, open);
    entries_.push_back({action, simplified, traditional, english});
    return action;
}

void AnalysisMenu::setTexts()
{
    menu_->setTitle(text3("分析(&A)", "分析(&A)", "Analysis(&A)"));
    for (const Entry &entry : entries_)
        entry.action->setText(text3(entry.simplified, entry.traditional, entry.english));
}
