// The manuals beside the executable.
#pragma once

#include <QString>
#include <QVector>

class QWidget;

struct HelpDocument {
    QString name; // file name
    QString path; // absolute
};

// The folder of the current language's manuals; it need not exist.
QString helpFolderPath();
// Every file below it whose suffix is exactly "pdf", by path.
QVector<HelpDocument> helpDocuments();
// Opens a file or folder with the desktop's own viewer. Without one, or without the file, a box over the parent says
// so.
void openOnDesktop(const QString &path, QWidget *parent);
