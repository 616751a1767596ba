#include "traces/frametexts.h"

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

const QString &smallNumberText(unsigned number)
{
    static const QString texts[kLargestSmallNumber + 1] = {
        QStringLiteral("0"),  QStringLiteral("1"),  QStringLiteral("2"),  QStringLiteral("3"),  QStringLiteral("4"),
        QStringLiteral("5"),  QStringLiteral("6"),  QStringLiteral("7"),  QStringLiteral("8"),  QStringLiteral("9"),
        QStringLiteral("10"), QStringLiteral("11"), QStringLiteral("12"), QStringLiteral("13"), QStringLiteral("14"),
        QStringLiteral("15"), QStringLiteral("16"), QStringLiteral("17"), QStringLiteral("18"), QStringLiteral("19"),
        QStringLiteral("20"), QStringLiteral("21"), QStringLiteral("22"), QStringLiteral("23"), QStringLiteral("24"),
        QStringLiteral("25"), QStringLiteral("26"), QStringLiteral("27"), QStringLiteral("28"), QStringLiteral("29"),
        QStringLiteral("30"), QStringLiteral("31"), QStringLiteral("32"), QStringLiteral("33"), QStringLiteral("34"),
        QStringLiteral("35"), QStringLiteral("36"), QStringLiteral("37"), QStringLiteral("38"), QStringLiteral("39"),
        QStringLiteral("40"), QStringLiteral("41"), QStringLiteral("42"), QStringLiteral("43"), QStringLiteral("44"),
        QStringLiteral("45"), QStringLiteral("46"), QStringLiteral("47"), QStringLiteral("48"), QStringLiteral("49"),
        QStringLiteral("50"), QStringLiteral("51"), QStringLiteral("52"), QStringLiteral("53"), QStringLiteral("54"),
        QStringLiteral("55"), QStringLiteral("56"), QStringLiteral("57"), QStringLiteral("58"), QStringLiteral("59"),
        QStringLiteral("60"), QStringLiteral("61"), QStringLiteral("62"), QStringLiteral("63"), QStringLiteral("64")};
    return texts[number <= kLargestSmallNumber ? number : kLargestSmallNumber];
}
