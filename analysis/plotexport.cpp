#include "analysis/plotexport.h"

#include "analysis/plotview.h"
#include "device/language.h"

#include <QImage>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>

#include <cmath>
#include <qwt_plot_renderer.h>

namespace
{
constexpr int kTimeDecimals = 9;
constexpr int kValueDigits = 15;
constexpr int kMargin = 8; // pixels around and between
constexpr int kPdfDpi = 300;
constexpr qreal kPdfMargin = 12; // millimetres
constexpr int kFlushBytes = 1 << 20;

QString quoted(QString text)
{
    return QLatin1Char('"') + text.replace('"', QLatin1String("\"\"")) + QLatin1Char('"');
}

QString title(const PlotSignal &signal)
{
    return signal.unit.isEmpty() ? signal.name() : QStringLiteral("%1 [%2]").arg(signal.name(), signal.unit);
}

// One row for each time at which any of the curves has a point; nothing where a curve has none then.
bool writeCsv(const PlotView &view, const QVector<const PlotSignal *> &curves, QIODevice *file)
{
    QByteArray text("\xEF\xBB\xBFTime [s]");
    QVector<std::size_t> next;
    QVector<std::size_t> end;
    for (const PlotSignal *signal : curves) {
        text += ',' + quoted(title(*signal)).toUtf8();
        next.append(signal->data.firstAt(toNanoseconds(view.from())));
        end.append(signal->data.firstAt(toNanoseconds(view.to()) + 1));
    }
    text += "\r\n";
    for (;;) {
        std::int64_t time = std::numeric_limits<std::int64_t>::max();
        bool any = false;
        for (int i = 0; i < curves.size(); ++i)
            if (next[i] < end[i]) {
                time = qMin(time, curves[i]->data.at(next[i]).time);
                any = true;
            }
        if (!any)
            break;
        text += QByteArray::number(double(time) / kNsPerSecond, 'f', kTimeDecimals);
        for (int i = 0; i < curves.size(); ++i) {
            text += ',';
            if (next[i] >= end[i] || curves[i]->data.at(next[i]).time != time)
                continue;
            const double value = curves[i]->data.at(next[i]++).value;
            if (!std::isnan(value))
                text += QByteArray::number(value, 'g', kValueDigits);
        }
        text += "\r\n";
        if (text.size() > kFlushBytes) {
            if (file->write(text) != text.size())
                return false;
            text.clear();
        }
    }
    return file->write(text) == text.size();
}

// The names of the curves, one line each; answers the height that they take.
int drawNames(QPainter *painter, const QVector<const PlotSignal *> &curves, QPoint place)
{
    const int line = painter->fontMetrics().lineSpacing();
    int y = place.y();
    for (const PlotSignal *signal : curves) {
        painter->setPen(signal->colour);
        painter->drawText(place.x(), y + painter->fontMetrics().ascent(),
                          QStringLiteral("%1  %2").arg(signal->number).arg(title(*signal)));
        y += line;
    }
    return y - place.y();
}

// Lanes and names as they are on the screen, in its pixels.
void drawAll(const PlotView &view, const QVector<const PlotSignal *> &curves, QPainter *painter)
{
    painter->setFont(view.font());
    const int names = drawNames(painter, curves, {kMargin, kMargin});
    QwtPlotRenderer renderer;
    renderer.setDiscardFlags(QwtPlotRenderer::DiscardBackground);
    for (PlotLane *lane : view.lanes())
        renderer.render(lane, painter, QRectF(lane->geometry()).translated(0, names + 2 * kMargin));
}

QSize sizeOfAll(const PlotView &view, int curves)
{
    return {view.width(), view.height() + view.fontMetrics().lineSpacing() * curves + 2 * kMargin};
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
    writer.setResolution(kPdfDpi);
    writer.setPageSize(QPageSize(QPageSize::A4));
    writer.setPageOrientation(QPageLayout::Landscape);
    writer.setPageMargins(QMarginsF(kPdfMargin, kPdfMargin, kPdfMargin, kPdfMargin), QPageLayout::Millimeter);
    QPainter painter(&writer);
    if (!painter.isActive())
        return false;
    const QSize size = sizeOfAll(view, curves.size());
    const qreal scale = qMin(qreal(writer.width()) / size.width(), qreal(writer.height()) / size.height());
    painter.scale(scale, scale);
    QFont font = view.font();
    painter.setFont(font);
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
    if (path.endsWith(QLatin1String(".csv"), Qt::CaseInsensitive))
        written = writeCsv(view, curves, &file);
    else if (path.endsWith(QLatin1String(".pdf"), Qt::CaseInsensitive))
        written = writePdf(view, curves, &file);
    else
        written = writePng(view, curves, &file);
    if (!written || !file.commit()) {
        *error = file.errorString();
        return false;
    }
    return true;
}
