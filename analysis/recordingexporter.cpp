#include "analysis/recordingexporter.h"

#include "device/language.h"
#include "traces/traceformats.h"
#include "widgets/messages.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>

RecordingExporter::RecordingExporter(const RecordingIndex &index, QWidget *window)
    : QObject(window), index_(index), window_(window)
{
}

void RecordingExporter::start(const RecordingFilter *filter, std::uint64_t first, std::uint64_t end)
{
    if (run_)
        return;
    QStringList filters;
    for (const TraceFormatEntry &entry : traceFormats())
        if (entry.write)
            filters.append(QStringLiteral("%1 (*.%2)").arg(QLatin1String(entry.name), QLatin1String(entry.ending)));
    QString chosen;
    QString name =
        QFileDialog::getSaveFileName(window_, text3("导出", "匯出", "Export"), QFileInfo(index_.path()).absolutePath(),
                                     filters.join(QStringLiteral(";;")), &chosen);
    if (name.isEmpty())
        return;
    std::optional<TraceFormat> format = traceFormatOfName(name);
    if (!format) {
        format = traceFormatFromText(chosen.section(QLatin1Char(' '), 0, 0)).value_or(TraceFormat::Candump);
        name += chosen.section(QLatin1Char('*'), 1).chopped(chosen.contains(QLatin1Char('*')) ? 1 : 0);
    }
    if (QFileInfo(name).canonicalFilePath() == QFileInfo(index_.path()).canonicalFilePath() &&
        QFileInfo::exists(name)) {
        showWarning(window_, warningTitle(),
                    text3("不能导出到打开的记录文件本身。", "不能匯出到開啟的記錄檔案本身。",
                          "The open recording itself cannot be the target."));
        return;
    }
    fileName_ = name;
    run_ = std::make_unique<RecordingExport>(index_, filter, first, end, name, *format);
}

void RecordingExporter::cancel()
{
    if (run_)
        run_->cancel();
}

double RecordingExporter::progress() const
{
    if (!run_)
        return 0;
    const RecordingExport::State state = run_->state();
    return state.total > 0 ? static_cast<double>(state.written) / static_cast<double>(state.total) : 1;
}

void RecordingExporter::look()
{
    if (!run_ || !run_->state().finished)
        return;
    const RecordingExport::State state = run_->state();
    run_.reset();
    const QString file = QDir::toNativeSeparators(fileName_);
    if (state.cancelled) {
        emit told(text3("导出已取消", "匯出已取消", "Export cancelled"));
    } else if (!state.error.isEmpty()) {
        emit told(text3("导出失败", "匯出失敗", "Export failed"));
        showWarning(window_, warningTitle(),
                    text3("无法导出到 %1：%2", "無法匯出到 %1：%2", "Cannot export to %1: %2").arg(file, state.error));
    } else {
        emit told(text3("已导出 %1 帧到 %2", "已匯出 %1 幀到 %2", "%1 frames exported to %2")
                      .arg(QString::number(state.written), file));
        tellLosses(state);
    }
}

void RecordingExporter::tellLosses(const RecordingExport::State &state) const
{
    QStringList lines;
    for (const TraceLoss &loss : state.losses)
        lines.append(text3("%1：%2", "%1：%2", "%1: %2").arg(loss.what).arg(loss.count));
    if (!lines.isEmpty())
        showInformation(window_, tipTitle(),
                        text3("该格式无法保存：", "該格式無法儲存：", "The format cannot hold:") + QLatin1Char('\n') +
                            lines.join(QLatin1Char('\n')));
}
