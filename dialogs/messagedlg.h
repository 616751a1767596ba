// Chooses messages of the signal databases in use.
#pragma once

#include "dialogs/databaseaccess.h"
#include "transmit/transmitentry.h"
#include "widgets/formdialog.h"

class QDialogButtonBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;

class MessageDlg : public FormDialog
{
    Q_OBJECT

public:
    explicit MessageDlg(DatabaseAccess databases, QWidget *parent = nullptr);

    // An entry for every chosen message, on the database's channel, channel 1 of both.
    TransmitList entries() const;

protected:
    void retranslate() override;

private:
    void fill();
    void fitColumns();
    void filter();
    void showState();

    const DatabaseAccess databases_;
    std::vector<DatabaseSet::Entry> shown_; // keeps the messages of the rows
    QLabel *searchLabel_;
    QLineEdit *search_;
    QTreeWidget *list_;
    QPushButton *choose_;
    QPushButton *ok_;
    QPushButton *cancel_;
};
