#include "cli/arguments.h"
#include "cli/commands.h"
#include "cli/liveadapter.h"
#include "cli/valuetexts.h"
#include "device/devicelayer.h"

#include <cstdio>

int runDevices(const QStringList &words)
{
    Arguments arguments("devices", "",
                        "Lists the devices that this machine offers, with the number that --device takes.");
    arguments.add("json", "One array of objects: index, name.");
    if (!arguments.parse(words))
        return arguments.exitCode();
    if (!arguments.operands().isEmpty())
        arguments.wrong(QStringLiteral("devices takes no operands"));
    if (!arguments.fine())
        return arguments.exitCode();
    chooseDriver();
    const bool json = arguments.isSet("json");
    std::string out = json ? "[" : "";
    const QStringList names = deviceNames();
    for (int index = 0; index < names.size(); ++index) {
        if (json) {
            out += index > 0 ? ",{\"index\":" : "{\"index\":";
            appendDecimal(&out, static_cast<std::uint64_t>(index));
            out += ",\"name\":";
            appendJsonText(&out, names[index]);
            out += '}';
        } else {
            appendDecimal(&out, static_cast<std::uint64_t>(index));
            out += "  ";
            appendText(&out, names[index]);
            out += '\n';
        }
    }
    if (json)
        out += "]\n";
    const bool written = std::fwrite(out.data(), 1, out.size(), stdout) == out.size() && std::fflush(stdout) == 0;
    setDriver(nullptr);
    return written ? AllWell : SomethingLost;
}
