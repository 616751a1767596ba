#include "transmit/datatext.h"

#include <QStringList>

namespace
{
constexpr QChar kBlank = QLatin1Char(' ');
constexpr int kCharsPerByte = 2;
constexpr int kCharsPerPiece = kCharsPerByte + 1; // with its blank

QStringList pieces(const QString &text)
{
    return text.split(kBlank, Qt::SkipEmptyParts);
}
} // namespace

QString normalizedDataText(const QString &text)
{
    QString result;
    result.reserve(text.size() * kCharsPerPiece / kCharsPerByte + kCharsPerPiece);
    for (const QString &piece : pieces(text)) {
        const QString digits = piece.size() % kCharsPerByte == 0 ? piece : QLatin1Char('0') + piece;
        for (int pair = 0; pair < digits.size(); pair += kCharsPerByte)
            result.append(digits.midRef(pair, kCharsPerByte)).append(kBlank);
    }
    result.chop(1);
    return result;
}

QByteArray dataBytes(const QString &text)
{
    QByteArray bytes;
    for (const QString &piece : pieces(text))
        bytes.append(static_cast<char>(piece.toULongLong(nullptr, 16)));
    return bytes;
}

QString firstDataBytes(const QString &normalizedText, int length)
{
    return normalizedText.left(length * kCharsPerPiece);
}

QString dataText(const QByteArray &bytes)
{
    return QString::fromLatin1(bytes.toHex(kBlank.toLatin1()).toUpper());
}
