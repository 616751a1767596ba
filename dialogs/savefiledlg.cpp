#include "dialogs/savefiledlg.h"

#include "ui_savefiledlg.h"
#include "widgets/dialogscaler.h"

#include <QEvent>
#include <QFile>
#include <QFileDialog>

std::function<QString(QWidget *, const QString &)> savefileDlg::askSaveFileName = [](QWidget *parent,
                                                                                     const QString &caption) {
    return QFileDialog::getSaveFileName(parent, caption, QString(), QStringLiteral("CSV Files (*.csv)"));
};

namespace
{
// Creates the file, or empties an existing one; tells whether it could be written and can be read.
bool prepareTarget(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::Truncate))
        return false;
    file.close();
    return file.open(QIODevice::ReadOnly);
}
} // namespace

savefileDlg::savefileDlg(QWidget *parent) : QDialog(parent), ui_(std::make_unique<Ui::savefileDlg>())
{
    ui_->setupUi(this);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    QSizePolicy keepsItsRoom = ui_->hintLabel->sizePolicy();
    keepsItsRoom.setRetainSizeWhenHidden(true);
    ui_->hintLabel->setSizePolicy(keepsItsRoom);
    ui_->hintLabel->hide();
    new DialogScaler(this);
}

savefileDlg::~savefileDlg() = default;

void savefileDlg::on_browseBtn_clicked()
{
    const QString chosen = askSaveFileName(this, tr("保存CSV文件"));
    if (chosen.isEmpty())
        return;
    ui_->pathEdit->setText(chosen);
    ui_->hintLabel->setVisible(!prepareTarget(chosen));
}

void savefileDlg::on_okBtn_clicked()
{
    path_ = ui_->pathEdit->text();
    mode_ = static_cast<CaptureMode>(ui_->modeBox->currentIndex());
    close();
}

void savefileDlg::on_cancelBtn_clicked()
{
    path_.clear();
    mode_ = CaptureMode::AllFrames;
    close();
}

void savefileDlg::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        ui_->retranslateUi(this); // item texts change in place: the chosen index stays
}
