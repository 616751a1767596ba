// The text encoding of database files: UTF-8 when the whole file is valid UTF-8, else Windows' code page 1252.
#pragma once

#include <QByteArray>
#include <QString>

#include <string_view>

bool isUtf8(const QByteArray &content);
// The five bytes that code page 1252 leaves open become the control characters of the same number.
QString fromCodePage1252(std::string_view bytes);
