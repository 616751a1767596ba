#include "device/dialogs/paradialog.h"

#include "device/channelparameters.h"
#include "device/dialogs/filterdialog.h"
#include "ui_paradialog.h"

#include <QRegularExpressionValidator>
#include <QSignalBlocker>

namespace
{

// An index that the list does not have shows the first entry.
void selectIndex(QComboBox *combo, unsigned index)
{
    combo->setCurrentIndex(index < unsigned(combo->count()) ? int(index) : 0);
}

unsigned selectedIndex(const QComboBox *combo)
{
    return unsigned(qMax(0, combo->currentIndex()));
}

} // namespace

ParaDialog::ParaDialog(bool editable, bool showChannelChoice, int channelSelector, QWidget *parent)
    : FormDialog(parent),
      ui_(std::make_unique<Ui::ParaDialog>()),
      editable_(editable),
      saveAllChannels_(channelSelector == BothChannels && !showChannelChoice)
{
    ui_->setupUi(this);
    // The separators of the settings file cannot be stored.
    ui_->CustomBaudrateEdit->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[^,;]*")), this));
    for (QWidget *custom :
         std::initializer_list<QWidget *>{ui_->CustomBaudrateCheckBox, ui_->CustomBaudrateEdit, ui_->customHintLabel})
        custom->hide();
    for (QWidget *input :
         std::initializer_list<QWidget *>{ui_->workStatusCombo, ui_->canFDStandardCombo, ui_->ABIT1Combo,
                                          ui_->ABIT2Combo, ui_->CustomBaudrateCheckBox, ui_->CustomBaudrateEdit})
        input->setEnabled(editable);
    ui_->chCombo->setVisible(showChannelChoice);
    ui_->chCombo->setEnabled(channelSelector == BothChannels);
    {
        const QSignalBlocker quiet(ui_->chCombo);
        ui_->chCombo->setCurrentIndex(channelSelector == 1 ? 1 : 0);
    }
    setP(shownChannel());
    finishForm();
}

ParaDialog::~ParaDialog() = default;

int ParaDialog::shownChannel() const
{
    return ui_->chCombo->currentIndex() + 1;
}

void ParaDialog::setP(int index)
{
    const ChannelParameters parameters = loadChannelParameters(unsigned(index - 1));
    selectIndex(ui_->workStatusCombo, parameters.workStatus);
    selectIndex(ui_->canFDStandardCombo, parameters.canFdStandard);
    selectIndex(ui_->ABIT1Combo, parameters.arbitration);
    selectIndex(ui_->ABIT2Combo, parameters.data);
    ui_->CustomBaudrateCheckBox->setChecked(parameters.customBaudRate);
    ui_->CustomBaudrateEdit->setText(parameters.customBaudRateText);
    ui_->filterModeCheck->setChecked(parameters.filterOn);
    filterRows_ = parameters.filterRows;
}

void ParaDialog::saveP(int index)
{
    const auto channel = unsigned(index - 1);
    if (!editable_) { // what the lists cannot show stays as it is stored
        storeChannelFilter(channel, ui_->filterModeCheck->isChecked(), filterRows_);
        return;
    }
    ChannelParameters parameters;
    parameters.workStatus = selectedIndex(ui_->workStatusCombo);
    parameters.canFdStandard = selectedIndex(ui_->canFDStandardCombo);
    parameters.arbitration = selectedIndex(ui_->ABIT1Combo);
    parameters.data = selectedIndex(ui_->ABIT2Combo);
    parameters.customBaudRate = ui_->CustomBaudrateCheckBox->isChecked();
    parameters.customBaudRateText = ui_->CustomBaudrateEdit->text();
    parameters.filterOn = ui_->filterModeCheck->isChecked();
    parameters.filterRows = filterRows_;
    storeChannelParameters(channel, parameters);
}

void ParaDialog::on_chCombo_currentIndexChanged(int index)
{
    setP(index + 1);
}

void ParaDialog::on_filterModeCheck_clicked(bool checked)
{
    if (checked) // unticked, the rows stay stored, they are merely not applied
        on_filterEditBtn_clicked();
}

void ParaDialog::on_filterEditBtn_clicked()
{
    FilterDialog dialog(shownChannel(), filterRows_, this);
    if (dialog.exec() == QDialog::Accepted)
        filterRows_ = dialog.rowText();
}

void ParaDialog::on_btnSave_clicked()
{
    saveP(shownChannel());
}

void ParaDialog::on_btnConfirm_clicked()
{
    if (saveAllChannels_) {
        saveP(1);
        saveP(2);
    } else {
        saveP(shownChannel());
    }
    accept();
}

void ParaDialog::on_btnCancel_clicked()
{
    reject();
}

void ParaDialog::retranslate()
{
    ui_->retranslateUi(this);
}
