#include "app/helpdocuments.h"

#include "device/apppaths.h"
#include "device/language.h"
#include "widgets/messages.h"

#include <QDesktopServices>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QUrl>

#include <algorithm>

QString helpFolderPath()
{
    return applicationDir() +
           (languageCode() == English ? QStringLiteral("/help/English") : QStringLiteral("/help/Chinese"));
}

QVector<HelpDocument> helpDocuments()
{
    QVector<HelpDocument> documents;
    QDirIterator files(helpFolderPath(), QDir::Files | QDir::NoSymLinks | QDir::NoDotAndDotDot,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QFileInfo file(files.next());
        if (file.suffix() == QLatin1String("pdf"))
            documents.append({file.fileName(), file.absoluteFilePath()});
    }
    std::sort(documents.begin(), documents.end(),
              [](const HelpDocument &a, const HelpDocument &b) { return a.path < b.path; });
    return documents;
}

void openOnDesktop(const QString &path, QWidget *parent)
{
    if (QFileInfo::exists(path) && QDesktopServices::openUrl(QUrl::fromLocalFile(path)))
        return;
    showWarning(parent, tipTitle(),
                text3("没有可以打开它的程序，或者它不存在：%1", "沒有可以打開它的程式，或者它不存在：%1",
                      "No program can open it, or it is not there: %1")
                    .arg(QDir::toNativeSeparators(path)));
}
