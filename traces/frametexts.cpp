#include "traces/frametexts.h"

#include "device/driver/identifiers.h"
#include "device/driver/numbertext.h"

#include <array>

// Literals only: their reference count is never written, so the threads do not fight over it.
const FrameWords &frameWords(unsigned code)
{
    static const FrameWords words[LanguageCount + 1] = {
        {QStringLiteral("标准帧"), QStringLiteral("扩展帧"), QStringLiteral("数据帧"), QStringLiteral("远程帧"),
         QStringLiteral("CANFD-加速")},
        {QStringLiteral("標準幀"), QStringLiteral("擴展幀"), QStringLiteral("數據幀"), QStringLiteral("遠程幀"),
         QStringLiteral("CANFD-加速")},
        {QStringLiteral("Standard Frame"), QStringLiteral("Extended Frame"), QStringLiteral("data frame"),
         QStringLiteral("Remote Frame"), QStringLiteral("CANFD-acceleration")},
        {QString(), QString(), QString(), QString(), QStringLiteral("CANFD")},
    };
    return words[code < LanguageCount ? code : LanguageCount];
}

QString identifierText(std::uint32_t id, bool extended)
{
    return QString::number(id, kHexBase).toUpper().rightJustified(idDigits(extended), QLatin1Char('0'));
}

const QString &smallNumberText(unsigned number)
{
    static const auto texts = [] {
        std::array<QString, kLargestSmallNumber + 1> made;
        for (unsigned value = 0; value < made.size(); ++value)
            made[value] = QString::number(value);
        return made;
    }();
    return texts[number <= kLargestSmallNumber ? number : kLargestSmallNumber];
}
