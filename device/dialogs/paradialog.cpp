#include "device/dialogs/paradialog.h"

#include "device/channelparameters.h"
#include "device/dialogs/filterdialog.h"
#include "ui_paradialog.h"
#include "widgets/dialogscaler.h"

#include <QEvent>
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
    : QDialog(parent),
      ui(std::make_unique<Ui::ParaDialog>()),
      saveAllChannels_(channelSelector == BothChannels && !showChannelChoice)
{
    ui->setupUi(this);
    // The separators of the settings file cannot be stored.
    ui->CustomBaudrateEdit->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[^,;]*")), this));
    for (QWidget *custom :
         {static_cast<QWidget *>(ui->CustomBaudrateCheckBox), static_cast<QWidget *>(ui->CustomBaudrateEdit),
          static_cast<QWidget *>(ui->customHintLabel)})
        custom->hide();
    for (QWidget *input :
         {static_cast<QWidget *>(ui->workStatusCombo), static_cast<QWidget *>(ui->canFDStandardCombo),
          static_cast<QWidget *>(ui->ABIT1Combo), static_cast<QWidget *>(ui->ABIT2Combo),
          static_cast<QWidget *>(ui->CustomBaudrateCheckBox), static_cast<QWidget *>(ui->CustomBaudrateEdit)})
        input->setEnabled(editable);
    ui->chCombo->setVisible(showChannelChoice);
    ui->chCombo->setEnabled(channelSelector == BothChannels);
    {
        const QSignalBlocker quiet(ui->chCombo);
        ui->chCombo->setCurrentIndex(channelSelector == 1 ? 1 : 0);
    }
    setP(shownChannel());
    new DialogScaler(this);
}

ParaDialog::~ParaDialog() = default;

int ParaDialog::shownChannel() const
{
    return ui->chCombo->currentIndex() + 1;
}

void ParaDialog::setP(int index)
{
    const ChannelParameters parameters = loadChannelParameters(unsigned(index - 1));
    selectIndex(ui->workStatusCombo, parameters.workStatus);
    selectIndex(ui->canFDStandardCombo, parameters.canFdStandard);
    selectIndex(ui->ABIT1Combo, parameters.arbitration);
    selectIndex(ui->ABIT2Combo, parameters.data);
    ui->CustomBaudrateCheckBox->setChecked(parameters.customBaudRate);
    ui->CustomBaudrateEdit->setText(parameters.customBaudRateText);
    ui->filterModeCheck->setChecked(parameters.filterOn);
    filterRows_ = parameters.filterRows;
}

void ParaDialog::saveP(int index)
{
    ChannelParameters parameters;
    parameters.workStatus = selectedIndex(ui->workStatusCombo);
    parameters.canFdStandard = selectedIndex(ui->canFDStandardCombo);
    parameters.arbitration = selectedIndex(ui->ABIT1Combo);
    parameters.data = selectedIndex(ui->ABIT2Combo);
    parameters.customBaudRate = ui->CustomBaudrateCheckBox->isChecked();
    parameters.customBaudRateText = ui->CustomBaudrateEdit->text();
    parameters.filterOn = ui->filterModeCheck->isChecked();
    parameters.filterRows = filterRows_;
    storeChannelParameters(unsigned(index - 1), parameters);
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

void ParaDialog::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
    QDialog::changeEvent(event);
}
