// The commands of ostrel-cli: each takes the words behind its name and answers an exit code.
#pragma once

#include <QStringList>

#include <vector>

// What the program ends with.
enum ExitCode { AllWell = 0, SomethingLost = 1, WrongUsage = 2 };

struct Command {
    const char *name;
    const char *summary;
    int (*run)(const QStringList &words);
};

const std::vector<Command> &commands();
// Runs the command that the first word names. Words: without the program's own name.
int runCommandLine(const QStringList &words);

int runDevices(const QStringList &words);
int runRecord(const QStringList &words);
int runReplay(const QStringList &words);
int runConvert(const QStringList &words);
int runShow(const QStringList &words);
int runStatistics(const QStringList &words);
int runGenerate(const QStringList &words);
int runTransmit(const QStringList &words);
