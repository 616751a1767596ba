#include "analysis/plotexport.h"

#include "analysis/plotview.h"
#include "device/language.h"

#include <QImage>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>

#include <qwt_plot_renderer.h>

namespace
{
constexpr int kFrame = 8;        // pixels around and between
constexpr qreal kPdfMargin = 12; // millimetres

// The names of the curves, one line each; answers the height that they take.
int drawNames(QPainter *painter, const QVector<const PlotSignal *> &curves, QPoint place)
{
    const int line = painter->fontMetrics().lineSpacing();
    int y = place.y();
    for (const PlotSignal *signal : curves) {
        painter->setPen(signal->colour);
        painter->drawText(place.x(), y + painter->fontMetrics().ascent(),
                          QStringLiteral("%1  %2").arg(signal->number).arg(signal->title()));
        y += line;
    }
    return y - place.y();
}

// Lanes and names as they are on the screen, in its pixels.
void drawAll(const PlotView &view, const QVector<const PlotSignal *> &curves, QPainter *painter)
{
    painter->setFont(view.font());
    const int names = drawNames(painter, curves, {kFrame, kFrame});
    QwtPlotRenderer renderer;
    renderer.setDiscardFlags(QwtPlotRenderer::DiscardBackground);
    for (PlotLane *lane : view.lanes())
        renderer.render(lane, painter, QRectF(lane->geometry()).translated(0, names + 2 * kFrame));
}

QSize sizeOfAll(const PlotView &view, int curves)
{
    return {view.width(), view.height() + view.fontMetrics().lineSpacing() * curves + 2 * kFrame};
}

bool writePng(const PlotView &view, const QVector<const PlotSignal *> &curves, QIODevice *file)
{
    constexpr int kScale = 2; // fine enough for a document
    QImage image(sizeOfAll(view, curves.size()) * kScale, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.scale(kScale, kScale);
    drawAll(view, curves, &painter);
    painter.end();
    return image.save(file, "PNG");
}

bool writePdf(const PlotView &view, const QVector<const PlotSignal *> &curves, QIODevice *file)
{
    QPdfWriter writer(file);
    writer.setCreator(QStringLiteral("Ostrel"));
    writer.setResolution(view.logicalDpiX()); // at another one the renderer scales fonts and margins once more
    writer.setPageSize(QPageSize(QPageSize::A4));
    writer.setPageOrientation(QPageLayout::Landscape);
    writer.setPageMargins(QMarginsF(kPdfMargin, kPdfMargin, kPdfMargin, kPdfMargin), QPageLayout::Millimeter);
    QPainter painter(&writer);
    if (!painter.isActive())
        return false;
    const QSize size = sizeOfAll(view, curves.size());
    const qreal scale = qMin(qreal(writer.width()) / size.width(), qreal(writer.height()) / size.height());
    painter.scale(scale, scale);
    drawAll(view, curves, &painter);
    return painter.end();
}
} // namespace

bool exportPlot(const PlotView &view, const QVector<const PlotSignal *> &curves, const QString &path, QString *error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        *error = file.errorString();
        return false;
    }
    bool written = false;
    if (path.endsWith(QLatin1String(".pdf"), Qt::CaseInsensitive))
        written = writePdf(view, curves, &file);
    else
        written = writePng(view, curves, &file);
    if (!written || !file.commit()) {
        *error = file.errorString();
        return false;
    }
    return true;
}
