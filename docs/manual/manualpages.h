// Sets a manual written in Markdown as the pages of a PDF.
#pragma once

#include <QString>

// Reads the Markdown file (UTF-8; pictures relative to it), writes the PDF: A4, the title and the page number at the
// foot of every page. A level-one heading after the first begins a page. The error text is empty when all went well; a
// picture that cannot be read is an error.
QString setManual(const QString &markdownPath, const QString &pdfPath, const QString &title);
