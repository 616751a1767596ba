#include "manualpages.h"

#include <QAbstractTextDocumentLayout>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QPdfWriter>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextTable>

namespace
{
constexpr int kResolution = 144; // dots per inch: coordinates of the page
constexpr qreal kMarginMm = 18;
constexpr qreal kFootMm = 10;
constexpr qreal kMmPerInch = 25.4;
constexpr qreal kTextPoints = 10;
constexpr qreal kCodePoints = 7.5;
constexpr qreal kFootPoints = 8;
constexpr int kLineHeightPercent = 118;
constexpr qreal kPictureUnit = kResolution / 96.0; // dots per unit of a picture's size in a text document
constexpr qreal kHeadingPoints[] = {18, 13.5, 11};
constexpr int kHeadingLevels = 3;
constexpr qreal kPictureDpi = 150;      // of a screen picture on paper, unless the page is too narrow
constexpr qreal kTallestPicture = 0.55; // of the page's height

int dots(qreal mm)
{
    return qRound(mm * kResolution / kMmPerInch);
}

// Characters that the family lacks, Chinese ones above all, come from whatever family of the system has them.
QFont textFont(qreal points)
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPointSizeF(points);
    return font;
}

bool hasPicture(const QTextBlock &block)
{
    for (auto part = block.begin(); !part.atEnd(); ++part)
        if (part.fragment().charFormat().isImageFormat())
            return true;
    return false;
}

// The document's resource for every picture, and its size on the page.
QString placePictures(QTextDocument &document, const QDir &folder, const QSizeF &page)
{
    // Positions first: changing a format invalidates the iterators.
    QVector<int> positions;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
        for (auto part = block.begin(); !part.atEnd(); ++part)
            if (part.fragment().charFormat().isImageFormat())
                positions.append(part.fragment().position());
    for (const int position : positions) {
        QTextCursor cursor(&document);
        cursor.setPosition(position);
        cursor.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
        QTextImageFormat format = cursor.charFormat().toImageFormat();
        const QImage picture(folder.filePath(format.name()));
        if (picture.isNull())
            return QStringLiteral("no picture ") + folder.filePath(format.name());
        document.addResource(QTextDocument::ImageResource, QUrl(format.name()), picture);
        const qreal fitting = qMin(page.width() / picture.width(), page.height() * kTallestPicture / picture.height());
        const qreal scale = qMin(kResolution / kPictureDpi, fitting);
        format.setWidth(picture.width() * scale / kPictureUnit);
        format.setHeight(picture.height() * scale / kPictureUnit);
        cursor.setCharFormat(format);
    }
    return {};
}

void setHeadingText(const QTextBlock &block, int level)
{
    QTextCursor cursor(block);
    cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    QTextCharFormat text = cursor.charFormat();
    text.clearProperty(QTextFormat::FontSizeAdjustment); // comes before the size in points
    text.setFontPointSize(kHeadingPoints[qMin(level, kHeadingLevels) - 1]);
    text.setFontWeight(QFont::Bold);
    text.setForeground(QColor(0x1f, 0x4f, 0x6e));
    cursor.setCharFormat(text);
}

// Recorded rows are long: small, so that they fit on one line.
void setCodeText(const QTextBlock &block)
{
    QTextCursor cursor(block);
    cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    QTextCharFormat text;
    text.setFontFamily(QStringLiteral("DejaVu Sans Mono"));
    text.setFontPointSize(kCodePoints);
    cursor.mergeCharFormat(text);
}

void setBlocks(QTextDocument &document)
{
    bool isFirst = true;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        const int level = block.blockFormat().headingLevel();
        QTextCursor cursor(block);
        QTextBlockFormat format = block.blockFormat();
        if (level > 0) {
            setHeadingText(block, level);
            format.setTopMargin(dots(level == 1 ? 0 : 5));
            format.setBottomMargin(dots(2));
            if (level == 1 && !isFirst)
                format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
            isFirst = isFirst && level != 1;
        } else if (format.hasProperty(QTextFormat::BlockCodeFence) ||
                   format.hasProperty(QTextFormat::BlockCodeLanguage)) {
            setCodeText(block);
        } else if (!block.textList() && !cursor.currentTable()) {
            format.setTopMargin(dots(1));
            format.setBottomMargin(dots(1.5));
        }
        if (!hasPicture(block))
            format.setLineHeight(kLineHeightPercent, QTextBlockFormat::ProportionalHeight);
        cursor.setBlockFormat(format);
    }
}

void setTables(QTextDocument &document)
{
    const auto frames = document.rootFrame()->childFrames();
    for (QTextFrame *frame : frames) {
        auto *table = qobject_cast<QTextTable *>(frame);
        if (!table)
            continue;
        QTextTableFormat format = table->format();
        format.setBorder(1);
        format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
        format.setBorderBrush(QColor(0xa0, 0xa8, 0xb0));
        format.setBorderCollapse(true);
        format.setCellPadding(dots(1));
        format.setCellSpacing(0);
        format.setTopMargin(dots(2));
        format.setBottomMargin(dots(3));
        format.setWidth(QTextLength(QTextLength::PercentageLength, 100));
        format.setHeaderRowCount(1);
        table->setFormat(format);
        for (int column = 0; column < table->columns(); ++column) {
            QTextTableCell cell = table->cellAt(0, column);
            QTextCharFormat head = cell.format();
            head.setBackground(QColor(0xe6, 0xee, 0xf3));
            cell.setFormat(head);
        }
    }
}

void layOutAnew(QTextDocument &document, const QSizeF &page)
{
    document.setPageSize(QSizeF()); // all of it: the part behind a change alone goes wrong
    document.setPageSize(page);
}

// A table that would be cut goes to the next page, all of it; one that no page can hold breaks between its rows.
void keepTables(QTextDocument &document, const QSizeF &page)
{
    const auto frames = document.rootFrame()->childFrames();
    for (QTextFrame *frame : frames) {
        const QRectF place = document.documentLayout()->frameBoundingRect(frame);
        const auto pageAt = [&page](qreal y) { return static_cast<int>(y / page.height()); };
        if (!qobject_cast<QTextTable *>(frame) || place.height() > page.height() ||
            pageAt(place.top()) == pageAt(place.bottom()))
            continue;
        QTextFrameFormat format = frame->frameFormat();
        format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
        frame->setFrameFormat(format);
        layOutAnew(document, page);
    }
}

// A heading goes to the next page with what it is the heading of.
void keepHeadings(QTextDocument &document, const QSizeF &page)
{
    const auto pageOf = [&document, &page](const QTextBlock &block) {
        const QRectF place = document.documentLayout()->blockBoundingRect(block);
        return static_cast<int>((hasPicture(block) ? place.bottom() - 1 : place.top()) / page.height());
    };
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        if (block.blockFormat().headingLevel() == 0 || !block.next().isValid() || pageOf(block) == pageOf(block.next()))
            continue;
        QTextBlockFormat format = block.blockFormat();
        format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
        QTextCursor(block).setBlockFormat(format);
        layOutAnew(document, page);
    }
}

bool printPages(QTextDocument &document, QPdfWriter &writer, const QSizeF &page, const QString &title)
{
    QPainter painter;
    if (!painter.begin(&writer))
        return false;
    const int pages = document.pageCount();
    for (int number = 0; number < pages; ++number) {
        if (number > 0 && !writer.newPage())
            return false;
        painter.save();
        painter.translate(0, -number * page.height());
        const QRectF part(0, number * page.height(), page.width(), page.height());
        painter.setClipRect(part);
        QAbstractTextDocumentLayout::PaintContext context;
        context.clip = part;
        context.palette.setColor(QPalette::Text, Qt::black);
        document.documentLayout()->draw(&painter, context);
        painter.restore();
        painter.setFont(textFont(kFootPoints));
        painter.setPen(Qt::darkGray);
        const QRectF foot(0, page.height(), page.width(), dots(kFootMm));
        painter.drawText(foot, Qt::AlignLeft | Qt::AlignBottom, title);
        painter.drawText(foot, Qt::AlignRight | Qt::AlignBottom, QStringLiteral("%1 / %2").arg(number + 1).arg(pages));
    }
    return painter.end();
}
} // namespace

QString setManual(const QString &markdownPath, const QString &pdfPath, const QString &title)
{
    QFile file(markdownPath);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("cannot read ") + markdownPath;
    if (!QFileInfo(pdfPath).absoluteDir().mkpath(QStringLiteral(".")))
        return QStringLiteral("cannot make the folder of ") + pdfPath;

    QPdfWriter writer(pdfPath);
    writer.setResolution(kResolution);
    writer.setPageSize(QPageSize(QPageSize::A4));
    writer.setPageMargins(QMarginsF(kMarginMm, kMarginMm, kMarginMm, kMarginMm), QPageLayout::Millimeter);
    writer.setTitle(title);
    const QSizeF page(writer.width(), writer.height() - dots(kFootMm));

    QTextDocument document;
    document.documentLayout()->setPaintDevice(&writer);
    document.setDefaultFont(textFont(kTextPoints));
    document.setDocumentMargin(0);
    document.setMarkdown(QString::fromUtf8(file.readAll()), QTextDocument::MarkdownDialectGitHub);
    setBlocks(document);
    setTables(document);
    const QString error = placePictures(document, QFileInfo(markdownPath).absoluteDir(), page);
    if (!error.isEmpty())
        return error;
    document.setPageSize(page);
    keepTables(document, page);
    keepHeadings(document, page);
    if (!printPages(document, writer, page, title))
        return QStringLiteral("cannot write ") + pdfPath;
    return {};
}
