// PlotWindow's way to files.
#include "analysis/plotexport.h"
#include "analysis/plotview.h"
#include "analysis/plotwindow.h"
#include "device/language.h"
#include "widgets/messages.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QSettings>

namespace
{
const QString kFolderKey = QStringLiteral("plots/folder");
} // namespace

void PlotWindow::exportFile()
{
    QSettings settings;
    QFileDialog dialog(this, text3("导出曲线", "匯出曲線", "Export plot"), settings.value(kFolderKey).toString(),
                       QStringLiteral("PNG (*.png);;PDF (*.pdf);;CSV (*.csv)"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QStringLiteral("png"));
    connect(&dialog, &QFileDialog::filterSelected, &dialog,
            [&dialog](const QString &filter) { dialog.setDefaultSuffix(filter.left(3).toLower()); });
    if (dialog.exec() != QDialog::Accepted)
        return;
    settings.setValue(kFolderKey, dialog.directory().absolutePath());
    const QString path = dialog.selectedFiles().value(0);
    QVector<const PlotSignal *> shown;
    for (const auto &signal : curves_)
        if (signal->shown)
            shown.append(signal.get());
    const QString name = QDir::toNativeSeparators(path);
    QString error;
    if (exportPlot(*view_, shown, path, &error))
        emit log(text3("曲线已导出：%1", "曲線已匯出：%1", "Plot exported: %1").arg(name));
    else
        showWarning(this, warningTitle(),
                    text3("无法写入文件：%1（%2）", "無法寫入檔案：%1（%2）", "Cannot write %1: %2").arg(name, error));
}
