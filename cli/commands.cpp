#include "cli/commands.h"

#include "cli/messages.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>

const std::vector<Command> &commands()
{
    static const std::vector<Command> all = {
        {"devices", "the devices that this machine offers", runDevices},
        {"record", "record live frames", runRecord},
        {"replay", "send the frames of recordings", runReplay},
        {"generate", "send frames that are made up", runGenerate},
        {"transmit", "send a transmit list", runTransmit},
        {"convert", "convert recordings between formats", runConvert},
        {"show", "show frames as text, from files or live", runShow},
        {"statistics", "count frames by channel and identifier; learn and check a baseline", runStatistics},
    };
    return all;
}

namespace
{

void printUsage(std::FILE *out)
{
    std::fputs("Usage: ostrel-cli COMMAND [options]\n\nCommands:\n", out);
    for (const Command &command : commands())
        std::fprintf(out, "  %-12s%s\n", command.name, command.summary);
    std::fputs("\n\"ostrel-cli COMMAND --help\" tells the options of a command.\n"
               "Exit code: 0 well, 1 something was lost or failed a check, 2 wrong usage.\n",
               out);
}

} // namespace

int runCommandLine(const QStringList &words)
{
    const QString name = words.value(0);
    if (name.isEmpty()) {
        printUsage(stderr);
        return WrongUsage;
    }
    if (name == QLatin1String("--help") || name == QLatin1String("-h") || name == QLatin1String("help")) {
        printUsage(stdout);
        return AllWell;
    }
    if (name == QLatin1String("--version")) {
        std::printf("ostrel-cli %s\n", qPrintable(QCoreApplication::applicationVersion()));
        return AllWell;
    }
    const auto &all = commands();
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&](const Command &command) { return name == QLatin1String(command.name); });
    if (found == all.end()) {
        tell(QStringLiteral("there is no command \"%1\"; see ostrel-cli --help").arg(name));
        return WrongUsage;
    }
    return found->run(words.mid(1));
}
