// The language code and the one way to write a text in the three languages.
#pragma once

#include <QString>
#include <QStringList>

enum Language : unsigned { SimplifiedChinese = 0, TraditionalChinese = 1, English = 2, LanguageCount = 3 };

// The current code; any thread.
unsigned languageCode();
void setLanguageCode(unsigned code);

// The text of the current language (or of the given code); a code above English reads as Simplified Chinese.
// The three are UTF-8. Any thread.
QString text3(const char *simplified, const char *traditional, const char *english);
QString text3(unsigned code, const char *simplified, const char *traditional, const char *english);

// A text that becomes words when it is shown, in the language of that moment. The three are UTF-8 and live as long as
// the program.
struct Text3 {
    const char *simplified = "";
    const char *traditional = "";
    const char *english = "";
    QStringList arguments = {}; // of %1, %2, ...: numbers or the like, without a "%"

    QString toString() const; // any thread
};

// The files of the three translation catalogues, in the order of the codes.
const QStringList &catalogueNames();

// Titles of the message boxes.
QString warningTitle(); // failures
QString tipTitle();     // notices that read "warning" in English
