// Rows of a recording for the clipboard, as the program's CSV rows: a spreadsheet or the transmit list takes them.
#include "analysis/recordingview.h"
#include "analysis/recordingwindow.h"
#include "device/language.h"
#include "traces/csvtrace.h"

#include <QBuffer>
#include <QClipboard>
#include <QGuiApplication>

#include <algorithm>

namespace
{
constexpr std::uint64_t kMostRows = 100'000;
constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";
} // namespace

void RecordingWindow::copyRows()
{
    const std::uint64_t end = std::min(view_->selectionEnd(), model_->total());
    const std::uint64_t first = view_->selectionBegin();
    if (first >= end)
        return;
    if (end - first > kMostRows) {
        tell(text3("最多复制%1行", "最多複製%1列", "At most %1 rows can be copied").arg(kMostRows));
        return;
    }
    QBuffer content;
    content.open(QIODevice::WriteOnly);
    TraceWriterOptions options;
    options.startUtc = index_->state().startUtc;
    const auto writer = writeCsv(&content, options);
    std::uint64_t copied = 0;
    for (std::uint64_t position = first; position < end; ++position) {
        const auto frame = model_->frameAt(model_->rowOf(position));
        if (!frame)
            break;
        writer->write(&*frame, 1);
        ++copied;
    }
    writer->finish();
    QByteArray text = content.data();
    if (text.startsWith(kByteOrderMark))
        text.remove(0, int(sizeof kByteOrderMark) - 1);
    QGuiApplication::clipboard()->setText(QString::fromUtf8(text));
    tell(text3("已复制%1行", "已複製%1列", "%1 rows copied").arg(copied));
}
