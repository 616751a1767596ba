#include "widgets/columnmeasures.h"

#include "device/driver/wirerecords.h"
#include "frames/modelitem.h"
#include "traces/columntitles.h"
#include "traces/frametexts.h"
#include "widgets/dialogscaler.h"

#include <QFontDatabase>
#include <QFontMetrics>
#include <QStyle>
#include <QWidget>

namespace
{
constexpr int kRowPadding = 6;        // pixels at 96 DPI, above and below the text together
constexpr int kDataPrefix = 3;        // characters of "x| "
constexpr int kCharactersPerByte = 3; // two digits and a blank
constexpr int kUsualData =
    kDataPrefix + int(kClassicDataBytes) * kCharactersPerByte; // room that the data column always has
constexpr int kProtocolCharacters = 10; // longer ones are cut: the data would stand too far right

// Texts as long as a column's usually get in the current language.
QStringList samples(int column)
{
    const FrameWords &words = frameWords(languageCode());
    switch (column) {
    case IndexColumn:
        return {QStringLiteral("00000000")};
    case SystemTimeColumn:
        return {QStringLiteral("00:00:00.000")};
    case TimeStampColumn:
        return {QStringLiteral("0xDDDDDDDDD")}; // 19 hours
    case IdColumn:
        return {QStringLiteral("0xDDDDDDDD")};
    case FormatColumn:
        return {words.standardFrame, words.extendedFrame};
    case TypeColumn:
        return {words.dataFrame, words.remoteFrame};
    case ProtocolColumn:
        return {words.fdWithSwitch.left(kProtocolCharacters)};
    default:
        return {};
    }
}

int widest(const QFontMetrics &metrics, const QStringList &texts)
{
    int width = 0;
    for (const QString &text : texts)
        width = qMax(width, metrics.horizontalAdvance(text));
    return width;
}

// Width of a data text of so many characters, whatever its digits are.
int dataTextWidth(const QFontMetrics &metrics, int characters)
{
    QString widestByte;
    int width = 0;
    for (const char c : {'0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'A', 'B', 'C', 'D', 'E', 'F'}) {
        const QString byte = QString(2, QLatin1Char(c)) + QLatin1Char(' ');
        const int advance = metrics.horizontalAdvance(byte.repeated(kClassicDataBytes)); // advances may be fractions
        if (advance > width) {
            width = advance;
            widestByte = byte;
        }
    }
    const int bytes = (qMax(characters, kUsualData) - kDataPrefix) / kCharactersPerByte;
    return metrics.horizontalAdvance(QLatin1String("x| ") + widestByte.repeated(bytes));
}

// The first of the usual faces that the machine has; Windows brings the first and the last.
QString fixedWidthFamily()
{
    const QStringList present = QFontDatabase().families();
    for (const char *family :
         {"Consolas", "DejaVu Sans Mono", "Liberation Mono", "Noto Sans Mono", "FreeMono", "Courier New"}) {
        QString name = QLatin1String(family);
        if (present.contains(name))
            return name;
    }
    const QFont system = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    return QFontInfo(system).fixedPitch() ? system.family() : QString();
}
} // namespace

namespace columnmeasures
{
bool isFixedWidth(int column)
{
    return column == TimeStampColumn || column == IdColumn || column == DataColumn;
}

QFont fixedWidthFont(const QFont &font)
{
    static const QString family = fixedWidthFamily();
    QFont fixed = font;
    if (!family.isEmpty())
        fixed.setFamily(family);
    return fixed;
}

int rowHeight(const QWidget &table)
{
    const QFontMetrics usual = table.fontMetrics();
    const QFontMetrics fixed(fixedWidthFont(table.font()));
    const int line = qMax(usual.ascent(), fixed.ascent()) + qMax(usual.descent(), fixed.descent());
    return line + qRound(qreal(kRowPadding) * table.logicalDpiY() / kDesignDpi);
}

int usualWidth(const QWidget &table, int column)
{
    const QFontMetrics usual = table.fontMetrics();
    const QFontMetrics face = isFixedWidth(column) ? QFontMetrics(fixedWidthFont(table.font())) : usual;
    const int title = usual.horizontalAdvance(columnTitles().at(column) + QLatin1Char('*'));
    const int margins = 2 * table.style()->pixelMetric(QStyle::PM_HeaderMargin) + usual.averageCharWidth();
    return qMax(title, widest(face, samples(column))) + margins;
}

int dataWidth(const QWidget &table, int characters)
{
    const QFontMetrics metrics(fixedWidthFont(table.font()));
    return dataTextWidth(metrics, characters) + 2 * metrics.averageCharWidth();
}
} // namespace columnmeasures
