#include "app/recordingopener.h"

#include "analysis/recordingwindow.h"
#include "device/language.h"
#include "traces/traceformats.h"
#include "widgets/messages.h"

#include <QDir>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QMimeData>
#include <QSettings>
#include <QTimer>

namespace
{
const char *const kFolderKey = "analysis/recording/folder";

QStringList filesOf(const QDropEvent &event)
{
    QStringList files;
    for (const QUrl &url : event.mimeData()->urls())
        if (url.isLocalFile() && QFileInfo(url.toLocalFile()).isFile())
            files.append(url.toLocalFile());
    return files;
}
} // namespace

RecordingOpener::RecordingOpener(QWidget *window) : QObject(window), window_(window)
{
    window_->setAcceptDrops(true);
    window_->installEventFilter(this);
}

void RecordingOpener::choose()
{
    QStringList endings;
    for (const TraceFormatEntry &entry : traceFormats())
        if (entry.read)
            endings.append(QStringLiteral("*.") + QLatin1String(entry.ending));
    const QString filter = text3("记录文件", "記錄檔案", "Recordings") +
                           QStringLiteral(" (%1);;").arg(endings.join(' ')) +
                           text3("所有文件", "所有檔案", "All files") + QStringLiteral(" (*)");
    const QStringList files =
        QFileDialog::getOpenFileNames(window_, text3("打开记录", "開啟記錄", "Open Recording"),
                                      QSettings().value(QLatin1String(kFolderKey)).toString(), filter);
    for (const QString &file : files)
        open(file);
}

void RecordingOpener::open(const QString &path)
{
    QString error;
    if (const RecordingWindow *shown = RecordingWindow::openFile(path, window_, &error)) {
        connect(shown, &RecordingWindow::log, this, &RecordingOpener::log);
        QSettings().setValue(QLatin1String(kFolderKey), QFileInfo(path).absolutePath());
        return;
    }
    showWarning(window_, warningTitle(),
                text3("无法打开记录 %1：%2", "無法開啟記錄 %1：%2", "Cannot open recording %1: %2")
                    .arg(QDir::toNativeSeparators(path), error));
}

bool RecordingOpener::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::DragEnter && event->type() != QEvent::Drop)
        return QObject::eventFilter(watched, event);
    auto *drop = static_cast<QDropEvent *>(event);
    const QStringList files = filesOf(*drop);
    if (files.isEmpty())
        return QObject::eventFilter(watched, event);
    drop->setDropAction(Qt::CopyAction);
    drop->accept();
    if (event->type() == QEvent::Drop) // a box would hold up the program that the file comes from
        QTimer::singleShot(0, this, [this, files] {
            for (const QString &file : files)
                open(file);
        });
    return true;
}
