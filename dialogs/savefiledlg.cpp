#include "dialogs/savefiledlg.h"

#include "device/settingsstore.h"
#include "ui_savefiledlg.h"
#include "widgets/storedfields.h"

#include <QFile>
#include <QFileDialog>
#include <QFileInfo>

namespace
{
const QString kCaptureFolderKey = QStringLiteral("captureFolder");
const QString kCaptureSuffix = QStringLiteral("csv");

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

savefileDlg::savefileDlg(QWidget *parent) : FormDialog(parent), ui_(std::make_unique<Ui::savefileDlg>())
{
    ui_->setupUi(this);
    QSizePolicy keepsItsRoom = ui_->hintLabel->sizePolicy();
    keepsItsRoom.setRetainSizeWhenHidden(true);
    ui_->hintLabel->setSizePolicy(keepsItsRoom);
    ui_->hintLabel->hide();
    finishForm();
}

savefileDlg::~savefileDlg() = default;

// Empty when cancelled. A name without an extension gets one, and the toolkit asks before a file is overwritten.
QString savefileDlg::askFileName()
{
    QFileDialog dialog(this, tr("保存CSV文件"), settings::value(kCaptureFolderKey, QString()),
                       QStringLiteral("CSV Files (*.csv)"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(kCaptureSuffix);
    QString path;
    // The toolkit leaves a whole path alone when one of its folders has a dot: then it asks again, with the extension.
    while (QFileInfo(path).suffix().isEmpty()) {
        if (!path.isEmpty())
            dialog.selectFile(path + QLatin1Char('.') + kCaptureSuffix);
        if (dialog.exec() != QDialog::Accepted)
            return {};
        path = dialog.selectedFiles().value(0);
    }
    const QString folder = QFileInfo(path).absolutePath();
    if (isStorable(folder))
        settings::setValue(kCaptureFolderKey, folder, true);
    return path;
}

void savefileDlg::on_browseBtn_clicked()
{
    const QString chosen = askFileName();
    if (chosen.isEmpty())
        return;
    ui_->pathEdit->setText(chosen);
    ui_->hintLabel->setVisible(!prepareTarget(chosen));
    ui_->okBtn->setFocus();
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

void savefileDlg::retranslate()
{
    ui_->retranslateUi(this); // item texts change in place: the chosen index stays
}
