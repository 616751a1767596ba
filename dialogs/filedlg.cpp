#include "dialogs/filedlg.h"

#include "ui_filedlg.h"

#include "device/settingsstore.h"
#include "widgets/storedfields.h"

#include <QFileDialog>
#include <QFileInfo>

namespace
{
const QString kPathKey = QStringLiteral("sendFile");
const QString kChannelKey = QStringLiteral("sendFileCH");
const QString kModeKey = QStringLiteral("sendFileJG");
const QString kCountKey = QStringLiteral("sendFileCnt");
const QString kIntervalKey = QStringLiteral("sendFileJGT");

enum IntervalMode { FixedInterval = 0, IntervalOfFile = 1 };
constexpr int kRecordedTimingRequest = -1;
} // namespace

fileDlg::fileDlg(QWidget *parent) : FormDialog(parent), ui_(std::make_unique<Ui::fileDlg>())
{
    ui_->setupUi(this);
    restore();
    setIdle();
    finishForm();
}

fileDlg::~fileDlg() = default;

void fileDlg::restore()
{
    ui_->lineEdit->setText(settings::value(kPathKey, QString()));
    restoreIndex(ui_->comboBox, kChannelKey, QStringLiteral("0"));
    restoreIndex(ui_->comboBox_2, kModeKey, QStringLiteral("0"));
    ui_->spinBox->setRepeats(settings::value(kCountKey, QStringLiteral("1")));
    ui_->spinBox_2->setValue(storedNumber(kIntervalKey, QStringLiteral("0")));
}

void fileDlg::store()
{
    const QString path = ui_->lineEdit->text();
    if (isStorable(path))
        settings::setValue(kPathKey, path, false);
    settings::setValue(kChannelKey, QString::number(ui_->comboBox->currentIndex()), false);
    settings::setValue(kModeKey, QString::number(ui_->comboBox_2->currentIndex()), false);
    settings::setValue(kCountKey, QString::number(ui_->spinBox->value()), false);
    settings::setValue(kIntervalKey, QString::number(ui_->spinBox_2->value()), true);
}

bool fileDlg::hasFixedInterval() const
{
    return ui_->comboBox_2->currentIndex() == FixedInterval;
}

void fileDlg::setSending(bool sending)
{
    QPushButton *next = sending ? ui_->pbStop : ui_->pbSend;
    const QWidget *focus = focusWidget();
    next->setEnabled(true);
    for (QWidget *input : std::initializer_list<QWidget *>{ui_->lineEdit, ui_->pbfile, ui_->comboBox, ui_->spinBox,
                                                           ui_->comboBox_2, ui_->pbSend})
        input->setEnabled(!sending);
    ui_->spinBox_2->setEnabled(!sending && hasFixedInterval());
    ui_->pbStop->setEnabled(sending);
    if (focus && !focus->isEnabled())
        next->setFocus();
}

void fileDlg::setIdle()
{
    setSending(false);
}

void fileDlg::on_pbfile_clicked()
{
    const QString path = ui_->lineEdit->text();
    const QString folder = path.isEmpty() ? QString() : QFileInfo(path).absolutePath();
    ui_->lineEdit->setText(
        QFileDialog::getOpenFileName(this, tr("打开CSV文件"), folder, QStringLiteral("CSV Files (*.csv)")));
}

void fileDlg::on_comboBox_2_currentIndexChanged(int index)
{
    ui_->spinBox_2->setEnabled(index == FixedInterval);
}

void fileDlg::on_pbSend_clicked()
{
    store();
    setSending(true);
    emit send(ui_->lineEdit->text(), ui_->spinBox->value(),
              hasFixedInterval() ? ui_->spinBox_2->value() : kRecordedTimingRequest, ui_->comboBox->currentIndex());
}

void fileDlg::on_pbStop_clicked()
{
    setIdle();
    emit stop();
}

void fileDlg::retranslate()
{
    ui_->retranslateUi(this);
}
