#include "analysis/signalid.h"

#include <QRegularExpression>

const char *const kSignalsMimeType = "application/x-ostrel-signals";

QString SignalId::toText() const
{
    return QStringLiteral("%1:%2%3:%4")
        .arg(channel)
        .arg(extended ? QLatin1Char('x') : QLatin1Char('s'))
        .arg(QString::number(message, 16).toUpper(), signal);
}

bool SignalId::fromText(const QString &text)
{
    static const QRegularExpression form(QStringLiteral("^([12]):([sx])([0-9A-F]{1,8}):(\\S+)$"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return false;
    channel = match.captured(1).toUShort();
    extended = match.captured(2) == QLatin1String("x");
    message = match.captured(3).toUInt(nullptr, 16);
    signal = match.captured(4);
    return true;
}
