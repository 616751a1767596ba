#include "cli/arguments.h"

#include "cli/commands.h"
#include "cli/messages.h"

#include <cmath>
#include <cstdio>

Arguments::Arguments(const char *command, const char *operands, const char *description)
    : command_(QLatin1String(command)), operands_(QLatin1String(operands))
{
    parser_.setApplicationDescription(QLatin1String(description));
    add("h help", "Shows this help.");
}

void Arguments::add(const char *names, const char *description, const char *value, Repeated repeated)
{
    QCommandLineOption option(QString::fromLatin1(names).split(QLatin1Char(' ')), QLatin1String(description));
    if (value)
        option.setValueName(QLatin1String(value));
    parser_.addOption(option);
    if (value && repeated == Repeated::Wrong)
        onceOnly_.append(option.names().last());
}

bool Arguments::parse(const QStringList &words)
{
    if (!parser_.parse(QStringList{QStringLiteral("ostrel-cli")} + words)) {
        wrong(parser_.errorText());
        return fine();
    }
    if (!parser_.isSet(QStringLiteral("help"))) {
        for (const QString &name : qAsConst(onceOnly_))
            if (parser_.values(name).size() > 1)
                wrong(QStringLiteral("--%1 is given more than once").arg(name));
        return fine();
    }
    // The first line of the parser's own text has the program's path instead of the command.
    QString help = parser_.helpText();
    help.remove(0, help.indexOf(QLatin1Char('\n')));
    help.prepend(QStringLiteral("Usage: ostrel-cli %1 [options] %2").arg(command_, operands_).trimmed());
    std::fputs(help.toLocal8Bit().constData(), stdout);
    exitCode_ = AllWell;
    return false;
}

std::optional<double> Arguments::number(const char *name, double least, double most)
{
    if (!isSet(name))
        return std::nullopt;
    bool ok = false;
    const double value = text(name).toDouble(&ok);
    if (ok && std::isfinite(value) && value >= least && value <= most)
        return value;
    wrongValue(name, QStringLiteral("is no number from %1 to %2").arg(least, 0, 'g', 12).arg(most, 0, 'g', 12));
    return std::nullopt;
}

std::optional<qint64> Arguments::integer(const char *name, qint64 least, qint64 most)
{
    if (!isSet(name))
        return std::nullopt;
    bool ok = false;
    const qint64 value = text(name).toLongLong(&ok);
    if (ok && value >= least && value <= most)
        return value;
    wrongValue(name, QStringLiteral("is no whole number from %1 to %2").arg(least).arg(most));
    return std::nullopt;
}

void Arguments::wrong(const QString &message)
{
    if (wrong_.isEmpty())
        wrong_ = message;
}

void Arguments::wrongValue(const char *name, const QString &reason)
{
    wrong(QStringLiteral("--") + QLatin1String(name) + QStringLiteral(": \"") + text(name) + QStringLiteral("\" ") +
          reason);
}

bool Arguments::fine()
{
    if (wrong_.isEmpty())
        return true;
    tell(wrong_);
    tell(QStringLiteral("see ostrel-cli %1 --help").arg(command_));
    exitCode_ = WrongUsage;
    return false;
}
