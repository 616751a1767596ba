// The transmit list: edits, keeps and sends it, beside the main window.
#pragma once

#include "dialogs/databaseaccess.h"
#include "dialogs/transmitdocument.h"
#include "transmit/signalfields.h"
#include "transmit/transmitengine.h"
#include "widgets/formdialog.h"

#include <functional>
#include <memory>
#include <vector>

class QAction;
class QShortcut;
class QTimer;
class QToolBar;

namespace Ui
{
class listSendDlg;
}

class listSendDlg : public FormDialog
{
    Q_OBJECT

public:
    explicit listSendDlg(QWidget *parent = nullptr);
    ~listSendDlg() override; // stops the list

    TransmitDocument *document() { return &document_; }
    // Where rows of the frame list come from, as CSV rows.
    void setRowSource(std::function<QString()> source) { rowSource_ = std::move(source); }
    void setDatabases(DatabaseAccess databases);

public slots:
    void showFields(); // the databases, or what they say, are others

signals:
    void logLine(const QString &text); // for the operation log; also from the sending thread

protected:
    void retranslate() override;
    void keyPressEvent(QKeyEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void showEvent(QShowEvent *event) override;

private slots:
    void on_pbnStart_clicked();
    void on_pbnStop_clicked();
    void on_pbnClose_clicked();

private:
    struct Command {
        QAction *action;
        LogText text;
    };

    void addCommands();
    void addCommand(QToolBar *bar, const char *name, const QKeySequence &key, const LogText &text,
                    void (listSendDlg::*slot)());
    void addFields();
    void setColumnWidths();
    void keepPlace() const;
    void showList(const TransmitList &list);
    void showTitle();
    void showRunning();
    void showCounts();
    void hint(const QString &text);
    bool isDiscarding();

    QVector<int> selectedRows() const;
    void insertEntries(const TransmitList &entries);
    void select(const TransmitList &entries);
    void moveRows(int step);
    void takeRows(const QString &csv);
    void bindKeys();

    void newList();
    void openList();
    void saveList();
    void saveListAs();
    void undo();
    void redo();
    void addEntry();
    void copyEntries();
    void removeEntries();
    void moveUp() { moveRows(-1); }
    void moveDown() { moveRows(1); }
    void switchEntries();
    void fillCells();
    void editBytes();
    void takeTableRows();
    void pasteRows();
    void sendOnce();
    void takeMessages();
    void editSignals();

    const std::unique_ptr<Ui::listSendDlg> ui_;
    DatabaseAccess databases_;
    SignalFields fields_;
    TransmitDocument document_;
    TransmitEngine engine_;
    QTimer *refresh_;
    std::vector<Command> commands_;
    std::vector<QShortcut *> keys_;
    std::function<QString()> rowSource_;
};
