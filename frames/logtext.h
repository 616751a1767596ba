// Lines of the operation log that workers make.
#pragma once

#include "device/language.h"

#include <QString>

#include <functional>

struct LogText {
    const char *simplified;
    const char *traditional;
    const char *english;
};

// Passes a line on; called in the worker.
using LogSink = std::function<void(const QString &)>;

// Hands the text in the current language to the sink, with its arguments; nothing while the language code is none of
// the three.
template <typename... Args> void say(const LogSink &sink, const LogText &text, const Args &...args)
{
    const unsigned code = languageCode();
    if (code >= LanguageCount)
        return;
    QString line = text3(code, text.simplified, text.traditional, text.english);
    ((line = line.arg(args)), ...);
    sink(line);
}
