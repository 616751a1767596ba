// Edits the stored parameters of one channel, or of both at once.
#pragma once

#include "widgets/formdialog.h"

#include <memory>

namespace Ui
{
class ParaDialog;
}

class ParaDialog : public FormDialog
{
    Q_OBJECT

public:
    static constexpr int BothChannels = 3; // a channelSelector besides the channels 0 and 1

    // Not editable: only the filter can change. With BothChannels and no channel choice, confirming stores the same
    // values for both channels.
    ParaDialog(bool editable, bool showChannelChoice, int channelSelector, QWidget *parent = nullptr);
    ~ParaDialog() override;

public slots:
    // Channels are counted from 1 here.
    void setP(int index);  // from the store into the form
    void saveP(int index); // from the form into the store and its file

protected:
    void retranslate() override;

private slots:
    void on_chCombo_currentIndexChanged(int index);
    void on_filterModeCheck_clicked(bool checked);
    void on_filterEditBtn_clicked();
    void on_btnSave_clicked();
    void on_btnConfirm_clicked();
    void on_btnCancel_clicked();

private:
    int shownChannel() const; // from 1

    const std::unique_ptr<Ui::ParaDialog> ui_;
    const bool editable_;
    const bool saveAllChannels_;
    QString filterRows_; // of the channel shown
};
