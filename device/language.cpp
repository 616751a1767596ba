#include "device/language.h"

#include <atomic>

namespace
{
std::atomic<unsigned> currentCode{SimplifiedChinese};
}

unsigned languageCode()
{
    return currentCode.load(std::memory_order_relaxed);
}

void setLanguageCode(unsigned code)
{
    currentCode.store(code, std::memory_order_relaxed);
}

QString text3(unsigned code, const char *simplified, const char *traditional, const char *english)
{
    switch (code) {
    case TraditionalChinese:
        return QString::fromUtf8(traditional);
    case English:
        return QString::fromUtf8(english);
    default:
        return QString::fromUtf8(simplified);
    }
}

QString text3(const char *simplified, const char *traditional, const char *english)
{
    return text3(languageCode(), simplified, traditional, english);
}

QString Text3::toString() const
{
    QString text = text3(simplified, traditional, english);
    for (const QString &argument : arguments)
        text = text.arg(argument);
    return text;
}

const QStringList &catalogueNames()
{
    static const QStringList names{QStringLiteral("CN.qm"), QStringLiteral("CNF.qm"), QStringLiteral("EN.qm")};
    return names;
}

QString warningTitle()
{
    return text3("警告", "警告", "warning");
}

QString tipTitle()
{
    return text3("提示", "提示", "warning");
}
