// PlotWindow's way to files.
#include "analysis/plotexport.h"
#include "analysis/plotview.h"
#include "analysis/plotwindow.h"
#include "device/language.h"
#include "widgets/messages.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QPushButton>
#include <QSettings>

namespace
{
const QString kPlotFolderKey = QStringLiteral("plots/folder");
} // namespace

// Pressed again while a table is written: gives it up.
void PlotWindow::exportFile()
{
    if (csv_) {
        csv_->cancel();
        return;
    }
    QSettings settings;
    QFileDialog dialog(this, text3("导出曲线", "匯出曲線", "Export plot"), settings.value(kPlotFolderKey).toString(),
                       QStringLiteral("PNG (*.png);;PDF (*.pdf);;CSV (*.csv)"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QStringLiteral("png"));
    connect(&dialog, &QFileDialog::filterSelected, &dialog,
            [&dialog](const QString &filter) { dialog.setDefaultSuffix(filter.left(3).toLower()); });
    if (dialog.exec() != QDialog::Accepted)
        return;
    settings.setValue(kPlotFolderKey, dialog.directory().absolutePath());
    const QString path = dialog.selectedFiles().value(0);
    QVector<const PlotSignal *> shown;
    for (const auto &signal : curves_)
        if (signal->shown)
            shown.append(signal.get());
    if (path.endsWith(QLatin1String(".csv"), Qt::CaseInsensitive)) {
        std::vector<CsvExport::Column> columns;
        for (const PlotSignal *signal : qAsConst(shown))
            columns.push_back({signal->title(), signal->data.snapshot()});
        csv_ = std::make_unique<CsvExport>(path, std::move(columns), toNanoseconds(view_->from()),
                                           toNanoseconds(view_->to()));
        setExportText();
        return;
    }
    QString error;
    exportPlot(*view_, shown, path, &error);
    tellExported(path, error);
}

void PlotWindow::lookAtExport()
{
    if (!csv_ || !csv_->finished())
        return;
    const std::unique_ptr<CsvExport> done = std::move(csv_);
    setExportText();
    if (!done->isCancelled())
        tellExported(done->path(), done->error());
}

void PlotWindow::setExportText()
{
    export_->setText(csv_ ? text3("取消导出(&E)", "取消匯出(&E)", "Cancel &export")
                          : text3("导出(&E)…", "匯出(&E)…", "&Export…"));
}

void PlotWindow::tellExported(const QString &path, const QString &error)
{
    const QString name = QDir::toNativeSeparators(path);
    if (error.isEmpty())
        emit log(text3("曲线已导出：%1", "曲線已匯出：%1", "Plot exported: %1").arg(name));
    else
        showWarning(this, warningTitle(),
                    text3("无法写入文件：%1（%2）", "無法寫入檔案：%1（%2）", "Cannot write %1: %2").arg(name, error));
}
