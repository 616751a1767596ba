// The words of one command: options, operands, help. The first thing that is wrong is kept and told once.
#pragma once

#include <QCommandLineParser>
#include <QStringList>

#include <optional>

constexpr double kLongestDuration = 1e9; // seconds that --duration takes

// What an option means that is given several times.
enum class Repeated {
    Wrong,
    Joined, // one list: text() has all of them, with commas between
    Each,   // texts() has each; a switch may be repeated, too
};

class Arguments
{
public:
    // command: as typed; operands: as the usage line has them, "INPUT OUTPUT"; description: what --help begins with.
    Arguments(const char *command, const char *operands, const char *description);

    // names: "j jobs"; value: what follows, null when nothing does.
    void add(const char *names, const char *description, const char *value = nullptr,
             Repeated repeated = Repeated::Wrong);
    // false when the command is not to run: help was asked for, or the words are wrong; exitCode() says which.
    bool parse(const QStringList &words);
    int exitCode() const { return exitCode_; }

    bool isSet(const char *name) const { return parser_.isSet(QLatin1String(name)); }
    QString text(const char *name) const { return texts(name).join(QLatin1Char(',')); }
    QStringList texts(const char *name) const { return parser_.values(QLatin1String(name)); }
    QStringList operands() const { return parser_.positionalArguments(); }
    // The values as numbers within limits; nothing when the option is not given. What is none is a usage error.
    std::optional<double> number(const char *name, double least, double most);
    std::optional<qint64> integer(const char *name, qint64 least, qint64 most);

    // Keeps the first one.
    void wrong(const QString &message);
    // The same about an option's value: "--name: "value" reason".
    void wrongValue(const char *name, const QString &reason);
    // Tells what was wrong, if anything was; then exitCode() is set.
    bool fine();

private:
    const QString command_;
    const QString operands_;
    QCommandLineParser parser_;
    QStringList onceOnly_; // names of options
    QString wrong_;
    int exitCode_ = 0;
};
