#include "app/mainmenu.h"

#include "app/helpdocuments.h"

#include <QActionGroup>
#include <QMenu>
#include <QMenuBar>
#include <QRegularExpression>

QString entryTitle(const QAction &entry)
{
    static const QRegularExpression accessKey(QStringLiteral("\\(&.\\)$"));
    return entry.text().remove(accessKey);
}

MainMenu::MainMenu(QMenuBar *bar) : QObject(bar)
{
    const auto addMenu = [bar](const char *name) {
        QMenu *menu = bar->addMenu(QString());
        menu->setObjectName(QLatin1String(name));
        return menu;
    };
    deviceMenu_ = addMenu("menuDevice");
    deviceOperations = add(deviceMenu_, "actionDeviceOperations", "Ctrl+O");
    firmwareUpgrade = add(deviceMenu_, "actionFirmwareUpgrade", "Ctrl+Shift+B");

    sendMenu_ = addMenu("menuSend");
    fileSend = add(sendMenu_, "actionFileSend", "Ctrl+T");
    listSend = add(sendMenu_, "actionListSend", "Ctrl+L");

    parameterMenu_ = addMenu("menuParameter");
    canSetting = add(parameterMenu_, "actionCanSetting", "Ctrl+P");
    viewParameters = add(parameterMenu_, "actionViewParameters", "Ctrl+Shift+P");
    scanTime = add(parameterMenu_, "actionScanTime", "Ctrl+Shift+T");
    framesPerReceive = add(parameterMenu_, "actionFramesPerReceive", "Ctrl+Shift+N");

    infoMenu_ = addMenu("menuInformation");
    deviceInfo = add(infoMenu_, "actionDeviceInfo", "Ctrl+I");

    viewMenu_ = addMenu("menuView");
    hexTimeStamp = add(viewMenu_, "actionHexTimeStamp", "Ctrl+Shift+H", true);
    checkRecvId = add(viewMenu_, "actionCheckRecvId", "Ctrl+Shift+I", true);
    mergeSameId = add(viewMenu_, "actionMergeSameId", "Ctrl+M", true);
    viewMenu_->addSeparator();
    listBuffer = add(viewMenu_, "actionListBuffer", "Ctrl+B");
    clearLog = add(viewMenu_, "actionClearLog", "Ctrl+Shift+D");

    analysisMenu_ = addMenu("menuAnalysis");

    languageMenu_ = addMenu("menuLanguage");
    auto *group = new QActionGroup(this);
    static const char *const names[LanguageCount] = {"actionSimplifiedChinese", "actionTraditionalChinese",
                                                     "actionEnglish"};
    // Every language under its own name, whatever language is in force.
    static const char *const texts[LanguageCount] = {"简体中文", "繁體中文", "English"};
    for (unsigned code = 0; code < LanguageCount; ++code) {
        languages[code] = add(languageMenu_, names[code], "", true);
        languages[code]->setText(QString::fromUtf8(texts[code]));
        group->addAction(languages[code]);
    }

    helpMenu_ = addMenu("menuHelp");
    about = add(helpMenu_, "actionAbout", "");
    about->setMenuRole(QAction::AboutRole);
    helpFolder = add(helpMenu_, "actionHelpFolder", "Shift+F1");
}

QAction *MainMenu::add(QMenu *menu, const char *name, const char *key, bool checkable)
{
    auto *action = new QAction(this);
    action->setObjectName(QLatin1String(name));
    action->setCheckable(checkable);
    action->setShortcut(QKeySequence(QLatin1String(key)));
    menu->addAction(action);
    return action;
}

void MainMenu::setTexts()
{
    deviceMenu_->setTitle(text3("设备管理(&O)", "設備管理(&O)", "Device Manage(&O)"));
    deviceOperations->setText(text3("设备操作(&S)", "設備操作(&S)", "Device Operations(&S)"));
    firmwareUpgrade->setText(text3("固件升级(&U)", "固件升級(&U)", "Firmware Upgrade(&U)"));
    sendMenu_->setTitle(text3("多条发送(&T)", "多條發送(&T)", "Multiple Transmiter(&T)"));
    fileSend->setText(text3("文件发送(&F)", "文件發送(&F)", "Fie Transmiter(&F)"));
    listSend->setText(text3("列表发送(&L)", "列表發送(&L)", "List Send(&L)"));
    parameterMenu_->setTitle(text3("参数设定(&S)", "參數設定(&S)", "Parameter Setting(&S)"));
    canSetting->setText(text3("CAN参数设置(&C)", "CAN參數設置(&C)", "CAN Setting(&C)"));
    viewParameters->setText(text3("查看CAN参数(&V)", "查看CAN參數(&V)", "View CAN Setting(&V)"));
    infoMenu_->setTitle(text3("信息(&I)", "信息(&I)", "Information(&I)"));
    deviceInfo->setText(text3("设备信息(&I)", "設備信息(&I)", "Device Info(&I)"));
    viewMenu_->setTitle(text3("显示(&V)", "顯示(&V)", "View(&V)"));
    hexTimeStamp->setText(text3("时间标识(Hex)(&H)", "時間標識(Hex)(&H)", "time stamp(Hex)(&H)"));
    checkRecvId->setText(text3("接收ID累加判断(&A)", "接收ID纍加判斷(&A)", "check recv ID(&A)"));
    mergeSameId->setText(text3("合并相同ID数据(&M)", "合并相同ID數據(&M)", "Merge list data(&M)"));
    // Traditional Chinese keeps the Simplified form here.
    clearLog->setText(text3("清空日志(&D)", "清空日志(&D)", "Clear Log(&D)"));
    languageMenu_->setTitle(text3("语言(&L)", "語言(&L)", "Language(&L)"));
    helpMenu_->setTitle(text3("帮助(&H)", "幫助(&H)", "Help(&H)"));
    about->setText(text3("关于(&A)", "關於(&A)", "About(&A)"));
    helpFolder->setText(text3("帮助文档目录(&P)", "幫助文檔目錄(&P)", "Help Folder(&P)"));
    setTuning(scanTimeValue_, framesPerReceiveValue_, listLimitValue_);
}

void MainMenu::setTuning(unsigned scanTimeMs, unsigned frames, unsigned listLimit)
{
    scanTimeValue_ = scanTimeMs;
    framesPerReceiveValue_ = frames;
    listLimitValue_ = listLimit;
    scanTime->setText(tr("接收扫描时间(%1ms)(&S)").arg(scanTimeMs));
    framesPerReceive->setText(tr("每次接收帧数(%1)(&F)").arg(frames));
    listBuffer->setText(
        text3("列表缓存帧数(%1)(&D)", "列表緩存幀數(%1)(&D)", "Data List Buffer(%1)(&D)").arg(listLimit));
}

void MainMenu::fillHelpMenu()
{
    helpMenu_->clear(); // deletes the manuals' entries; the fixed ones belong to this object
    helpMenu_->addAction(about);
    helpMenu_->addSeparator();
    helpMenu_->addAction(helpFolder);
    helpMenu_->addSeparator();
    bool isFirst = true;
    for (const HelpDocument &document : helpDocuments()) {
        QAction *action = helpMenu_->addAction(QString(document.name).replace(QLatin1Char('&'), QLatin1String("&&")));
        connect(action, &QAction::triggered, this,
                [this, path = document.path] { openOnDesktop(path, helpMenu_->window()); });
        if (isFirst)
            action->setShortcut(QKeySequence::HelpContents);
        isFirst = false;
    }
}

void MainMenu::showLanguage(unsigned code)
{
    if (code < LanguageCount)
        languages[code]->setChecked(true);
}
