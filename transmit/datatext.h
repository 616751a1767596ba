// Data bytes as the user types them: hexadecimal pairs separated by blanks.
#pragma once

#include <QByteArray>
#include <QString>

// What the data fields let the user type.
constexpr char kDataTextPattern[] = "^[0-9a-fA-F ]+$";

// Every run between blanks split into pairs from its end ("123 4567" gives "01 23 45 67"); case is kept, and text that
// is no hexadecimal is split all the same. Splitting twice changes nothing more.
QString normalizedDataText(const QString &text);
// One byte per piece between blanks; a piece that is no hexadecimal number reads as 0, of a larger number the low eight
// bits count.
QByteArray dataBytes(const QString &text);
// The first bytes of a normalised text, with the blank that follows them; shorter texts as they are.
QString firstDataBytes(const QString &normalizedText, int length);
// Upper-case pairs separated by single blanks.
QString dataText(const QByteArray &bytes);
