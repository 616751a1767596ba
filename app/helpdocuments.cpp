#include "app/helpdocuments.h"

#include "device/apppaths.h"
#include "device/language.h"

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

void openOnDesktop(const QString &path)
{
    QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}
