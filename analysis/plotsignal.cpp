#include "analysis/plotsignal.h"

#include "analysis/signalstore.h"

#include <cmath>
#include <iterator>

namespace
{
constexpr QRgb kColours[] = {0xFF0072B2, 0xFFD55E00, 0xFF009E73, 0xFFCC79A7, 0xFF000000, 0xFF56B4E9, 0xFFE69F00};
constexpr int kColourCount = int(std::size(kColours));
constexpr int kDarker = 170; // percent
constexpr int kLighter = 140;
constexpr double kStateTolerance = 1e-6; // of a raw value that counts as a whole number
constexpr double kLargestRaw = 9e15;     // whole numbers that a double holds exactly
} // namespace

QColor plotColour(int number)
{
    const int index = qMax(0, number - 1);
    QColor colour(kColours[index % kColourCount]);
    switch (index / kColourCount % 3) {
    case 1:
        return colour == Qt::black ? QColor(Qt::darkGray) : colour.darker(kDarker);
    case 2:
        return colour == Qt::black ? QColor(Qt::gray) : colour.lighter(kLighter);
    default:
        return colour;
    }
}

void PlotSignal::describe(const MessageLookup &lookup)
{
    message.clear();
    unit.clear();
    texts.clear();
    const KnownMessage *known = lookup.find(id.channel, id.message, id.extended);
    const int index = known ? known->definition->indexOf(id.signal) : -1;
    if (index < 0)
        return;
    const SignalDefinition &definition = known->definition->signalList.at(index);
    message = known->definition->name;
    unit = definition.unit;
    texts = definition.valueTexts;
    factor = definition.factor;
    offset = definition.offset;
}

QString PlotSignal::name() const
{
    const QString owner =
        message.isEmpty() ? QStringLiteral("0x") + QString::number(id.message, 16).toUpper() : message;
    const QString name = owner + QLatin1Char('.') + id.signal;
    return tellsChannel ? QStringLiteral("CH%1 %2").arg(QString::number(id.channel), name) : name;
}

QString PlotSignal::title() const
{
    return unit.isEmpty() ? name() : QStringLiteral("%1 [%2]").arg(name(), unit);
}

QString PlotSignal::stateText(double physical) const
{
    const double raw = (physical - offset) / factor;
    const double whole = std::round(raw);
    if (!(std::abs(whole) < kLargestRaw) || std::abs(raw - whole) > kStateTolerance)
        return {};
    for (const ValueText &text : texts)
        if (text.value == std::int64_t(whole))
            return text.text;
    return {};
}

double PlotSignal::valueAt(std::int64_t time) const
{
    const std::size_t after = data.firstAt(time + 1);
    return after > 0 ? data.at(after - 1).value : std::nan("");
}
