// The signal databases in use: which, and on which channels.
#pragma once

#include "analysis/signaldatabases.h"
#include "widgets/formdialog.h"

class QComboBox;
class QLabel;
class QPushButton;
class QTreeWidget;

class DatabaseDialog : public FormDialog
{
    Q_OBJECT

public:
    // The databases outlive the dialog.
    explicit DatabaseDialog(SignalDatabases *databases, QWidget *parent = nullptr);

protected:
    void retranslate() override;

private:
    void showDatabases();
    void showSelected();
    void setChannels(int choice);
    QString selectedPath() const;

    SignalDatabases *databases_;
    QTreeWidget *list_;
    QLabel *channelsLabel_;
    QComboBox *channels_;
    QPushButton *add_;
    QPushButton *vehicle_;
    QPushButton *remove_;
    QPushButton *close_;
};

// "1", "2" or "1, 2".
QString channelsText(DatabaseChannels channels);
// Asks for files of databases and adds them, on both channels.
void addDatabaseFiles(SignalDatabases *databases, QWidget *parent);
